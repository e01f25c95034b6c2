#include "Source/RainDropFilter.h"

#include <algorithm>
#include <atomic>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/host_log.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Radius", 0, 0, 100}, {u"Desity", 0, 0, 10}, {u"Height", 0, 0, 1000}};
constexpr int32_t kFramesPerDrop = 10;
constexpr int32_t kDamping = 3;
constexpr int32_t kDropOffset = 20;

// One for all instances: they share their rain.
std::atomic<int32_t> g_countdown{kFramesPerDrop};

// The frame's size against 640.
float ScaleOf(int32_t width) {
  return std::max(1.0f, static_cast<float>(width) / 640.0f);
}

}  // namespace

void CRainDrop::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {static_cast<double>(radius_), static_cast<double>(density_), static_cast<double>(dropHeight_)});
}

// Lifts a disc of water. A centre left of the frame or above it is drawn anew, well inside.
void CRainDrop::LetFall(int32_t x, int32_t y, int32_t radius) {
  const int32_t reach = Trunc32(ScaleOf(width) * static_cast<float>(radius));
  const auto drawInside = [&](int32_t size) {
    const int32_t room = WrapSub(WrapSub(size, WrapMul(2, reach)), 1);
    return WrapAdd(WrapAdd(reach, 1), random_.Below(room));
  };
  if (x < 0) x = drawInside(width);
  if (y < 0) y = drawInside(height);
  surface_.AddDrop(x, y, reach, WaterRim::kLast, [&](uint32_t) { return dropHeight_; });
}

void CRainDrop::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  radius_ = Trunc32(Param(params, 1));
  density_ = Trunc32(Param(params, 2));
  dropHeight_ = Trunc32(Param(params, 3));
  if (!surface_.Allocate(surface_.Cells())) {
    KVX_LOG_ALLOCATION_FAILURE("RainDropFilter");
    return;
  }

  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  CopyVisibleInBands(in, PackedDest(surface_.Copy(), width, height));
  CopyVisibleInBands(in, out);

  if (g_countdown.fetch_sub(1, std::memory_order_relaxed) - 1 < density_) {
    const int32_t y = random_.Below(height);
    const int32_t x = random_.Below(width);
    LetFall(x - kDropOffset, y - kDropOffset, radius_ >> 2);
    g_countdown.store(kFramesPerDrop, std::memory_order_relaxed);
  }

  const float scale = ScaleOf(width);
  surface_.Displace(out, {.factor = Trunc32(scale * scale), .wholeRows = false, .onePastEnd = false});
  surface_.WaveStep(kDamping);
}
