#include "Source/BackgroundFills.h"

#include "Source/BGFCommon.h"
#include "Source/BGFPatterns.h"

namespace {

// Name of the fourth parameter, pattern level, luminance of the background, blur before the pattern, routine, sharp
// middle.
struct FillRow {
  int32_t id;
  FillVariant fill;
};
constexpr FillRow kFills[] = {
    {1374, {u"BG_Blur_Level", 1.0, -10, true}},
    {1375, {u"BG_Blur_Level", 1.0, -10, false, fill_pattern::ThreeD}},
    {1376, {u"BG_Blur_Level", 0.7, -10, true, fill_pattern::Wave}},
    {1377, {u"BG_Blur_Level", 0.7, -10, true, fill_pattern::DiamondWave}},
    {1378, {u"Block_size", 0.04, -10, false, fill_pattern::Mosaic}},
    {1379, {u"Block_size", 0, -10, false, fill_pattern::Blacknet}},
    {1380, {u"BG_Blur_Level", 1.0, -10, false, fill_pattern::Perspect}},
    {1381, {u"BG_Blur_Level", 0.6, -10, true, fill_pattern::Hola}},
    {1382, {u"Block_size", 0.5, -10, false, fill_pattern::Brick}},
    {1383, {u"Scales_Level", 0.6, -10, true, fill_pattern::Oyster}},
    {1384, {u"Block_size", 0.57, -10, true, fill_pattern::DiamondBlur}},
    {1385, {u"Frosted_Level", 0.5, -10, false, fill_pattern::Frosted}},
    {1386, {u"Frosted_Level", 0.5, 80, false, fill_pattern::Noise}},
    {1387, {u"BG_Blur_Level", 1.0, -10, true, nullptr, true}},
    {1388, {u"Warp_Level", 0.33, -10, false, fill_pattern::RippleH}},
    {1389, {u"Warp_Level", 0.33, -10, false, fill_pattern::RippleV}},
    {1390, {u"BG_Blur_Level", 0.6, -10, true, fill_pattern::Gray}},
};

}  // namespace

CBaseFilterProc* MakeBackgroundFill(const EffectRow& effect, int32_t width, int32_t height) {
  for (const FillRow& row : kFills) {
    if (row.id == effect.id) return new BGFCommon(width, height, row.fill);
  }
  return nullptr;
}
