#include "Source/Flash.h"

#include <algorithm>
#include <cmath>

#include "Source/ByteOffsets.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"X", 0, 0, 100}, {u"Y", 0, 0, 100}, {u"Radius", 0, 0, 100}};

// What a row at the distance `dy` from the centre gains: within the disc 255 at the centre, nothing where 1 - f is
// 0.707, 255 less at the rim; opaque black without it. The columns to both sides of the centre are alike.
void FillLight(ByteOffsets& light, int64_t dy, int64_t centerX, int32_t radius) {
  const int64_t radius2 = int64_t{radius} * radius;
  const int32_t width = static_cast<int32_t>(light.size() / 4);
  for (int32_t x = 0; x < width; ++x) {
    int16_t* offsets = &light[4 * static_cast<size_t>(x)];
    const int64_t twin = 2 * centerX - x;
    if (twin >= 0 && twin < x) {
      std::copy_n(&light[4 * static_cast<size_t>(twin)], 4, offsets);
      continue;
    }
    const int64_t dx = x - centerX;
    if (dx * dx < radius2 - dy * dy) {
      const float f = std::sqrt(static_cast<float>(dx * dx + dy * dy)) / static_cast<float>(radius);
      const float rest = 1 - f;
      std::fill_n(offsets, 3, static_cast<int16_t>(rest * 510 * rest - 255));
      offsets[3] = 0;
    } else {
      std::fill_n(offsets, 3, -255);
      offsets[3] = 255;
    }
  }
}

// Rows `begin` to `end` - 1 and, of those whose twin comes behind them, the twin. Inlined it would take a tenth longer.
[[gnu::noinline]] void FlashRows(ConstFrameView src, FrameView dst, int64_t centerX, int64_t centerY, int32_t radius,
                                 int32_t begin, int32_t end) {
  ByteOffsets light(4 * static_cast<size_t>(std::max(dst.width, 0)));
  for (int32_t y = begin; y < end; ++y) {
    const int64_t twin = 2 * centerY - y;  // the row at the same distance on the other side
    if (twin >= 0 && twin < y) continue;
    FillLight(light, y - centerY, centerX, radius);
    AddOffsets(src.Row(y), light, dst.Row(y));
    if (twin > y && twin < dst.height) {
      const int32_t other = static_cast<int32_t>(twin);
      AddOffsets(src.Row(other), light, dst.Row(other));
    }
  }
}

void Flash(ConstFrameView src, FrameView dst, int64_t centerX, int64_t centerY, int32_t radius) {
  ForRowBands(dst.width, 0, dst.height,
              [=](int32_t begin, int32_t end) { FlashRows(src, dst, centerX, centerY, radius, begin, end); });
}

}  // namespace

void CFlash::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {x_, y_, radius_});
}

void CFlash::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  x_ = Param(params, 1);
  y_ = Param(params, 2);
  radius_ = Param(params, 3);
  const float diagonal = std::sqrt(static_cast<float>(int64_t{width} * width + int64_t{height} * height));
  Flash(PackedSource(src, width, height), PackedDest(dst, width, height), Trunc32(width * x_ / 100),
        Trunc32(height * y_ / 100), Trunc32(diagonal * radius_ / 100));
}
