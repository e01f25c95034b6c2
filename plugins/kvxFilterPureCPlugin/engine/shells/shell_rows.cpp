// One row for each shell: effect id, class, engine code, parameter group, reported parameters.
//
// What a shell reports and what it takes differ in places, and are meant to: the sunshine reports its percentage first
// and takes it last; tilt shift and radial blur report a rectangle and take level and direction; the raindrop reports
// one parameter and takes three.
#include "engine/shells/engine_shell.h"

namespace {

using enum ShellField;

constexpr ShellParam kPercent[] = {{{u"Percent", 0, 0, 100}, kLevel}};
constexpr ShellParam kBubble[] = {
    {{u"Percent", 0, 0, 100}, kLevel}, {{u"Direction", 0, 0, 3}, kDirection}, {{u"Radius", 0, 4, 100}, kRadius}};
constexpr ShellParam kSnow[] = {
    {{u"Percent", 0, 0, 100}, kLevel}, {{u"Direction", 0, 0, 3}, kDirection}, {{u"Radius", 0, 1, 100}, kRadius}};
constexpr ShellParam kGetColor[] = {
    {{u"DecolorPosX", 0, 0, 100}, kPointX}, {{u"DecolorPosY", 0, 0, 100}, kPointY}, {{u"Radius", 0, 0, 100}, kRadius}};
constexpr ShellParam kOneColor[] = {
    {{u"Red", 0, 0, 255}, kColorRed}, {{u"Green", 0, 0, 255}, kColorGreen}, {{u"Blue", 0, 0, 255}, kColorBlue}};
constexpr ShellParam kSunshine[] = {{{u"Percent", 0, 0, 100}, kLevel},
                                    {{u"PositionX", 0, 0, 100}, kPosX},
                                    {{u"PositionY", 0, 0, 100}, kPosY},
                                    {{u"Radius", 0, 1, 100}, kRadius}};
constexpr ShellParam kVignetteRadius[] = {{{u"Radius", 0, 0, 100}, kConstant, 85}};
constexpr ShellParam kPosition[] = {
    {{u"xPos", 0, 0, 100}, kPosX}, {{u"yPos", 0, 0, 100}, kPosY}, {{u"Percent", 0, 0, 100}, kLevel}};
constexpr ShellParam kFlames[] = {{{u"Percent", 0, 0, 100}, kLevel}, {{u"Direction", 0, 0, 3}, kDirection}};
constexpr ShellParam kBand[] = {{{u"LeftPos", 0, 0, kFrameWidth}, kRectLeft},
                                {{u"RightPos", 0, 0, kFrameWidth}, kRectRight},
                                {{u"TopPos", 0, 0, kFrameHeight}, kRectTop},
                                {{u"BottomPos", 0, 0, kFrameHeight}, kRectBottom}};
constexpr ShellParam kTunnel[] = {{{u"Position_X", 0, 0, 100}, kConstant, 50},
                                  {{u"Position_Y", 0, 0, 100}, kConstant, 50},
                                  {{u"Radius", 0, 2, 100}, kConstant, 30}};

// clang-format off
constexpr ShellRow kRows[] = {
    {75, "CAMNoiseFilter", 1, ShellGroup::kLevel, kPercent},
    {76, "CMosaicFilter", 2, ShellGroup::kScaledLevel, kPercent},
    {77, "CAMSplashFilter", 3, ShellGroup::kScaledLevel, kPercent},
    {78, "CFilmGrain", 4, ShellGroup::kLevel, kPercent},
    {79, "CExposureFilter", 5, ShellGroup::kLevel, kPercent},
    {80, "CEmbossFilter", 6, ShellGroup::kLevel, kPercent},
    {81, "CBChannelFilter", 7, ShellGroup::kLevel, kPercent},
    {82, "CGChannelFilter", 8, ShellGroup::kLevel, kPercent},
    {83, "CRChannelFilter", 9, ShellGroup::kLevel, kPercent},
    {84, "CAChannelFilter", 10, ShellGroup::kLevel, kPercent},
    {85, "CGrayScaleFilter", 11, ShellGroup::kNone, {}},
    {86, "CBinaryFilter", 12, ShellGroup::kLevel, kPercent},
    {87, "CXRaysFilter", 13, ShellGroup::kNone, {}},
    {88, "CNegativeFilter", 14, ShellGroup::kNone, {}},
    {89, "CThermalFilter", 15, ShellGroup::kNone, {}},
    {90, "CTritoneFilter", 16, ShellGroup::kNone, {}},
    {91, "CTritoneFilter2", 17, ShellGroup::kNone, {}},
    {92, "CSolarizeFilter", 18, ShellGroup::kNone, {}},
    {93, "CFlipLRFilter", 19, ShellGroup::kNone, {}},
    {94, "CFlipTBFilter", 20, ShellGroup::kNone, {}},
    {95, "CFlipAllFilter", 21, ShellGroup::kNone, {}},
    {96, "CMirrorLRFilter", 22, ShellGroup::kNone, {}},
    {97, "CMirrorTBFilter", 23, ShellGroup::kNone, {}},
    {98, "CSunshineFilter", 24, ShellGroup::kSpot, kSunshine},
    {99, "CColdFilter", 25, ShellGroup::kNone, {}},
    {100, "CCoolFilter", 26, ShellGroup::kNone, {}},
    {101, "CWarmFilter", 27, ShellGroup::kNone, {}},
    {102, "CHotFilter", 28, ShellGroup::kNone, {}},
    {103, "COneColorFilter", 29, ShellGroup::kColor, kOneColor},
    {104, "CBrownFilter", 30, ShellGroup::kNone, {}},
    {105, "CChocolateFilter", 31, ShellGroup::kNone, {}},
    {106, "CWheatFilter", 32, ShellGroup::kNone, {}},
    {107, "CLinenFilter", 33, ShellGroup::kNone, {}},
    {108, "CPurpleFilter", 34, ShellGroup::kNone, {}},
    {109, "COliveFilter", 35, ShellGroup::kNone, {}},
    {110, "CTealFilter", 36, ShellGroup::kNone, {}},
    {111, "CBlueFilter", 37, ShellGroup::kNone, {}},
    {112, "CGreenFilter", 38, ShellGroup::kNone, {}},
    {113, "CRedFilter", 39, ShellGroup::kNone, {}},
    {114, "CYellowFilter", 40, ShellGroup::kNone, {}},
    {115, "CFuchsiaFilter", 41, ShellGroup::kNone, {}},
    {116, "CCyanFilter", 42, ShellGroup::kNone, {}},
    {117, "CHoodWinkFilter", 43, ShellGroup::kNone, {}},
    {118, "COldMovieFilter", 44, ShellGroup::kNone, {}},
    {119, "COld80sFilter", 45, ShellGroup::kNone, {}},
    {120, "COld90sFilter", 46, ShellGroup::kNone, {}},
    {121, "COld70sFilter", 47, ShellGroup::kNone, {}},
    {122, "CSienaFilter", 48, ShellGroup::kNone, {}},
    {123, "CJapanessFilter", 49, ShellGroup::kNone, {}},
    {124, "CCyanBlueFilter", 50, ShellGroup::kNone, {}},
    {125, "CMovieFilter", 51, ShellGroup::kNone, {}},
    {126, "CCrossProcessFilter", 52, ShellGroup::kNone, {}},
    {127, "CRetroFilter", 53, ShellGroup::kNone, {}},
    {128, "CGrayRetroFilter", 54, ShellGroup::kNone, {}},
    {129, "CCinnamonFilter", 55, ShellGroup::kNone, {}},
    {130, "CXproFilter", 56, ShellGroup::kNone, {}},
    {131, "CTcvgaFilter", 57, ShellGroup::kNone, {}},
    {132, "CAmCartoonFilter", 58, ShellGroup::kNone, {}},
    {133, "CLnkFilter", 59, ShellGroup::kLevel, kPercent},
    {134, "CStarFilter", 60, ShellGroup::kStar, kPercent},
    {74, "CSnowFilter", 61, ShellGroup::kParticles, kSnow},
    {135, "CBubbleFilte", 62, ShellGroup::kParticles, kBubble},
    {136, "CGetColorFilter", 63, ShellGroup::kPoint, kGetColor},
    {138, "CFourseasonFilter", 65, ShellGroup::kNone, {}},
    {139, "CPhotoWithSkectch", 66, ShellGroup::kNone, {}},
    {140, "CSunFlowerFilter", 67, ShellGroup::kNone, {}},
    {141, "CRomanticFilter", 68, ShellGroup::kNone, {}},
    {142, "CHolidayFilter", 69, ShellGroup::kNone, {}},
    {143, "CSimpleElegent", 71, ShellGroup::kNone, {}},
    {144, "CBWYellowFilter", 72, ShellGroup::kNone, {}},
    {145, "CBWNoiseFilter", 73, ShellGroup::kNone, {}},
    {146, "CPurpleLomoFilter", 74, ShellGroup::kNone, {}},
    {147, "CFreshNessFilter", 75, ShellGroup::kNone, {}},
    {148, "CBeautifyImgFilter", 76, ShellGroup::kNone, {}},
    {149, "CFuzzyImgFilter", 77, ShellGroup::kNone, {}},
    {150, "CGloamingFilter", 78, ShellGroup::kNone, {}},
    {151, "CNewFreshFilter", 79, ShellGroup::kNone, {}},
    {152, "CBlueTearsFilter", 80, ShellGroup::kNone, {}},
    {153, "CPurpleLoveFilter", 81, ShellGroup::kNone, {}},
    {154, "CAegeanFilter", 82, ShellGroup::kNone, {}},
    {155, "CShadowFilter", 83, ShellGroup::kNone, {}},
    {156, "CWashFilter", 84, ShellGroup::kNone, {}},
    {157, "CComicFilter", 85, ShellGroup::kNone, {}},
    {158, "CRainbowFilter", 86, ShellGroup::kNone, {}},
    {159, "CAibaoFilter", 87, ShellGroup::kNone, {}},
    {160, "CRainbow2Filter", 88, ShellGroup::kNone, {}},
    {161, "CJigsawAFilter", 89, ShellGroup::kNone, {}},
    {162, "CJigsawBFilter", 90, ShellGroup::kNone, {}},
    {163, "CJigsawCFilter", 91, ShellGroup::kNone, {}},
    {164, "CJigsawDFilter", 92, ShellGroup::kNone, {}},
    {165, "CJigsawEFilter", 93, ShellGroup::kNone, {}},
    {166, "CJigsawFFilter", 94, ShellGroup::kNone, {}},
    {167, "CVignetteRadiusFilter", 95, ShellGroup::kVignette, kVignetteRadius},
    {168, "CBadTVSignalFilter", 96, ShellGroup::kBadSignal, {}},
    {169, "CKaleidoscopeFilter", 97, ShellGroup::kNone, {}},
    {170, "CWarpOil", 1025, ShellGroup::kLevel, kPercent},
    {171, "CWarpSharpen", 1026, ShellGroup::kNone, {}},
    {172, "CWarpBlur", 1027, ShellGroup::kNone, {}},
    {173, "CWarpSketch", 1028, ShellGroup::kLevel, kPercent},
    {175, "CWarpShake", 1028, ShellGroup::kLevel, kPercent},
    {174, "CWarpNeon", 1029, ShellGroup::kLevel, kPercent},
    {176, "CWarpRipple", 1031, ShellGroup::kLevel, kPercent},
    {177, "CWarpTunnel", 1032, ShellGroup::kMapRadius, kTunnel},
    {178, "CWarpEnlarge", 1033, ShellGroup::kMapLevel, kPosition},
    {179, "CWarpNarrow", 1034, ShellGroup::kMapLevel, kPosition},
    {180, "CWarpWhirl", 1035, ShellGroup::kMapLevel, kPosition},
    {181, "CWarpRaindrop", 1036, ShellGroup::kDrop, kPercent},
    {182, "CWarpFlames", 1037, ShellGroup::kDirected, kFlames},
    {187, "CWarpSketchB", 1038, ShellGroup::kLevel, {}},
    {188, "CWarpNeonB", 1039, ShellGroup::kNone, {}},
    {189, "CWarpNeonC", 1040, ShellGroup::kNone, {}},
    {183, "CWarpTiltShift", 1041, ShellGroup::kDirected, kBand},
    {184, "CWarpRadialBlur", 1041, ShellGroup::kDirected, kBand},
    {190, "CWarpExplosion", 1042, ShellGroup::kNone, {}},
};
// clang-format on

}  // namespace

std::span<const ShellRow> ShellRows() {
  return kRows;
}
