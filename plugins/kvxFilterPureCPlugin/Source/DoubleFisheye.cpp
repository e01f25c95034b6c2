#include "Source/DoubleFisheye.h"

#include <algorithm>
#include <cstring>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Size", 0, 1, 100}};

// Each lens sits in the middle of its half of the frame: centres (W / 4, H / 2) and (3 * W / 4, H / 2), whole pixels.
// At size 100 it fills that half as far as a circle can: R = size / 100 * min(W / 4, H / 2), not rounded.
//
// With e the squared distance from the centre over R * R, a pixel of the lens (e at most 1) shows what lies e times its
// offset from the centre: the rim meets the picture around it, the middle magnifies. Positions never leave the frame,
// since centre and pixel are in it and e is at most 1.
//
// Draws what of the lens lies in rows `begin` to `end` - 1.
void Lens(ConstFrameView src, FrameView dst, int32_t cx, int32_t cy, double radius, int32_t begin, int32_t end) {
  const double square = radius * radius;
  const int32_t reach = Trunc32(radius);
  const int32_t left = std::max(0, cx - reach), right = std::min(dst.width - 1, cx + reach);
  const int32_t top = std::max(begin, cy - reach), bottom = std::min(end - 1, cy + reach);
  for (int32_t y = top; y <= bottom; ++y) {
    const int32_t dy = y - cy;
    uint8_t* out = dst.Row(y);
    for (int32_t x = left; x <= right; ++x) {
      const int32_t dx = x - cx;
      const double e = (dx * dx + dy * dy) / square;
      if (e > 1) continue;
      std::memcpy(out + 4 * x, src.Pixel(cx + static_cast<int32_t>(dx * e), cy + static_cast<int32_t>(dy * e)), 4);
    }
  }
}

}  // namespace

void CDoubleFisheye::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {size_});
}

void CDoubleFisheye::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  size_ = ClampFloat(Param(params, 1), 0, 100);
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (out.Empty()) return;
  const double radius = size_ / 100 * std::min(width / 4.0, height / 2.0);
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    CopyRows(in.Row(begin), out.Row(begin), out.width, end - begin, in.step, out.step);
    if (!(radius * radius > 0)) return;  // no lens
    // The first lens comes last: where rims meet, it wins.
    Lens(in, out, 3 * out.width / 4, out.height / 2, radius, begin, end);
    Lens(in, out, out.width / 4, out.height / 2, radius, begin, end);
  });
}
