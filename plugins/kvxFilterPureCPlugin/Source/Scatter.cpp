#include "Source/Scatter.h"

#include <algorithm>
#include <cstring>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"
#include "framework/random.h"
#include "platform/clock.h"

namespace {

constexpr ParamRow kCanvasParams[] = {{u"Range", 0, 0, 100}};
constexpr ParamRow kNoiseParams[] = {{u"NoiseDency", 0, 0, 100}, {u"FillWithColor", 1, 0, 1}};
constexpr int32_t kNoiseId = 51;
// Noise dots for each pixel of the frame, beyond which there is nothing more to see: far beyond the parameter's range.
constexpr int64_t kMostPasses = 64;

// Every pixel from up to half the range away in its own row.
void Displace(ConstFrameView src, FrameView dst, int32_t range, Rand& rand) {
  const int32_t half = range >> 1;
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) {
      const int32_t from = ClampInt(x + rand.Next() % range - half, 0, dst.width - 1);
      std::memcpy(out + 4 * x, in + static_cast<ptrdiff_t>(from) * 4, 4);
    }
  }
}

// `count` opaque pixels. Five draws for each, used or not.
void Sprinkle(FrameView dst, int64_t count, bool colored, Rand& rand) {
  for (int64_t i = 0; i < count; ++i) {
    const int32_t x = rand.Next() % dst.width;
    const int32_t y = rand.Next() % dst.height;
    const uint32_t a = static_cast<uint32_t>(rand.Next()) % 256;
    const uint32_t b = static_cast<uint32_t>(rand.Next()) % 256;
    const uint32_t c = static_cast<uint32_t>(rand.Next()) % 256;
    const uint32_t pixel = 0xFF000000 | a << 16 | (colored ? b << 8 | c : a << 8 | a);
    std::memcpy(dst.Pixel(x, y), &pixel, 4);
  }
}

}  // namespace

void CCanvas::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kCanvasParams, {static_cast<double>(range_)});
}

// The pattern moves once a second, and the whole process draws on from there.
void CCanvas::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  range_ = std::max(Trunc32(Param(params, 1)), 1);
  Rand rand;
  rand.Seed(CalendarSeconds());
  Displace(PackedSource(src, width, height), PackedDest(dst, width, height), range_, rand);
}

void CNoiseFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kNoiseParams, {fraction_ * 100, static_cast<double>(colored_)});
}

// The noise lies in the destination taken as one run, even where its rows are further apart.
void CNoiseFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                           const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kNoiseId) return;
  fraction_ = Param(params, 1) / 100;
  colored_ = Trunc32(Param(params, 2));
  CopyRows(src, dst, width, height, srcStep, dstStep);
  if (width <= 0 || height <= 0) return;
  const int64_t most = kMostPasses * width * height;
  const int64_t count = std::min<int64_t>(Trunc32(width * fraction_ * height), most);
  Rand rand;
  Sprinkle(PackedDest(dst, width, height), count, colored_ != 0, rand);
}
