#include "Source/Baltan.h"

#include <array>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr uint32_t kPositions = 8;
constexpr uint32_t kPlanes = 4;
// Eight positions take turns, but the picture is the sum of positions 0, 1, 2 and 4 alone: what comes at the others is
// never looked at and needs no plane. kPlanes stands for "none".
constexpr std::array<uint32_t, kPositions> kPlaneOfPosition = {0, 1, 2, kPlanes, 3, kPlanes, kPlanes, kPlanes};
constexpr uint32_t kQuarterMask = 0x003F3F3F;

uint32_t Quarter(uint32_t pixel) {
  return pixel >> 2 & kQuarterMask;
}

// Every pixel of `dst` from the one of `src` and its place in a plane.
template <typename PixelOf>
void Paint(ConstFrameView src, FrameView dst, PixelOf pixelOf) {
  const size_t stride = static_cast<size_t>(dst.step) / 4;
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* in = src.Row(y);
      uint8_t* out = dst.Row(y);
      const size_t row = static_cast<size_t>(y) * stride;
      for (int32_t x = 0; x < dst.width; ++x) {
        StorePixel(out, x, pixelOf(LoadPixel(in, x), row + static_cast<size_t>(x)));
      }
    }
  });
}

// A frame that enters the sum: its own quarter and the three other planes; a quarter of the result goes back.
void AddFrame(ConstFrameView src, FrameView dst, uint32_t* own, const uint32_t* p1, const uint32_t* p2,
              const uint32_t* p3) {
  Paint(src, dst, [=](uint32_t pixel, size_t i) {
    const uint32_t sum = (Quarter(pixel) + p1[i] + p2[i] + p3[i]) | (pixel & 0xFF000000);
    own[i] = Quarter(sum);
    return sum;
  });
}

// A frame that does not: the sum as it stands, under the source's alpha.
void ShowSum(ConstFrameView src, FrameView dst, const uint32_t* planes, size_t planeLength) {
  std::array<const uint32_t*, kPlanes> p;
  for (uint32_t i = 0; i < kPlanes; ++i) p[i] = planes + i * planeLength;
  Paint(src, dst,
        [p](uint32_t pixel, size_t i) { return (p[0][i] + p[1][i] + p[2][i] + p[3][i]) | (pixel & 0xFF000000); });
}

}  // namespace

void CBaltan::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  if (out.Empty()) return;
  if (Param(params, 1) == 1.0) {
    planes_.Free();
    index_ = 0;
  }
  const size_t length = static_cast<size_t>(dstStep) / 4 * static_cast<size_t>(height);
  if (!planes_ || length != planeLength_) {  // other steps are another layout: it starts from nothing
    planeLength_ = length;
    if (!planes_.Allocate(kPlanes * length)) {
      CopyRows(src, dst, width, height, srcStep, dstStep);
      return;
    }
  }
  const uint32_t own = kPlaneOfPosition[index_];
  index_ = (index_ + 1) % kPositions;
  uint32_t* planes = planes_.Data();
  if (own == kPlanes) {
    ShowSum(in, out, planes, length);
    return;
  }
  const auto other = [&](uint32_t n) { return planes + (own + n) % kPlanes * length; };
  AddFrame(in, out, other(0), other(1), other(2), other(3));
}
