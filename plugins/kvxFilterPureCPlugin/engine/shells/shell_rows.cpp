// One row for each shell: effect id, engine code, what it takes, what it reports.
//
// What a shell reports and what it takes differ in places, and are meant to: the sunshine reports its percentage first
// and takes it last; tilt shift and radial blur report a rectangle and take level and direction; the raindrop reports
// one parameter and takes three.
#include "engine/shells/engine_shell.h"

namespace {

using Record = EngineRecord;

// What shells take.
constexpr RecordField kLevel[] = {&Record::level};
constexpr RecordField kLevelDirection[] = {&Record::level, &Record::direction};
constexpr RecordField kLevelDirectionRadius[] = {&Record::level, &Record::direction, &Record::radius};
constexpr RecordField kPointRadius[] = {&Record::pointX, &Record::pointY, &Record::radius};
constexpr RecordField kColor[] = {&Record::colorRed, &Record::colorGreen, &Record::colorBlue};
constexpr RecordField kPositionRadiusLevel[] = {&Record::posX, &Record::posY, &Record::radius, &Record::level};
constexpr RecordField kPositionLevel[] = {&Record::posX, &Record::posY, &Record::level};
constexpr RecordField kPositionRadius[] = {&Record::posX, &Record::posY, &Record::radius};

constexpr ShellStart kSnowStart[] = {{&Record::direction, 1}, {&Record::level, 20}, {&Record::radius, 80}};
constexpr ShellStart kBubbleStart[] = {{&Record::direction, 1}, {&Record::radius, 20}, {&Record::level, 30}};

constexpr ShellInput kTakesNothing = {};
constexpr ShellInput kTakesLevel = {.fields = kLevel};
constexpr ShellInput kTakesScaledLevel = {.fields = kLevel, .scaledLevel = true};
constexpr ShellInput kTakesStar = {.fields = kLevel, .frameRate = true};
constexpr ShellInput kTakesSnow = {.fields = kLevelDirectionRadius, .frameRate = true, .start = kSnowStart};
constexpr ShellInput kTakesBubble = {.fields = kLevelDirectionRadius, .frameRate = true, .start = kBubbleStart};
constexpr ShellInput kTakesPoint = {.fields = kPointRadius};
constexpr ShellInput kTakesColor = {.fields = kColor};
constexpr ShellInput kTakesSpot = {.fields = kPositionRadiusLevel};
constexpr ShellInput kTakesClock = {.fields = {}, .frameRate = true, .frameNumber = true};
constexpr ShellInput kTakesMapLevel = {.fields = kPositionLevel, .dirtyOnChange = kDirtyAll};
constexpr ShellInput kTakesMapRadius = {.fields = kPositionRadius, .dirtyOnChange = kDirtyMap};
constexpr ShellInput kTakesDirected = {.fields = kLevelDirection};
constexpr ShellInput kTakesDrop = {.fields = kPositionLevel};

// What shells report.

constexpr ShellParam kPercent[] = {{{u"Percent", 0, 0, 100}, &Record::level}};
constexpr ShellParam kBubble[] = {{{u"Percent", 0, 0, 100}, &Record::level},
                                  {{u"Direction", 0, 0, 3}, &Record::direction},
                                  {{u"Radius", 0, 4, 100}, &Record::radius}};
constexpr ShellParam kSnow[] = {{{u"Percent", 0, 0, 100}, &Record::level},
                                {{u"Direction", 0, 0, 3}, &Record::direction},
                                {{u"Radius", 0, 1, 100}, &Record::radius}};
constexpr ShellParam kGetColor[] = {{{u"DecolorPosX", 0, 0, 100}, &Record::pointX},
                                    {{u"DecolorPosY", 0, 0, 100}, &Record::pointY},
                                    {{u"Radius", 0, 0, 100}, &Record::radius}};
constexpr ShellParam kOneColor[] = {{{u"Red", 0, 0, 255}, &Record::colorRed},
                                    {{u"Green", 0, 0, 255}, &Record::colorGreen},
                                    {{u"Blue", 0, 0, 255}, &Record::colorBlue}};
constexpr ShellParam kSunshine[] = {{{u"Percent", 0, 0, 100}, &Record::level},
                                    {{u"PositionX", 0, 0, 100}, &Record::posX},
                                    {{u"PositionY", 0, 0, 100}, &Record::posY},
                                    {{u"Radius", 0, 1, 100}, &Record::radius}};
constexpr ShellParam kVignetteRadius[] = {{{u"Radius", 0, 0, 100}, {}, 85}};
constexpr ShellParam kPosition[] = {{{u"xPos", 0, 0, 100}, &Record::posX},
                                    {{u"yPos", 0, 0, 100}, &Record::posY},
                                    {{u"Percent", 0, 0, 100}, &Record::level}};
constexpr ShellParam kFlames[] = {{{u"Percent", 0, 0, 100}, &Record::level},
                                  {{u"Direction", 0, 0, 3}, &Record::direction}};
constexpr ShellParam kBand[] = {{{u"LeftPos", 0, 0, kFrameWidth}, &Record::rectLeft},
                                {{u"RightPos", 0, 0, kFrameWidth}, &Record::rectRight},
                                {{u"TopPos", 0, 0, kFrameHeight}, &Record::rectTop},
                                {{u"BottomPos", 0, 0, kFrameHeight}, &Record::rectBottom}};
constexpr ShellParam kTunnel[] = {
    {{u"Position_X", 0, 0, 100}, {}, 50}, {{u"Position_Y", 0, 0, 100}, {}, 50}, {{u"Radius", 0, 2, 100}, {}, 30}};

// clang-format off
constexpr ShellRow kRows[] = {
    {75, code::kAmNoise, kTakesLevel, kPercent},
    {76, code::kMosaic, kTakesScaledLevel, kPercent},
    {77, code::kAmSplash, kTakesScaledLevel, kPercent},
    {78, code::kFilmGrain, kTakesLevel, kPercent},
    {79, code::kExposure, kTakesLevel, kPercent},
    {80, code::kEmboss, kTakesLevel, kPercent},
    {81, code::kBlueChannel, kTakesLevel, kPercent},
    {82, code::kGreenChannel, kTakesLevel, kPercent},
    {83, code::kRedChannel, kTakesLevel, kPercent},
    {84, code::kAlphaChannel, kTakesLevel, kPercent},
    {85, code::kGrayScale, kTakesNothing, {}},
    {86, code::kBinary, kTakesLevel, kPercent},
    {87, code::kXRays, kTakesNothing, {}},
    {88, code::kNegative, kTakesNothing, {}},
    {89, code::kThermal, kTakesNothing, {}},
    {90, code::kTritone, kTakesNothing, {}},
    {91, code::kTritone2, kTakesNothing, {}},
    {92, code::kSolarize, kTakesNothing, {}},
    {93, code::kFlipLeftRight, kTakesNothing, {}},
    {94, code::kFlipTopBottom, kTakesNothing, {}},
    {95, code::kFlipAll, kTakesNothing, {}},
    {96, code::kMirrorLeftRight, kTakesNothing, {}},
    {97, code::kMirrorTopBottom, kTakesNothing, {}},
    {98, code::kSunshine, kTakesSpot, kSunshine},
    {99, code::kCold, kTakesNothing, {}},
    {100, code::kCool, kTakesNothing, {}},
    {101, code::kWarm, kTakesNothing, {}},
    {102, code::kHot, kTakesNothing, {}},
    {103, code::kOneColor, kTakesColor, kOneColor},
    {104, code::kBrown, kTakesNothing, {}},
    {105, code::kChocolate, kTakesNothing, {}},
    {106, code::kWheat, kTakesNothing, {}},
    {107, code::kLinen, kTakesNothing, {}},
    {108, code::kPurple, kTakesNothing, {}},
    {109, code::kOlive, kTakesNothing, {}},
    {110, code::kTeal, kTakesNothing, {}},
    {111, code::kBlue, kTakesNothing, {}},
    {112, code::kGreen, kTakesNothing, {}},
    {113, code::kRed, kTakesNothing, {}},
    {114, code::kYellow, kTakesNothing, {}},
    {115, code::kFuchsia, kTakesNothing, {}},
    {116, code::kCyan, kTakesNothing, {}},
    {117, code::kHoodWink, kTakesNothing, {}},
    {118, code::kOldMovie, kTakesNothing, {}},
    {119, code::kOld80s, kTakesNothing, {}},
    {120, code::kOld90s, kTakesNothing, {}},
    {121, code::kOld70s, kTakesNothing, {}},
    {122, code::kSiena, kTakesNothing, {}},
    {123, code::kJapanese, kTakesNothing, {}},
    {124, code::kCyanBlue, kTakesNothing, {}},
    {125, code::kMovie, kTakesNothing, {}},
    {126, code::kCrossProcess, kTakesNothing, {}},
    {127, code::kRetro, kTakesNothing, {}},
    {128, code::kGrayRetro, kTakesNothing, {}},
    {129, code::kCinnamon, kTakesNothing, {}},
    {130, code::kXpro, kTakesNothing, {}},
    {131, code::kTcvga, kTakesNothing, {}},
    {132, code::kAmCartoon, kTakesNothing, {}},
    {133, code::kLnk, kTakesLevel, kPercent},
    {134, code::kStar, kTakesStar, kPercent},
    {74, code::kSnow, kTakesSnow, kSnow},
    {135, code::kBubble, kTakesBubble, kBubble},
    {136, code::kGetColor, kTakesPoint, kGetColor},
    {138, code::kFourSeasons, kTakesNothing, {}},
    {139, code::kSketchInPhoto, kTakesNothing, {}},
    {140, code::kSunFlower, kTakesNothing, {}},
    {141, code::kRomantic, kTakesNothing, {}},
    {142, code::kHoliday, kTakesNothing, {}},
    {143, code::kSimpleElegant, kTakesNothing, {}},
    {144, code::kYellowOnGray, kTakesNothing, {}},
    {145, code::kGrayNoise, kTakesNothing, {}},
    {146, code::kPurpleLomo, kTakesNothing, {}},
    {147, code::kFreshness, kTakesNothing, {}},
    {148, code::kBeautify, kTakesNothing, {}},
    {149, code::kFuzzy, kTakesNothing, {}},
    {150, code::kGloaming, kTakesNothing, {}},
    {151, code::kNewFresh, kTakesNothing, {}},
    {152, code::kBlueTears, kTakesNothing, {}},
    {153, code::kPurpleLove, kTakesNothing, {}},
    {154, code::kAegean, kTakesNothing, {}},
    {155, code::kLineDrawing, kTakesNothing, {}},
    {156, code::kWash, kTakesNothing, {}},
    {157, code::kComic, kTakesNothing, {}},
    {158, code::kRainbow, kTakesNothing, {}},
    {159, code::kLabTone, kTakesNothing, {}},
    {160, code::kSunriseBands, kTakesNothing, {}},
    {161, code::kJigsawA, kTakesNothing, {}},
    {162, code::kJigsawB, kTakesNothing, {}},
    {163, code::kJigsawC, kTakesNothing, {}},
    {164, code::kJigsawD, kTakesNothing, {}},
    {165, code::kJigsawE, kTakesNothing, {}},
    {166, code::kJigsawF, kTakesNothing, {}},
    {167, code::kVignetteRadius, kTakesLevel, kVignetteRadius},
    {168, code::kBadTvSignal, kTakesClock, {}},
    {169, code::kKaleidoscope, kTakesNothing, {}},
    {170, code::kOil, kTakesLevel, kPercent},
    {171, code::kWarpSharpen, kTakesNothing, {}},
    {172, code::kWarpBlur, kTakesNothing, {}},
    {173, code::kSketch, kTakesLevel, kPercent},
    {175, code::kSketch, kTakesLevel, kPercent},
    {174, code::kNeon, kTakesLevel, kPercent},
    {176, code::kRipple, kTakesLevel, kPercent},
    {177, code::kTunnel, kTakesMapRadius, kTunnel},
    {178, code::kEnlarge, kTakesMapLevel, kPosition},
    {179, code::kNarrow, kTakesMapLevel, kPosition},
    {180, code::kWhirl, kTakesMapLevel, kPosition},
    {181, code::kRaindropWarp, kTakesDrop, kPercent},
    {182, code::kFlames, kTakesDirected, kFlames},
    {187, code::kSketchB, kTakesLevel, {}},
    {188, code::kNeonB, kTakesNothing, {}},
    {189, code::kNeonC, kTakesNothing, {}},
    {183, code::kTiltShift, kTakesDirected, kBand},
    {184, code::kTiltShift, kTakesDirected, kBand},
    {190, code::kExplosion, kTakesNothing, {}},
};
// clang-format on

}  // namespace

std::span<const ShellRow> ShellRows() {
  return kRows;
}
