#include "Source/CamRecorderFilter.h"

#include <atomic>

#include "Source/Overlays.h"

namespace {

// One counter for all finders of the process: with two of them the mark blinks twice as fast.
std::atomic<int32_t> g_frameCounter{0};
constexpr int32_t kFramesPerPhase = 12;

}  // namespace

void CCamRecorderFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  if (!src || !dst) return;
  const uint8_t* on = on_.PictureFor(width, height);
  if (!on) return;
  const uint8_t* off = off_.PictureFor(width, height);
  if (!off) return;
  const int32_t phase = g_frameCounter.fetch_add(1, std::memory_order_relaxed) / kFramesPerPhase;
  DrawOverlay({src, width, height, srcStep}, {dst, width, height, dstStep}, phase % 2 == 0 ? on : off, 1.0f,
              OverlayTone::kKeep);
}

CBaseFilterProc* MakeCamRecorder(const EffectRow& row, int32_t width, int32_t height) {
  return new CCamRecorderFilter(row, width, height);
}
