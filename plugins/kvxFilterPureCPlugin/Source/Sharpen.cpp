#include "Source/Sharpen.h"

#include <cmath>

#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/row_loops.h"

namespace {

constexpr ParamRow kSharpenParams[] = {{u"Lowest", 0, 0, 1000}};

// p + k * difference, limited to a byte; 0 if that is no number.
uint8_t Sharpened(int32_t p, double k, int32_t difference) {
  const double v = p + k * difference;
  const double positive = v > 0 ? v : 0;
  return static_cast<uint8_t>(static_cast<int32_t>(positive < 255 ? positive : 255));
}

// The difference is that of two pixels of a row to the two below them, and 0 in the last row and column.
void SharpenRows(ConstFrameView src, FrameView dst, double k, int32_t begin, int32_t end) {
  const bool common = std::fabs(k) <= kMostSharpening && src.data != dst.data;
  const int32_t rowBytes = dst.width * 4;
  for (int32_t y = begin; y < end; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    int32_t j = 0;
    if (y < dst.height - 1) {
      const uint8_t* below = src.Row(y + 1);
      if (common) {
        SharpenRow(in, below, out, dst.width - 1, k);
        j = rowBytes - 4;
      }
      for (; j < rowBytes - 4; ++j) {
        const uint8_t sharpened = Sharpened(in[j], k, in[j] + in[j + 4] - below[j] - below[j + 4]);
        out[j] = j % 4 == 3 ? in[j] : sharpened;
      }
    }
    for (; j < rowBytes; ++j) out[j] = j % 4 == 3 ? in[j] : Sharpened(in[j], k, 0);
  }
}

}  // namespace

void CSharpen::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kSharpenParams, {strength_ * 100});
}

void CSharpen::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  strength_ = Param(params, 1) / 100;
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (out.Empty()) return;
  if (src == dst) return SharpenRows(in, out, strength_, 0, height);  // each row before the one below it changes
  ForRowBands(width, 0, height,
              [=, k = strength_](int32_t begin, int32_t end) { SharpenRows(in, out, k, begin, end); });
}
