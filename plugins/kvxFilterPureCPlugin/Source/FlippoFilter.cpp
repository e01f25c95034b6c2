#include "Source/FlippoFilter.h"

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"X", 1, 0, 1}, {u"Y", 1, 0, 1}};

void FlipSideways(ConstFrameView src, FrameView dst, bool upsideDown) {
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(upsideDown ? dst.height - 1 - y : y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) StorePixel(out, x, LoadPixel(in, dst.width - 1 - x));
  }
}

// Every row comes from one pixel before the start of its mirror row: the picture moves one pixel to the right, and the
// pixel that enters is the last one of the row above. This is meant. Before the first row of all stands its first
// pixel.
void FlipUpsideDown(ConstFrameView src, FrameView dst) {
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(dst.height - 1 - y);
    uint8_t* out = dst.Row(y);
    StorePixel(out, 0, LoadPixel(in, y < dst.height - 1 ? -1 : 0));
    CopyPixels(in, out + 4, dst.width - 1);
  }
}

}  // namespace

void CFlippoFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(x_), static_cast<double>(y_)});
}

void CFlippoFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  x_ = Trunc32(Param(params, 1));
  y_ = Trunc32(Param(params, 2));
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (out.Empty()) return;
  if (x_ != 0) {
    FlipSideways(in, out, y_ != 0);
  } else if (y_ != 0) {
    FlipUpsideDown(in, out);
  } else {
    CopyVisible(in, out);
  }
}
