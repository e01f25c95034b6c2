// The picture files that effects read, below "Merge" of the material directory: the effect table names them by these,
// and the painter paints them.
#ifndef KVX_RESOURCES_MATERIAL_NAMES_H_
#define KVX_RESOURCES_MATERIAL_NAMES_H_

namespace material {

inline constexpr char kAncientCanvas[] = "AncientCanvas.jpg";
inline constexpr char kBubble[] = "pf_bubble4.png";
inline constexpr char kBurntPaper[] = "burntpaper.png";
inline constexpr char kCamcorderOffNarrow[] = "CamcorderOff4_3.png";
inline constexpr char kCamcorderOffWide[] = "CamcorderOff16_9.png";
inline constexpr char kCamcorderOnNarrow[] = "CamcorderOn4_3.png";
inline constexpr char kCamcorderOnWide[] = "CamcorderOn16_9.png";
inline constexpr char kColorExplosion[] = "color_explosion.png";
inline constexpr char kColorTuneCircle00[] = "ColorTuneCircle00.png";
inline constexpr char kColorTuneCircle01[] = "ColorTuneCircle01.png";
inline constexpr char kConcertNarrow[] = "Concert4_3.png";
inline constexpr char kConcertWide[] = "Concert16_9.png";
inline constexpr char kDark[] = "Dark.jpg";
inline constexpr char kDarkCorners[] = "dark.png";
inline constexpr char kFilter1[] = "Filter1.jpg";
inline constexpr char kFocusColor[] = "pc_focusColor.png";
inline constexpr char kGrungeRays[] = "GrungeRays.png";
inline constexpr char kHardLight[] = "HardLight.jpg";
inline constexpr char kLinearBurn[] = "LinearBurn.jpg";
inline constexpr char kLinearDodge[] = "LinearDodge.jpg";
inline constexpr char kLinearLight[] = "LinearLight.jpg";
inline constexpr char kMergeImage[] = "MergeImage.png";
inline constexpr char kMergeLight[] = "MergeLight.jpg";
inline constexpr char kMergeLinear[] = "MergeLinear.jpg";
inline constexpr char kNightGlassViewNarrow[] = "NightGlassView4_3.png";
inline constexpr char kNightGlassViewWide[] = "NightGlassView16_9.png";
inline constexpr char kOldPaper[] = "OldPaper.jpg";
inline constexpr char kOldTV[] = "OldTV.jpg";
inline constexpr char kOldTime[] = "oldtime.png";
inline constexpr char kOverlay[] = "Overlay.jpg";
inline constexpr char kRadial[] = "radial3.png";
inline constexpr char kRaindrop[] = "pf_raindrop.png";
inline constexpr char kScreen[] = "Screen.jpg";
inline constexpr char kShine[] = "pf_shine2.png";
inline constexpr char kSightNarrow[] = "Sight4_3.png";
inline constexpr char kSightWide[] = "Sight16_9.png";
inline constexpr char kSketch[] = "sketch.png";
inline constexpr char kSketchBlack[] = "sketch_black.png";
inline constexpr char kSoftLight[] = "SoftLight.jpg";
inline constexpr char kStencilPosterBlue[] = "StencilPosterBlue.jpg";
inline constexpr char kStencilPosterGreen[] = "StencilPosterGreen.jpg";
inline constexpr char kStencilPosterRed[] = "StencilPosterRed.jpg";
inline constexpr char kVignette1[] = "Vignette1.jpg";
inline constexpr char kVignette2[] = "Vignette2.jpg";
inline constexpr char kVignette3[] = "Vignette3.jpg";
inline constexpr char kVignette4[] = "Vignette4.jpg";
inline constexpr char kVignette5[] = "Vignette5.jpg";
inline constexpr char kVignette6[] = "Vignette6.jpg";
inline constexpr char kVignetteWhite[] = "VignetteWhite.jpg";
inline constexpr char kWaterDrop3[] = "WaterDrop3.jpg";
inline constexpr char kWindowShadesNarrow[] = "WindowShades4_3.png";
inline constexpr char kWindowShadesWide[] = "WindowShades16_9.png";
inline constexpr char kWovenNarrow[] = "Woven4_3.png";
inline constexpr char kWovenWide[] = "Woven16_9.png";

}  // namespace material

#endif  // KVX_RESOURCES_MATERIAL_NAMES_H_
