#include "Source/NightGlassViewFilter.h"

#include "Source/Overlays.h"

// The caller's source comes back green: meant.
void CNightGlassViewFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                                    const ParamValueArray*) {
  if (!src || !dst) return;
  const uint8_t* picture = overlay_.PictureFor(width, height);
  if (!picture) return;
  DrawOverlay({src, width, height, srcStep}, {dst, width, height, dstStep}, picture, 1.0f, OverlayTone::kGreen);
}

CBaseFilterProc* MakeNightGlassView(const EffectRow& row, int32_t width, int32_t height) {
  return new CNightGlassViewFilter(row, width, height);
}
