#include "Source/VertigoFilter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"PhaseIncrement", 0, 0, 100}, {u"ZoomRate", 0, 0, 100}};
constexpr double kMaxPhase = 5700000;

// Where the past is read, with 16 fraction bits: at (startX, startY) for the first pixel, (stepX, stepY) on from pixel
// to pixel, (-stepY, stepX) on from row to row.
struct Motion {
  int32_t startX, startY, stepX, stepY;
};

Motion MotionAt(double phase, double zoom, int32_t width, int32_t height) {
  const uint32_t halfWidth = static_cast<uint32_t>(width) >> 1;
  const uint32_t halfHeight = static_cast<uint32_t>(height) >> 1;
  const double x0 = halfWidth;
  const double y0 = halfHeight;
  const double squareX = halfWidth * halfWidth;
  const double squareY = halfHeight * halfHeight;
  const double total = (squareX + squareY) * zoom;
  const double dizz = std::sin(phase * 1.9 + 5.0) * 5.0 + std::sin(phase) * 10.0;

  const double limit = width > height ? x0 : y0;
  double a, b;
  if (dizz >= 0) {
    b = std::min(limit, dizz);
    a = limit - b;
  } else {
    b = std::max(-limit, dizz);
    a = limit + b;
  }
  if (width > height) {
    a = a * x0 + squareY;
    b = y0 * b;
  } else {
    a = a * y0 + squareX;
    b = x0 * b;
  }
  a /= total;
  b /= total;
  return {Trunc32((y0 * b - x0 * a + x0 + 2 * std::cos(phase * 5)) * 65536),
          Trunc32((y0 - (y0 * a + x0 * b) + 2 * std::sin(phase * 6)) * 65536), Trunc32(a * 65536), Trunc32(b * 65536)};
}

// Three parts of the past, one of the source. Bytes 1 and 2 lose their two low bits first, byte 0 does not: this is
// meant.
uint32_t Mix(uint32_t past, uint32_t source) {
  const uint32_t color = ((past & 0x00FCFCFF) * 3 + (source & 0x00FCFCFF)) >> 2;
  const uint32_t alpha = (((past & 0xFF000000) * 3 >> 2) | source) & 0xFF000000;
  return color | alpha;
}

void MixWithPast(ConstFrameView src, FrameView dst, const uint32_t* past, uint32_t* next, const Motion& motion) {
  const int32_t last = src.width * src.height - 1;
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* in = src.Row(y);
      uint8_t* out = dst.Row(y);
      uint32_t* kept = next + static_cast<ptrdiff_t>(y) * dst.width;
      int32_t atX = WrapSub(motion.startX, WrapMul(y, motion.stepY));
      int32_t atY = WrapAdd(motion.startY, WrapMul(y, motion.stepX));
      for (int32_t x = 0; x < dst.width; ++x) {
        const int32_t at = ClampInt((atY >> 16) * dst.width + (atX >> 16), 0, last);
        const uint32_t pixel = Mix(past[at], LoadPixel(in, x));
        kept[x] = pixel;
        StorePixel(out, x, pixel);
        atX = WrapAdd(atX, motion.stepX);
        atY = WrapAdd(atY, motion.stepY);
      }
    }
  });
}

}  // namespace

void CVertigoFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {increment_ * 100, (zoom_ - 1) * 100});
}

void CVertigoFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                             const ParamValueArray* params) {
  increment_ = Param(params, 1) / 100;
  const double zoomRate = Param(params, 2);
  if (Trunc32(zoomRate) < 1) {
    CopyRows(src, dst, width, height, srcStep, dstStep);
    return;
  }
  zoom_ = zoomRate / 100 + 1;

  const ConstFrameView in{src, width, height, srcStep};
  if (!alternate_) {
    const size_t count = PixelCount(width, height);
    if (!current_.Allocate(count) || !alternate_.Allocate(count)) {
      current_.Free();
      return;
    }
    CopyVisible(in, PackedDest(reinterpret_cast<uint8_t*>(current_.Data()), width, height));
  }
  const Motion motion = MotionAt(phase_, zoom_, width, height);
  phase_ += increment_;
  if (phase_ > kMaxPhase) phase_ = 0;
  MixWithPast(in, FrameView{dst, width, height, dstStep}, current_.Data(), alternate_.Data(), motion);
  std::swap(current_, alternate_);
}
