// The seventeen background fills: their names of the fourth parameter, defaults and patterns.
#ifndef KVX_SOURCE_BGF_VARIANTS_H_
#define KVX_SOURCE_BGF_VARIANTS_H_

#include "BGFCommon.h"
#include "BGFPatterns.h"

template <const FillVariant& Variant>
class BackgroundFill final : public BGFCommon {
 public:
  BackgroundFill(int32_t width, int32_t height) : BGFCommon(width, height, Variant) {}
};

namespace fill_variant {

inline constexpr FillVariant kPureGaussian{u"BG_Blur_Level", 1.0, -10, true};
inline constexpr FillVariant kThreeD{u"BG_Blur_Level", 1.0, -10, false, fill_pattern::ThreeD};
inline constexpr FillVariant kWave{u"BG_Blur_Level", 0.7, -10, true, fill_pattern::Wave};
inline constexpr FillVariant kDiamondWave{u"BG_Blur_Level", 0.7, -10, true, fill_pattern::DiamondWave};
inline constexpr FillVariant kMosic{u"Block_size", 0.04, -10, false, fill_pattern::Mosaic};
inline constexpr FillVariant kBlacknet{u"Block_size", 0, -10, false, fill_pattern::Blacknet};
inline constexpr FillVariant kPerspect{u"BG_Blur_Level", 1.0, -10, false, fill_pattern::Perspect};
inline constexpr FillVariant kHola{u"BG_Blur_Level", 0.6, -10, true, fill_pattern::Hola};
inline constexpr FillVariant kBrick{u"Block_size", 0.5, -10, false, fill_pattern::Brick};
inline constexpr FillVariant kOyster{u"Scales_Level", 0.6, -10, true, fill_pattern::Oyster};
inline constexpr FillVariant kDiamondBlur{u"Block_size", 0.57, -10, true, fill_pattern::DiamondBlur};
inline constexpr FillVariant kFrosted{u"Frosted_Level", 0.5, -10, false, fill_pattern::Frosted};
inline constexpr FillVariant kNoise{u"Frosted_Level", 0.5, 80, false, fill_pattern::Noise};
inline constexpr FillVariant kGaussianBar{u"BG_Blur_Level", 1.0, -10, true, nullptr, fill_pattern::GaussianBar};
inline constexpr FillVariant kRippleH{u"Warp_Level", 0.33, -10, false, fill_pattern::RippleH};
inline constexpr FillVariant kRippleV{u"Warp_Level", 0.33, -10, false, fill_pattern::RippleV};
inline constexpr FillVariant kGray{u"BG_Blur_Level", 0.6, -10, true, fill_pattern::Gray};

}  // namespace fill_variant

using BGFPureGaussian = BackgroundFill<fill_variant::kPureGaussian>;
using BGFThreeD = BackgroundFill<fill_variant::kThreeD>;
using BGFWave = BackgroundFill<fill_variant::kWave>;
using BGFDiamondWave = BackgroundFill<fill_variant::kDiamondWave>;
using BGFMosic = BackgroundFill<fill_variant::kMosic>;
using BGFBlacknet = BackgroundFill<fill_variant::kBlacknet>;
using BGFPerspect = BackgroundFill<fill_variant::kPerspect>;
using BGFHola = BackgroundFill<fill_variant::kHola>;
using BGFBrick = BackgroundFill<fill_variant::kBrick>;
using BGFOyster = BackgroundFill<fill_variant::kOyster>;
using BGFDiamondBlur = BackgroundFill<fill_variant::kDiamondBlur>;
using BGFFrosted = BackgroundFill<fill_variant::kFrosted>;
using BGFNoise = BackgroundFill<fill_variant::kNoise>;
using BGFGaussianBar = BackgroundFill<fill_variant::kGaussianBar>;
using BGFRippleH = BackgroundFill<fill_variant::kRippleH>;
using BGFRippleV = BackgroundFill<fill_variant::kRippleV>;
using BGFGray = BackgroundFill<fill_variant::kGray>;

#endif  // KVX_SOURCE_BGF_VARIANTS_H_
