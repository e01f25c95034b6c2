#include "Source/AspectMergeFilter.h"

#include "Source/Overlays.h"

CAspectMergeFilter::CAspectMergeFilter(const EffectRow& row, int32_t frameWidth, int32_t frameHeight, float alphaFactor)
    : CBaseFilterProc(frameWidth, frameHeight),
      overlay_(row.materials[0], row.materials[1]),
      alphaFactor_(alphaFactor) {}

void CAspectMergeFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  if (!src || !dst) return;
  const uint8_t* picture = overlay_.PictureFor(width, height);
  if (!picture) return;
  DrawOverlay({src, width, height, srcStep}, {dst, width, height, dstStep}, picture, alphaFactor_, OverlayTone::kKeep);
}

CBaseFilterProc* MakeAspectMergeFilter(const EffectRow& row, int32_t width, int32_t height) {
  constexpr int32_t kWoven = 353;
  return new CAspectMergeFilter(row, width, height, row.id == kWoven ? 0.2f : 1.0f);
}
