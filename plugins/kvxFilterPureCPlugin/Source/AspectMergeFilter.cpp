#include "AspectMergeFilter.h"

#include <utility>

namespace {

struct AspectRow {
  int32_t id;
  const char16_t* wideFile;
  const char16_t* narrowFile;
  float alphaFactor;
};

constexpr AspectRow kAspectRows[] = {
    {352, u"WindowShades16_9.png", u"WindowShades4_3.png", 1.0f},
    {353, u"Woven16_9.png", u"Woven4_3.png", 0.2f},
    {354, u"Concert16_9.png", u"Concert4_3.png", 1.0f},
};

}  // namespace

CAspectMergeFilter::CAspectMergeFilter(int32_t width, int32_t height, std::u16string wideFile,
                                       std::u16string narrowFile, float alphaFactor)
    : CBaseFilterProc(width, height), overlay_(std::move(wideFile), std::move(narrowFile)), alphaFactor_(alphaFactor) {}

void CAspectMergeFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  if (!src || !dst) return;
  const uint8_t* picture = overlay_.PictureFor(width, height);
  if (!picture) return;
  DrawOverlay({src, width, height, srcStep}, {dst, width, height, dstStep}, picture, alphaFactor_, KeepSource());
}

CBaseFilterProc* MakeAspectMergeFilter(int32_t id, int32_t width, int32_t height) {
  for (const AspectRow& row : kAspectRows) {
    if (row.id == id) return new CAspectMergeFilter(width, height, row.wideFile, row.narrowFile, row.alphaFactor);
  }
  return nullptr;
}
