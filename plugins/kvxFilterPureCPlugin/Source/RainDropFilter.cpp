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

// The picture through the waves' slopes. Where a slope leads out of the frame the destination stays.
void Refract(const int32_t* heights, ConstFrameView picture, FrameView dst, int32_t scale) {
  const int32_t width = dst.width;
  const uint32_t count = static_cast<uint32_t>(width) * static_cast<uint32_t>(dst.height);
  for (int32_t y = 1; y < dst.height - 1; ++y) {
    const int32_t* here = heights + static_cast<ptrdiff_t>(y) * width;
    uint8_t* out = dst.Row(y);
    for (int32_t x = 1; x < width - 1; ++x) {
      const int32_t dy = WrapMul(WrapSub(here[x], here[x + width]), scale) >> 3;
      const int32_t dx = WrapMul(WrapSub(here[x], here[x + 1]), scale) >> 3;
      const int32_t from = WrapAdd(WrapAdd(y * width + x, WrapMul(dy, width)), dx);
      if (static_cast<uint32_t>(from) < count) StorePixel(out, x, LoadPixel(picture.data, from));
    }
  }
}

// One step of the wave equation: `next` holds the heights of one frame ago and receives those of the next.
void Propagate(const int32_t* heights, int32_t* next, int32_t width, int32_t height) {
  for (int32_t y = 1; y < height - 1; ++y) {
    const int32_t* h = heights + static_cast<ptrdiff_t>(y) * width;
    int32_t* n = next + static_cast<ptrdiff_t>(y) * width;
    for (int32_t x = 1; x < width - 1; ++x) {
      const uint32_t sum = uint32_t(h[x - width - 1]) + uint32_t(h[x - width + 1]) + uint32_t(h[x + width - 1]) +
                           uint32_t(h[x + width + 1]) + uint32_t(h[x - width]) + uint32_t(h[x + width]) +
                           uint32_t(h[x - 1]) + uint32_t(h[x + 1]);
      const int32_t v = WrapSub(static_cast<int32_t>(sum) >> 2, n[x]);
      n[x] = WrapSub(v, v >> kDamping);
    }
  }
}

}  // namespace

void CRainDrop::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {static_cast<double>(radius_), static_cast<double>(density_), static_cast<double>(dropHeight_)});
}

bool CRainDrop::Allocate() {
  if (picture_) return true;
  const size_t count = PixelCount(width, height);
  if (heights_[0].Allocate(count) && heights_[1].Allocate(count) && picture_.Allocate(4 * count)) return true;
  for (auto& page : heights_) page.Free();
  return false;
}

uint32_t CRainDrop::NextRandom() {
  return seed_ = seed_ * 1103515245u + 12345u;
}

// Lifts a disc of water. A centre left of the frame or above it is drawn anew, well inside.
void CRainDrop::LetFall(int32_t x, int32_t y, int32_t radius) {
  const int64_t reach = Trunc32(ScaleOf(width) * static_cast<float>(radius));
  const auto drawInside = [&](int32_t size) {
    const uint32_t random = NextRandom();
    const uint32_t room = static_cast<uint32_t>(size - 2 * reach - 1);
    return static_cast<int32_t>(static_cast<uint32_t>(reach + 1) + (room != 0 ? random % room : 0));
  };
  if (x < 0) x = drawInside(width);
  if (y < 0) y = drawInside(height);

  int32_t* heights = heights_[page_].Data();
  const int64_t firstX = std::max<int64_t>(-reach, int64_t{1} - x);
  const int64_t lastX = std::min<int64_t>(reach, int64_t{width} - x - 1);
  const int64_t firstY = std::max<int64_t>(-reach, int64_t{1} - y);
  const int64_t lastY = std::min<int64_t>(reach, int64_t{height} - y - 1);
  for (int64_t dy = firstY; dy <= lastY; ++dy) {
    for (int64_t dx = firstX; dx <= lastX; ++dx) {
      if (dx * dx + dy * dy >= reach * reach) continue;
      int32_t& at = heights[(y + dy) * width + x + dx];
      at = WrapAdd(at, dropHeight_);
    }
  }
}

void CRainDrop::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  radius_ = Trunc32(Param(params, 1));
  density_ = Trunc32(Param(params, 2));
  dropHeight_ = Trunc32(Param(params, 3));
  if (!Allocate()) {
    KVX_LOG_ALLOCATION_FAILURE("RainDropFilter");
    return;
  }

  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  CopyVisible(in, PackedDest(picture_.Data(), width, height));
  CopyVisible(in, out);

  if (g_countdown.fetch_sub(1, std::memory_order_relaxed) - 1 < density_) {
    const int32_t y = static_cast<int32_t>(NextRandom() % static_cast<uint32_t>(height));
    const int32_t x = static_cast<int32_t>(NextRandom() % static_cast<uint32_t>(width));
    LetFall(x - kDropOffset, y - kDropOffset, radius_ >> 2);
    g_countdown.store(kFramesPerDrop, std::memory_order_relaxed);
  }

  const float scale = ScaleOf(width);
  int32_t* now = heights_[page_].Data();
  int32_t* other = heights_[page_ ^ 1].Data();
  Refract(now, PackedSource(picture_.Data(), width, height), out, Trunc32(scale * scale));
  Propagate(now, other, width, height);
  page_ ^= 1;
}
