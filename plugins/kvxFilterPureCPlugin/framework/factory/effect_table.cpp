#include "framework/factory/effect_table.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "Source/3DGrid.h"
#include "Source/BackgroundFills.h"
#include "Source/Balance.h"
#include "Source/Baltan.h"
#include "Source/CartoonFilter.h"
#include "Source/CloudsFilter.h"
#include "Source/Cluster.h"
#include "Source/ColorScale.h"
#include "Source/Curves.h"
#include "Source/DefishFilter.h"
#include "Source/Delay.h"
#include "Source/DelayGrab.h"
#include "Source/DistortFilter.h"
#include "Source/DoubleFisheye.h"
#include "Source/EdgeglowFilter.h"
#include "Source/Emboss.h"
#include "Source/Equalize.h"
#include "Source/FireFilter.h"
#include "Source/Flash.h"
#include "Source/FlippoFilter.h"
#include "Source/Glow.h"
#include "Source/HueShift.h"
#include "Source/IsingFilter.h"
#include "Source/LensCorrection.h"
#include "Source/LetterBox.h"
#include "Source/LissajousFilter.h"
#include "Source/LumaLevels.h"
#include "Source/MaskmateFilter.h"
#include "Source/MergeFilterWithLight.h"
#include "Source/Mosaics.h"
#include "Source/Nervous.h"
#include "Source/NosyncFilter.h"
#include "Source/OrnerFilter.h"
#include "Source/Overlays.h"
#include "Source/PerspectiveFilter.h"
#include "Source/PlasmaFilter.h"
#include "Source/PointColor.h"
#include "Source/PointTone.h"
#include "Source/RainDropFilter.h"
#include "Source/Ribbon.h"
#include "Source/Scatter.h"
#include "Source/SelectFilter.h"
#include "Source/Sharpen.h"
#include "Source/Sobel.h"
#include "Source/SplitFilter.h"
#include "Source/SplitMoveFilter.h"
#include "Source/SquareBlur.h"
#include "Source/TVWallFilter.h"
#include "Source/TehRoxxFilter.h"
#include "Source/ThreeDFlippoFilter.h"
#include "Source/Tint.h"
#include "Source/ToneTable.h"
#include "Source/TwoSplitFadeInFilter.h"
#include "Source/VertigoFilter.h"
#include "Source/WaterRippleFilter.h"
#include "Source/WaterSufferFilter.h"
#include "Source/WaterSwirlFilter.h"
#include "Source/XFadeFilter.h"
#include "engine/shells/shells.h"
#include "resources/material_names.h"

namespace {

using namespace material;

template <typename Processor>
CBaseFilterProc* Make(const EffectRow& /*row*/, int32_t width, int32_t height) {
  return new Processor(width, height);
}

// clang-format off
constexpr EffectRow kRows[] = {
    {25, u"Brightness", 1, u"10319440-50F9-4400-B74F-A975F7C5AB96", Make<CBrightness>, Family::kTone},
    {22, u"Cluster", 2, u"DC8F984A-4178-497c-8AAE-4F4C896FC79F", Make<CCluster>, Family::kBlurAndEdges, kOrdered | kRandom | kLeavesPixels},
    {28, u"Contrast", 1, u"3CEAAF30-8142-48EA-91D9-3080F9B439FC", Make<CContrast>, Family::kTone},
    {20, u"Distort", 2, u"9DFB369B-AB13-4FAE-A276-55DAA05F1119", Make<CDistort>, Family::kLens},
    {13, u"Flip", 2, u"6301BBFC-A0C5-454E-8FF9-BB510944FE0C", Make<CFlippoFilter>, Family::kTime},
    {27, u"Gamma", 1, u"6FCED11D-2BD8-41E6-847A-8387CDDE8D51", Make<CGamma>, Family::kTone},
    {19, u"LenCorrection", 4, u"3A124C64-7E02-4F05-B7C1-DCE27F7695F5", Make<CLensCorrection>, Family::kLens},
    {18, u"LetterBox", 1, u"66080F17-4C96-48E2-9CBD-0BA3A1A6BCDE", Make<CLetterBox>, Family::kLens},
    {24, u"Masaic", 2, u"B120A366-F0BB-49CF-82F2-DC05873F9BD0", Make<CMosaics>, Family::kBlurAndEdges},
    {26, u"Saturation", 1, u"78B7D0AC-8477-4CE0-8E4C-DA11B43C589B", Make<CSaturation>, Family::kTone},
    {17, u"SquareBlur", 1, u"2330FCF1-562A-44B8-8866-8D77E827062C", Make<CSquareBlur>, Family::kBlurAndEdges},
    {14, u"VideoWall", 0, u"C1ACC990-6424-450A-A36B-F9B3DDCB369D", Make<CTehRoxxFilter>, Family::kTime, kLeavesPixels},
    {15, u"TVWall", 1, u"9AD9B9A2-5E78-454D-B065-A1C284CC4549", Make<CTVWallFilter>, Family::kTime, kLeavesPixels},
    {16, u"Giddiness", 2, u"99356597-6FBA-4662-B6A7-30B7B12E9EED", Make<CVertigoFilter>, Family::kTime, kOrdered},
    {29, u"Edgeglow", 3, u"8DF08078-A22E-4180-85C2-C2AF3977A654", Make<CEdgeglowFilter>, Family::kBlurAndEdges},
    {30, u"Maskmate", 5, u"F3194A3B-381E-43E7-952C-466E473A1797", Make<CMaskmateFilter>, Family::kBlurAndEdges},
    {31, u"3DFlippo", 7, u"C498B6E7-3648-445E-9AFA-3A387F006745", Make<C3DFlippoFilter>, Family::kLens, kOrdered | kMovesStream},
    {32, u"Nosync", 2, u"AB57F985-4332-43DA-A75A-2E199B58BA8D", Make<CNosyncFilter>, Family::kTime},
    {33, u"Cartoon", 2, u"C1B87F1A-7323-491B-99F9-CBEF0F69A4D0", Make<CCartoonFilter>, Family::kBlurAndEdges},
    {34, u"WaterRipple", 2, u"2EB73728-2FEA-475E-B536-5E1458294A90", Make<CWaterRipple>, Family::kLens, kOrdered},
    {35, u"TwoLay", 0, u"AC3E0B5B-C291-4709-8C1E-26038DABF68E", Make<CTwoLay>, Family::kBlurAndEdges},
    {36, u"ThreeLay", 0, u"2F314FDB-43C4-4BC7-A4CC-DCF9EA5EE53C", Make<CThreeLay>, Family::kBlurAndEdges},
    {37, u"Soble", 0, u"BAFE9BD1-20C5-4152-9127-C47089BF36A2", Make<CSoble>, Family::kBlurAndEdges},
    {38, u"ScanLine", 0, u"FE014372-9313-4ADF-BBA3-FEC76CA387B5", Make<CScanLine>, Family::kTone, kLeavesPixels},
    {39, u"Equalize", 0, u"9280BA2E-1534-43FD-B357-71B237D047C9", Make<CEqualize>, Family::kTone},
    {41, u"HueShift", 1, u"6800E67E-527F-4DA6-96EC-4C60DA8F3FE2", Make<CHueShift>, Family::kTone},
    {42, u"Primaries", 1, u"98DAA4BF-7559-4F89-B3FB-95EE22432045", Make<CPrimaries>, Family::kTone},
    {43, u"SlopSat", 4, u"B6D9F6F4-5CDC-48B9-9A64-00C790010259", Make<CSlopSat>, Family::kTone},
    {44, u"ExtractRGB", 3, u"6A015B66-5E4A-429C-9BE7-DF00CBA497DD", Make<CExtractsRGB>, Family::kTone},
    {45, u"Tint", 7, u"365BF63A-6659-4554-8410-3017EAD492D2", Make<CTint>, Family::kTone},
    {46, u"BWFilter", 0, u"23961C52-2970-4819-AE6F-8F356F02BFB4", Make<CBWFilter>, Family::kTone},
    {47, u"ColorDistance", 3, u"48018F5E-1863-41DA-ABCA-5DAA475D779C", Make<CColorDistanceFilter>, Family::kTone},
    {48, u"Perspective", 8, u"614D292E-1F1E-4BFA-A300-3324C470D28B", Make<CPerspectiveFilter>, Family::kLens},
    {49, u"ColorAdjust", 3, u"E9A5642C-7D07-43E5-B6E5-C77A2EE05F69", Make<CColorAdjFilter>, Family::kTone},
    {51, u"Noise", 2, u"DF219833-D97B-401B-B581-437A489229E0", Make<CNoiseFilter>, Family::kBlurAndEdges, kOrdered | kRandom},
    {54, u"Luminance", 0, u"F054E0B8-3CE3-494D-B394-7D9C777A5BBB", Make<CLuminance>, Family::kTone},
    {55, u"Blance", 5, u"27F82F94-6709-4347-BF02-83A32BC318AA", Make<CBalance>, Family::kTone},
    {57, u"Fire", 5, u"90237DE7-232A-49DE-BED4-32292ED99A49", Make<CFireFilter>, Family::kParticles, kOrdered | kRandom},
    {4, u"Ribbon", 2, u"521B55AD-A989-48E5-9645-F8997A98714F", Make<CRibbon>, Family::kParticles},
    {3, u"3DGrid", 2, u"9E450909-A8D1-4DEA-9DDF-C65E144B2080", Make<C3DGrid>, Family::kParticles},
    {11, u"Canvas", 1, u"13D38B63-47E3-4C09-B70C-349F6DCB6633", Make<CCanvas>, Family::kBlurAndEdges, kOrdered | kRandom},
    {9, u"Flash", 3, u"1E527FF9-160E-47A4-89F1-C7E23916E1DF", Make<CFlash>, Family::kParticles},
    {10, u"Carve", 2, u"C51AE08B-3727-4581-BE57-821B6396E022", Make<CCarve>, Family::kBlurAndEdges},
    {12, u"Sharpen", 1, u"F0CBB970-378B-470C-B642-8C7A968A89B8", Make<CSharpen>, Family::kBlurAndEdges},
    {58, u"Clouds", 4, u"A71CB470-5920-4C65-B7EF-2DB5B2ECAA17", Make<CCloudsFilter>, Family::kParticles, kOrdered | kRandom},
    {59, u"Baltan", 0, u"2A4ABF0B-C32D-41C6-B8FC-1B9F9C323459", Make<CBaltan>, Family::kTime, kOrdered},
    {60, u"Delay", 2, u"DC19C734-AEDE-4AAA-96AA-305BA40F8266", Make<CDelay>, Family::kTime, kOrdered},
    {61, u"DelayGrab", 2, u"EDC28211-6850-460B-AD84-F22BE1B2A2AC", Make<CDelayGrab>, Family::kTime, kOrdered | kRandom | kLeavesPixels},
    {62, u"WaterSwirl", 4, u"3AD8132F-0E23-47C3-A546-4623B5847C5C", Make<CWaterSwirl>, Family::kLens, kOrdered | kLeavesPixels},
    {63, u"Glow", 1, u"E88EDD50-5042-4947-984D-BD487B982FF1", Make<CGlow>, Family::kBlurAndEdges},
    {64, u"Nervous", 1, u"D688AF4E-11A5-499C-A8B7-D9BBF9837120", Make<CNervous>, Family::kTime, kOrdered},
    {65, u"COrner", 0, u"6D49C9D8-A620-4E8E-ACBA-2B799E3B3748", Make<COrnerFilter>, Family::kLens},
    {67, u"Select", 0, u"7856881E-0461-4F9D-8693-3030B63798FA", Make<CSelect>, Family::kTone},
    {69, u"WaterSuffer", 0, u"3E44BC05-FA21-4D55-947E-7E073EA5FDCB", Make<CWaterSuffer>, Family::kLens, kOrdered},
    {70, u"DoubleFisheye", 1, u"895434B4-355D-4C65-84B0-15537408A2B5", Make<CDoubleFisheye>, Family::kLens},
    {71, u"Invert", 0, u"D3DCF978-3C92-4D18-AAC8-578D8BA84BC0", Make<CInvert>, Family::kTone},
    {72, u"RainDrop", 3, u"907437DE-FBC7-4DB7-A7FD-B4FCD0A8AEF4", Make<CRainDrop>, Family::kParticles, kOrdered | kLeavesPixels},
    {73, u"Split", 6, u"62689DB9-09A7-4EE7-9A4F-4A9F970A1A4F", Make<CSplitFilter>, Family::kTime, kOrdered | kLeavesPixels},
    {74, u"Snow", 3, u"23988BE3-90DD-4D0F-85C4-9A0C911DE6FD", MakeEngineShell, Family::kParticles, kOrdered | kRandom},
    {75, u"AmNoise", 1, u"EEBB6992-D1BD-47F0-99E7-121CEC7F6B9E", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {77, u"AmPlash", 1, u"B26F7395-06DF-41FE-8741-60B8A8B79AB6", MakeEngineShell, Family::kFilm, kMovesStream},
    {78, u"FilmGrain", 1, u"F8095D20-FB5F-46E1-8D3A-9C8A4C60B310", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {79, u"Exposure", 1, u"185FD75B-6A28-4832-B30A-0DD60D635B86", MakeEngineShell, Family::kColorLook},
    {80, u"Emboss", 1, u"D8FF2D9B-C7A3-43F5-B32C-97770F4571A3", MakeEngineShell, Family::kFilm},
    {81, u"BChannel", 1, u"E1D6EBCE-52C7-4E5A-81D6-68214BD2805B", MakeEngineShell, Family::kColorLook},
    {82, u"GChannel", 1, u"EC33BFA3-7BC2-4C58-B8B9-9E7A45C42B8A", MakeEngineShell, Family::kColorLook},
    {83, u"RChannel", 1, u"F1DF7A35-C112-41F6-8148-93BD35949AB1", MakeEngineShell, Family::kColorLook},
    {85, u"GrayScale", 0, u"92BB8D36-74C2-4BD4-84C0-A1A831F9A5B8", MakeEngineShell, Family::kColorLook},
    {86, u"Binary", 1, u"015AE7F9-A24C-4C4B-9E4E-A23159A250C7", MakeEngineShell, Family::kColorLook},
    {87, u"XRays", 0, u"637E5E89-62FB-442B-B664-87EFC104EC5F", MakeEngineShell, Family::kColorLook},
    {88, u"Negative", 0, u"5E5BD2A4-C897-4701-8EDE-2ECF8BCA2388", MakeEngineShell, Family::kColorLook},
    {89, u"Thermal", 0, u"BBBC9138-4AC7-4060-B5F0-2487C29D40EF", MakeEngineShell, Family::kColorLook},
    {90, u"Thitone", 0, u"F4540F67-7AC2-47FC-B3A7-4C4EEE57795F", MakeEngineShell, Family::kColorLook},
    {91, u"Thitone2", 0, u"DD85FC8E-7A25-44A3-8B84-24402960B431", MakeEngineShell, Family::kColorLook},
    {92, u"Solarize", 0, u"8F53A676-8FF5-4D38-B96E-DF303A61282C", MakeEngineShell, Family::kColorLook},
    {94, u"FlipTB", 0, u"3B5F45AE-D443-4B32-877D-C60AF323D475", MakeEngineShell, Family::kPanes},
    {95, u"FlipAll", 0, u"E4762263-F086-4276-A60E-8228F6040D40", MakeEngineShell, Family::kPanes},
    {96, u"MirrorLR", 0, u"E9F94EC3-00D1-4541-9BAF-1DC3637B6507", MakeEngineShell, Family::kPanes},
    {97, u"MirrorTB", 0, u"34B3179E-E1E2-4208-968F-32187CE10609", MakeEngineShell, Family::kPanes},
    {98, u"SunShine", 4, u"3657270B-BF79-407E-8AB9-CD3A1BBE009C", MakeEngineShell, Family::kColorLook},
    {99, u"Cold", 0, u"480321DB-19A8-4B3E-A2BD-DF01B3620503", MakeEngineShell, Family::kColorLook},
    {100, u"Cool", 0, u"AA581D9B-51DE-4335-B3D5-8349AC017FF0", MakeEngineShell, Family::kColorLook},
    {101, u"Warm", 0, u"F25E4605-CB9F-494B-9129-43D6CA4835BA", MakeEngineShell, Family::kColorLook},
    {102, u"Hot", 0, u"A91C5BAD-4D12-4512-8955-0790736619B4", MakeEngineShell, Family::kColorLook},
    {103, u"OneColor", 3, u"66997C89-9F59-4C2F-908B-14F1B7C31E48", MakeEngineShell, Family::kColorLook},
    {104, u"Brown", 0, u"44F22B7D-8179-461C-9DA1-369552021F9B", MakeEngineShell, Family::kColorLook},
    {105, u"Chocolate", 0, u"5F89D41E-1C2A-4505-BC02-BFC2B559A04D", MakeEngineShell, Family::kColorLook},
    {106, u"Wheat", 0, u"6D2C8774-568B-4152-82E7-FC9A1E0A8D5A", MakeEngineShell, Family::kColorLook},
    {107, u"Linen", 0, u"3BCE1484-B0AE-49BB-B96A-149CB6340E6B", MakeEngineShell, Family::kColorLook},
    {108, u"Purple", 0, u"8FF78584-133E-401D-8834-EF92D89D3549", MakeEngineShell, Family::kColorLook},
    {109, u"Olive", 0, u"26EFEB74-97EC-42B1-97A5-EA55937E5E4E", MakeEngineShell, Family::kColorLook},
    {110, u"Teal", 0, u"D24A9C60-6B8F-4B95-ADDC-FC84832E8311", MakeEngineShell, Family::kColorLook},
    {111, u"Blue", 0, u"39C5FA8F-AA0C-43B2-8B7C-B4003794B152", MakeEngineShell, Family::kColorLook},
    {112, u"Green", 0, u"82287548-BFB4-4E93-81CF-57EA72361F2E", MakeEngineShell, Family::kColorLook},
    {113, u"Red", 0, u"A90D1144-05FA-4A02-81B6-8EFFA458845E", MakeEngineShell, Family::kColorLook},
    {114, u"Yellow", 0, u"E2A0F5F3-F984-4753-9DD1-0BB4B7569BEA", MakeEngineShell, Family::kColorLook},
    {115, u"Fuchsia", 0, u"B623CAB1-0AAD-4FA2-A5CF-AE5C77037C27", MakeEngineShell, Family::kColorLook},
    {116, u"Cyan", 0, u"044B4C81-D2CA-4962-A757-260CF10D382B", MakeEngineShell, Family::kColorLook},
    {117, u"Hoodwink", 0, u"3FB8C1B2-1C71-4B6E-9FA0-56741D0B328D", MakeEngineShell, Family::kColorLook},
    {118, u"OldMovie", 0, u"3416A51E-3178-41CF-8FCE-B2D9598D9EC4", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {119, u"1839", 0, u"7A0F30D5-9701-4206-A3DF-A76A51982527", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {120, u"1920", 0, u"F454CB05-8A56-4913-B2F8-75A64323591E", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {121, u"70s", 0, u"EACF0FC7-2D0C-4FD0-8A6A-45B5246E15DE", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {122, u"Siena", 0, u"0553AA64-33FC-4CF2-BA89-D17DA3D94A3E", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {123, u"Japaness", 0, u"DD4EE478-C97A-4D46-A7D1-5A24C47C1814", MakeEngineShell, Family::kColorLook},
    {124, u"CyanBlue", 0, u"FBF7BC69-5847-40F4-8679-17B6138ADA7F", MakeEngineShell, Family::kColorLook},
    {125, u"LomoMovie", 0, u"065D0325-F503-41C2-B4F6-4C1DCA59B626", MakeEngineShell, Family::kColorLook},
    {126, u"CrossProcess", 0, u"B653993A-E99F-4F22-A51B-790D8144CCD8", MakeEngineShell, Family::kColorLook},
    {127, u"Retro", 0, u"DA491E98-6BCE-4B96-82E8-AC7E3B26C4D3", MakeEngineShell, Family::kColorLook},
    {128, u"GrayRetro", 0, u"E35D54AC-8BF8-4852-A24B-E6BA21AF3880", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {129, u"Cinnamon", 0, u"82E70755-851B-49F4-AB2F-ADD1A93E0522", MakeEngineShell, Family::kColorLook},
    {130, u"XPro", 0, u"B82E6EAC-61AA-465B-8A46-7A028C665ABB", MakeEngineShell, Family::kFilm, kOrdered | kRandom},
    {131, u"Tcvga", 0, u"91ED52A3-CB2A-4405-A7EB-0D53E8286F5B", MakeEngineShell, Family::kFilm},
    {132, u"Cartoon", 0, u"B1ABD1B9-4621-41BB-A41A-0E1A4DDB765E", MakeEngineShell, Family::kFilm},
    {133, u"Lnk", 1, u"7FB0EC3F-F8C4-45A3-84A0-F742A4DF2395", MakeEngineShell, Family::kColorLook},
    {134, u"Star", 1, u"1FB8235F-3EE1-4854-AD65-64790BCE75D5", MakeEngineShell, Family::kParticles, kOrdered | kRandom},
    {135, u"Bubble", 3, u"5022E5F4-7080-44CF-976C-C7967468FA7F", MakeEngineShell, Family::kParticles, kOrdered | kRandom},
    {136, u"GetColor", 3, u"84AB5121-46D6-4C33-956B-ADCCE78B380A", MakeEngineShell, Family::kTone},
    {138, u"FourSeason", 0, u"3594C05F-98A8-46E0-AF8D-67F4F6F13E22", MakeEngineShell, Family::kComposite},
    {139, u"PhotoWithSkecth", 0, u"3DC26D9B-A350-40DC-B5ED-B2047C6A0E2A", MakeEngineShell, Family::kComposite},
    {171, u"Sharp", 0, u"00D781C6-5598-43F0-8DE8-4C4C0DCCCE7A", MakeEngineShell, Family::kWarp},
    {172, u"Blur2", 0, u"4D19812C-8A58-4D51-992F-3F2344D0A426", MakeEngineShell, Family::kWarp},
    {174, u"Neon", 1, u"E4BEED78-2ABE-4259-A43F-B7EC49F11D8D", MakeEngineShell, Family::kWarp},
    {173, u"Sketch", 1, u"24C20BF8-B32A-4335-B6FD-AF9022EE091E", MakeEngineShell, Family::kWarp},
    {175, u"Shake", 1, u"DC46B32E-3BFB-4D9E-A491-96DBBD929B4D", MakeEngineShell, Family::kWarp},
    {176, u"Ripple", 1, u"FA3C7C60-FD0B-403A-B6CD-20086F0D43FF", MakeEngineShell, Family::kWarp, kOrdered | kRandom},
    {177, u"Tunnel", 3, u"70880CA8-4A41-4F4D-811C-0BA341D7B993", MakeEngineShell, Family::kWarp},
    {178, u"Enlarge", 0, u"475B7B38-840A-472B-8AF9-825DE58552D0", MakeEngineShell, Family::kWarp},
    {179, u"Narrow", 3, u"801DEF94-316B-4522-B045-CCCC00C20D93", MakeEngineShell, Family::kWarp},
    {180, u"Whirl", 3, u"67B1AF76-E78B-42BD-9AE0-F2B6C538477C", MakeEngineShell, Family::kWarp},
    {181, u"Raindrop", 1, u"2CB09F67-AF7B-4BD6-BA3C-32829B218015", MakeEngineShell, Family::kWarp, kOrdered | kRandom},
    {182, u"Flames", 2, u"470D7CA5-1558-4899-A703-FE08F899A8B5", MakeEngineShell, Family::kWarp, kOrdered | kRandom},
    {183, u"TiltShift", 4, u"FA5C9DED-F730-4E61-A3EE-6BEDA7990848", MakeEngineShell, Family::kWarp, kOrdered},
    {184, u"RadialBlur", 0, u"4BA7C610-7EB9-4AC1-9234-8A329F3E587D", MakeEngineShell, Family::kWarp, kOrdered},
    {187, u"SketchB", 0, u"6D8A7ECA-E6AA-4ED5-800B-53BE7C9A7BFC", MakeEngineShell, Family::kWarp},
    {188, u"ColorSketchB", 0, u"F2EECCFF-D7E9-4378-88BA-78D5BC6B54A5", MakeEngineShell, Family::kWarp},
    {189, u"ColorSketch", 0, u"11377B17-E389-4959-BA68-87DB6A0CC232", MakeEngineShell, Family::kWarp},
    {190, u"Explosion", 0, u"E8E71C56-2210-41EF-95B7-5F1DB37DAB30", MakeEngineShell, Family::kWarp},
    {193, u"MergeColor", 3, u"FFC4ED98-7156-47C1-906D-29FFEE8EC2AA", MakeMergeFilter, Family::kOverlay},
    {194, u"MergeImage", 0, u"5AC7F2C2-BF82-4272-B7ED-DD772D356630", MakeMergeFilter, Family::kOverlay, kPlain, {kMergeImage}},
    {196, u"AncientCanvas", 0, u"10F5FE0D-F79B-4172-AD25-0099A94A7277", MakeMergeFilter, Family::kOverlay, kPlain, {kAncientCanvas}},
    {197, u"Filter1", 0, u"59FE21AF-F233-43AB-A99E-56BAEBB57EE0", MakeMergeFilter, Family::kOverlay, kPlain, {kFilter1}},
    {198, u"OldPaper", 0, u"2961AFB5-5965-4FDC-B0EE-5E2633107019", MakeMergeFilter, Family::kOverlay, kPlain, {kOldPaper}},
    {199, u"Vignette1", 0, u"81BCCB31-64E2-4F4A-97C2-F76DF3DD29EB", MakeMergeFilter, Family::kOverlay, kPlain, {kVignette1}},
    {200, u"Vignette2", 0, u"10066FF6-5D46-4886-BA40-89F2E0CE393F", MakeMergeFilter, Family::kOverlay, kPlain, {kVignette2}},
    {201, u"Vignette3", 0, u"ED1AE1B1-F239-468F-8EB1-72206DF53E04", MakeMergeFilter, Family::kOverlay, kPlain, {kVignette3}},
    {202, u"Vignette4", 0, u"384A678B-45FF-4C90-8A6C-83BAE895CCB5", MakeMergeFilter, Family::kOverlay, kPlain, {kVignette4}},
    {203, u"Vignette5", 0, u"8C094CBB-4100-4FB4-B079-B750B9D2F1F2", MakeMergeFilter, Family::kOverlay, kPlain, {kVignette5}},
    {204, u"Vignette6", 0, u"E6B0D0BB-F572-4639-9804-49883B4F6BDC", MakeMergeFilter, Family::kOverlay, kPlain, {kVignette6}},
    {205, u"WaterDrop3", 0, u"76DFAF45-1B13-45E1-A356-C5D40346D52A", MakeMergeFilter, Family::kOverlay, kPlain, {kWaterDrop3}},
    {207, u"OldTV", 0, u"7BDFB5CF-0286-4DD3-86B8-3F4693D884B6", MakeMergeFilter, Family::kOverlay, kPlain, {kOldTV}},
    {209, u"StencilPoster", 3, u"CEF7876C-5BFC-4C45-87D3-571D1A054341", MakeMergeFilter, Family::kOverlay, kPlain, {kStencilPosterGreen}},
    {216, u"ColorExplosion", 0, u"08BBDBFF-D6D4-4D99-ABE3-5DB51791E93D", MakeMergeFilter, Family::kOverlay, kPlain, {kHardLight}},
    {217, u"BlueExplosion", 0, u"E4A02F88-E89C-49DE-B7CA-7077B14C405B", MakeMergeFilter, Family::kOverlay, kPlain, {kColorExplosion}},
    {225, u"OldFilm", 1, u"86E25BC7-5648-4F64-A11A-D4FDD8811C73", MakeMergeFilter, Family::kOverlay, kPlain, {kOverlay}},
    {241, u"Shine1", 0, u"7D5D849B-7D6F-4AA4-8608-93BE275B13CA", MakeMergeFilter, Family::kOverlay, kPlain, {kLinearDodge}},
    {242, u"ShineB", 0, u"F3306558-E276-4727-BEFD-8A450707AAF6", MakeMergeFilter, Family::kOverlay, kPlain, {kShine}},
    {251, u"MergeLight", 0, u"8CDD2D69-C501-43FC-B9E0-80E4C0D282DF", MakeMergeFilter, Family::kOverlay, kPlain, {kMergeLight}},
    {335, u"LinearLight", 0, u"0982C3A2-CF5E-400B-ACA6-1D3B7269C279", MakeMergeFilter, Family::kOverlay, kPlain, {kLinearLight}},
    {338, u"SunSet", 0, u"1CCBFBDD-700C-4D8C-8D7D-E5F9AD05FE44", MakeMergeFilter, Family::kOverlay, kPlain, {kColorTuneCircle00}},
    {339, u"Vivid", 0, u"78706184-1DF6-40D3-AA56-ECAEF7361785", MakeMergeFilter, Family::kOverlay, kPlain, {kColorTuneCircle00}},
    {140, u"SunFlower", 0, u"3F9B9C6F-89FD-48EA-A5B8-67FE5EF7C428", MakeEngineShell, Family::kColorLook},
    {340, u"Garden", 0, u"4D4FD078-16C9-4B1F-ABD7-5D128B726DB4", MakeMergeFilter, Family::kOverlay, kPlain, {kColorTuneCircle01}},
    {141, u"Romantic", 0, u"4924060F-E374-4465-8104-0DA90B9BFC80", MakeEngineShell, Family::kColorLook},
    {142, u"Holiday", 0, u"F4827DB9-323F-437F-BF52-182154FC3F68", MakeEngineShell, Family::kColorLook},
    {341, u"DanGui", 0, u"9D2FA0F2-5C1F-4D44-825A-224D651B748A", MakeMergeFilter, Family::kOverlay, kPlain, {kColorTuneCircle01}},
    {342, u"September", 0, u"10A5273A-D777-4BB1-9C11-39B1BF93D7FB", MakeMergeFilter, Family::kOverlay, kPlain, {kColorTuneCircle01}},
    {143, u"SimpleElegent", 0, u"F2C3BEE6-79F8-4CE6-A74B-F7A1B3323322", MakeEngineShell, Family::kComposite},
    {144, u"BW_Yellow", 0, u"15F9F5B5-026D-4AB6-AE7D-0D4E1F3AC570", MakeEngineShell, Family::kComposite},
    {145, u"BW_Noise", 0, u"724558B4-4D8C-459F-9274-159405E02397", MakeEngineShell, Family::kComposite, kOrdered | kRandom},
    {146, u"PurpleLomo", 0, u"F449D595-F1ED-4463-B0CC-6845C9B1DC16", MakeEngineShell, Family::kColorLook},
    {147, u"Freshness", 0, u"85EABE17-C301-452D-8E61-4EFA09A07999", MakeEngineShell, Family::kComposite},
    {148, u"BeautifyImg", 0, u"9D256F88-C3FC-47EE-B969-D919F974A3F7", MakeEngineShell, Family::kComposite},
    {149, u"FuzzyImg", 0, u"25C04ED4-D6A2-4CB5-A1EC-AC9F3BBF63CC", MakeEngineShell, Family::kComposite},
    {150, u"Vintage_Gloaming", 0, u"1C8B8E71-21FF-4787-9BB3-B5432C89213C", MakeEngineShell, Family::kComposite},
    {151, u"FreshNew", 0, u"2AA95D21-C6F3-46CD-B459-37C71105E8F3", MakeEngineShell, Family::kComposite},
    {152, u"BlueTears", 0, u"CF31D9D0-2E58-4C57-A529-ABD4BE63DB65", MakeEngineShell, Family::kColorLook},
    {153, u"PurpleLove", 0, u"D8AE181F-7B9D-4D96-8615-F70841C66D22", MakeEngineShell, Family::kColorLook},
    {154, u"Aegean", 0, u"11B015DA-D818-4212-8CC7-8DCE378F2D9E", MakeEngineShell, Family::kComposite},
    {343, u"Velora_Lomo", 0, u"C79EED55-D8D8-4098-A3C1-0BCB7098BE5B", MakeMergeFilter, Family::kOverlay, kPlain, {kDarkCorners}},
    {344, u"Charcoal", 0, u"BA476E58-BBD9-42F9-8003-EDEED3028CD5", MakeMergeFilter, Family::kOverlay, kPlain, {kSketchBlack}},
    {345, u"ColorFense", 0, u"FD83E676-04A6-43E0-8BD5-FC003099DBF4", MakeMergeFilter, Family::kOverlay, kPlain, {kSketchBlack}},
    {155, u"Shadow", 0, u"345CD6D4-8F4E-4571-BA5D-F8095096B116", MakeEngineShell, Family::kComposite},
    {156, u"Wash", 0, u"2D7A7F75-869E-4C0C-A5DB-D7A582F4D0BF", MakeEngineShell, Family::kComposite},
    {157, u"Comic", 0, u"DD448248-E2AD-4E7F-AE71-6BFB969C2DF8", MakeEngineShell, Family::kComposite},
    {346, u"FocusColor", 2, u"F21C058F-DF24-49C5-BB82-A430248650FC", MakeMergeFilter, Family::kOverlay, kPlain, {kFocusColor}},
    {347, u"Radio Explike FX", 0, u"BAC70B89-219F-4966-B712-06F945060E98", MakeMergeFilter, Family::kOverlay, kPlain, {kRadial}},
    {348, u"QK_OLD_PHOTO", 0, u"9A635149-DA48-4CBF-899A-090FD8DA98DE", MakeMergeFilter, Family::kOverlay, kPlain, {kOldTime}},
    {158, u"Rainbow", 0, u"1242CE5F-C3B6-4875-9160-72C98FB890D4", MakeEngineShell, Family::kComposite},
    {159, u"Aibao", 0, u"C8CC2163-9085-4939-8B18-8E39CECEBD04", MakeEngineShell, Family::kComposite},
    {160, u"Rainbow2", 0, u"4BA66C41-EEEE-4136-8695-2EA86435E176", MakeEngineShell, Family::kComposite},
    {349, u"Canvas", 0, u"0ED930ED-40B3-4292-A44E-70169952C45D", MakeMergeFilter, Family::kOverlay, kOrdered, {kSketch}},
    {350, u"Classic", 0, u"EEB2A36B-0ACD-4C0B-85F9-06B714C93138", MakeMergeFilter, Family::kOverlay, kPlain, {kSketch}},
    {161, u"Jigsaw_A", 0, u"50942937-CF4A-4CF6-9EB9-E39F58A229EE", MakeEngineShell, Family::kPanes},
    {162, u"Jigsaw_B", 0, u"8C572C55-0EB5-48DE-BA85-FF491BAFFA1F", MakeEngineShell, Family::kPanes},
    {163, u"Jigsaw_C", 0, u"C4CD47E7-4147-443D-8A43-2F6B7E2A9ABA", MakeEngineShell, Family::kPanes},
    {164, u"Jigsaw_D", 0, u"DE0F7CEB-70E9-4A42-A9CD-3D59DBFB7295", MakeEngineShell, Family::kPanes},
    {165, u"Jigsaw_E", 0, u"A23AD469-21C8-427D-9DE2-3E7678988AB9", MakeEngineShell, Family::kPanes},
    {166, u"Jigsaw_F", 0, u"4E2CE892-16EA-4BCC-84AD-D761E9F114AF", MakeEngineShell, Family::kPanes},
    {243, u"Raindrop", 0, u"2EBA74E4-D573-47D9-8E43-A6E2A2176AED", MakeMergeFilter, Family::kOverlay, kPlain, {kRaindrop}},
    {167, u"VignetteRadius", 1, u"7CDDB798-98E2-4B34-8C41-61348A63ACEB", MakeEngineShell, Family::kFilm},
    {221, u"MergeStar", 0, u"5B499F59-5430-453E-AE76-58C5EF0ED671", MakeMergeFilter, Family::kOverlay, kPlain, {kBubble}},
    {168, u"Bad_TVSignal", 0, u"43DE9B07-DB62-48B6-8BF3-3533BD481866", MakeEngineShell, Family::kFilm, kMovesStream},
    {169, u"Kaleidoscope", 0, u"AB8265F1-0586-4941-9117-3F2C7B4B5E9F", MakeEngineShell, Family::kPanes},
    {332, u"LinearBurn", 3, u"D249F99F-B343-49E5-A94E-520BC20CC0F4", MakeMergeFilter, Family::kOverlay, kPlain, {kLinearBurn}},
    {330, u"BurntPaper", 0, u"F882C932-1F84-44C6-9413-2843B7CB065F", MakeMergeFilter, Family::kOverlay, kPlain, {kBurntPaper}},
    {321, u"MergeLinear", 1, u"FEABF340-0388-4666-9171-198A2057BC16", MakeMergeFilter, Family::kOverlay, kOrdered, {kMergeLinear}},
    {313, u"SoftLight", 0, u"DC7C00ED-5C3B-45F3-B5DF-B206CCAFF561", MakeMergeFilter, Family::kOverlay, kPlain, {kSoftLight}},
    {294, u"Screen", 0, u"DDBB3A06-A424-461D-82D7-240DE4B87F44", MakeMergeFilter, Family::kOverlay, kPlain, {kScreen}},
    {254, u"Dark", 0, u"4890B97E-3E84-4ABA-82F1-B43E28420CD1", MakeMergeFilter, Family::kOverlay, kPlain, {kDark}},
    {280, u"VignetteWhite", 0, u"DB90B5EB-97B5-4534-BDC9-3DDB8058AF25", MakeMergeFilter, Family::kOverlay, kPlain, {kVignetteWhite}},
    {362, u"GrungRay", 0, u"D55857A5-5C5F-4A6F-97BC-5B07C8A65084", MakeGrungeRay, Family::kOverlay, kLeavesPixels, {kGrungeRays}},
    {363, u"CoolBlue", 0, u"CEB61355-A090-4F80-9FE2-176D7513CC70", Make<CCoolBlue>, Family::kTone},
    {351, u"Sight", 0, u"708FB65C-F674-4E58-AF6E-43A63C493DEE", MakeSight, Family::kOverlay, kWritesSource | kLeavesPixels, {kSightWide, kSightNarrow}},
    {354, u"Concert", 0, u"2B71A976-45BF-4ABA-A071-BA3C32AA6781", MakeAspectMergeFilter, Family::kOverlay, kLeavesPixels, {kConcertWide, kConcertNarrow}},
    {355, u"NightGlassView", 0, u"219201EC-AB4A-4F0E-8DDD-DCA475CC9813", MakeNightGlassView, Family::kOverlay, kWritesSource | kLeavesPixels, {kNightGlassViewWide, kNightGlassViewNarrow}},
    {356, u"Camcorder", 0, u"72B1B3A9-6027-4AE1-B9E3-AF93935ACF8D", MakeCamRecorder, Family::kOverlay, kOrdered | kLeavesPixels, {kCamcorderOnWide, kCamcorderOnNarrow, kCamcorderOffWide, kCamcorderOffNarrow}},
    {366, u"SplitMove", 0, u"BA3EB1BC-782C-4882-BABE-D09A5558FD8F", Make<CSplitMoveFilter>, Family::kTime, kLeavesPixels},
    {367, u"TwoSplitMove", 0, u"F51B02DE-E592-4602-9B6A-CC5AF6B01EB6", Make<CTwoSplitMoveFilter>, Family::kTime, kLeavesPixels},
    {368, u"ThreeSplitMoveT2B", 0, u"112C6FF3-FD1C-4DF7-9E22-4022C75666EC", Make<CThreeSplitMoveFilterTop2Bottom>, Family::kTime, kLeavesPixels},
    {369, u"TwoSplitLeftFadeIn", 0, u"717037B6-7584-4973-85D5-E07807782D1C", Make<CTwoSplitLeftFadeInFilter>, Family::kTime},
    {370, u"TwoSplitRightFadeIn", 0, u"BC5BA979-5152-4F5A-9C76-61B90B2BF015", Make<CTwoSplitRightFadeInFilter>, Family::kTime},
    {357, u"LightWithBlue", 0, u"FAA3B69D-5087-4570-B6D5-FEE6D328E36F", MakeMergeFilterWithLight, Family::kOverlay},
    {358, u"LightWithGreen", 0, u"5C1A227F-2166-4B86-ABAF-CEF59D654DA0", MakeMergeFilterWithLight, Family::kOverlay},
    {359, u"LightWithRed", 0, u"D450496C-F528-4042-A4C2-BDC4AFBCF7CD", MakeMergeFilterWithLight, Family::kOverlay},
    {360, u"LightWithAdaptive", 3, u"C55E9ACC-970C-46EA-A4AF-780C4F2045A2", MakeMergeFilterWithLight, Family::kOverlay, kOrdered},
    {1374, u"BGFPureGaussian", 4, u"38E74867-450B-4E37-8A4E-8FFD22956310", MakeBackgroundFill, Family::kFill},
    {1375, u"BGFThreeD", 4, u"666BF38E-E147-4FB4-A9B5-621428522E5F", MakeBackgroundFill, Family::kFill},
    {1376, u"BGFWave", 4, u"87690E4D-561B-4A1B-80CB-48793E43C361", MakeBackgroundFill, Family::kFill},
    {1377, u"BGFDiamondwave", 4, u"AAB2F9D5-A62B-4835-873B-5E03A383C4B3", MakeBackgroundFill, Family::kFill},
    {1378, u"BGFMosic", 4, u"23180E8F-80B1-4DD9-876B-36E535B381FD", MakeBackgroundFill, Family::kFill},
    {1379, u"BGFBlacknet", 4, u"BD27CBDB-9035-41EB-9A14-5EECF587D52D", MakeBackgroundFill, Family::kFill},
    {1380, u"BGFPerspect", 4, u"7968000B-2755-4E61-A25F-D50D8603DB0D", MakeBackgroundFill, Family::kFill},
    {1381, u"BGFHola", 4, u"F23F744D-5867-4E52-940D-D538B9E39C3B", MakeBackgroundFill, Family::kFill},
    {1384, u"BGFDiamondblur", 4, u"0B13C809-1109-4BAF-9ACA-BCFBD3BE0D7F", MakeBackgroundFill, Family::kFill},
    {1383, u"BGFOyster", 4, u"4FCFF1A3-3FF3-4BCC-9201-620DA89C2612", MakeBackgroundFill, Family::kFill},
    {1385, u"BGFFrost", 4, u"B1B9D74A-167B-4401-819C-D82AE6495DB7", MakeBackgroundFill, Family::kFill, kMovesStream},
    {1386, u"BGFNoise", 4, u"9A226F87-5672-4F93-8471-C37BEC698163", MakeBackgroundFill, Family::kFill, kOrdered},
    {1387, u"BGFGaussianbar", 4, u"17B4DB28-24DD-4CA1-9CD2-F92B3EF3CACE", MakeBackgroundFill, Family::kFill},
    {1388, u"BGFRippleH", 4, u"F2A13976-F82D-40F4-B53A-B5470B41CAA5", MakeBackgroundFill, Family::kFill},
    {1389, u"BGFRippleV", 4, u"9D4B4E40-1DE8-4D4F-A714-6DD251726E26", MakeBackgroundFill, Family::kFill},
    {1390, u"BGFGray", 4, u"4CA18BF7-63DD-4984-84EE-E945D72C4BEF", MakeBackgroundFill, Family::kFill},

    // Served by the factory alone.
    {1, nullptr, 0, nullptr, Make<CEmboss>, Family::kBlurAndEdges},
    {21, nullptr, 0, nullptr, Make<CCurves>, Family::kTone, kLeavesPixels},
    {23, nullptr, 0, nullptr, Make<CThresHold>, Family::kTone},
    {40, nullptr, 0, nullptr, Make<CBlueScreen>, Family::kTone},
    {50, nullptr, 0, nullptr, Make<CPlasmaFilter>, Family::kParticles, kOrdered},
    {52, nullptr, 0, nullptr, Make<CIsingFilter>, Family::kParticles, kOrdered | kLeavesPixels},
    {53, nullptr, 0, nullptr, Make<CLissajousFilter>, Family::kParticles},
    {56, nullptr, 0, nullptr, Make<CXFadeFilter>, Family::kTime},
    {66, nullptr, 0, nullptr, Make<CDefishFilter>, Family::kLens},
    {76, nullptr, 0, nullptr, MakeEngineShell, Family::kFilm},
    {84, nullptr, 0, nullptr, MakeEngineShell, Family::kColorLook},
    {93, nullptr, 0, nullptr, MakeEngineShell, Family::kPanes},
    {170, nullptr, 0, nullptr, MakeEngineShell, Family::kWarp, kOrdered | kRandom},
    {208, nullptr, 0, nullptr, MakeMergeFilter, Family::kOverlay, kPlain, {kStencilPosterRed}},
    {210, nullptr, 0, nullptr, MakeMergeFilter, Family::kOverlay, kPlain, {kStencilPosterBlue}},
    {352, nullptr, 0, nullptr, MakeAspectMergeFilter, Family::kOverlay, kLeavesPixels, {kWindowShadesWide, kWindowShadesNarrow}},
    {353, nullptr, 0, nullptr, MakeAspectMergeFilter, Family::kOverlay, kLeavesPixels, {kWovenWide, kWovenNarrow}},
    {1382, nullptr, 0, nullptr, MakeBackgroundFill, Family::kFill},
};
// clang-format on

// Rows with a record stand in front.
constexpr size_t kRecordCount =
    std::find_if(std::begin(kRows), std::end(kRows), [](const EffectRow& row) { return !row.name; }) -
    std::begin(kRows);
static_assert(std::none_of(std::begin(kRows) + kRecordCount, std::end(kRows),
                           [](const EffectRow& row) { return row.name; }),
              "a row with a name stands behind the rows that only the factory serves: move it in front of them");

template <size_t Size>
constexpr void CopyText(char16_t (&out)[Size], const char16_t* text) {
  for (size_t i = 0; i < Size - 1 && text[i]; ++i) out[i] = text[i];
}

constexpr std::array<EffectPluginInfo, kRecordCount> MakeRecords() {
  std::array<EffectPluginInfo, kRecordCount> records{};
  for (size_t i = 0; i < kRecordCount; ++i) {
    records[i].effectId = kRows[i].id;
    records[i].paramCount = kRows[i].paramCount;
    CopyText(records[i].name, kRows[i].name);
    CopyText(records[i].guid, kRows[i].guid);
  }
  return records;
}
constexpr std::array<EffectPluginInfo, kRecordCount> kRecords = MakeRecords();

}  // namespace

std::span<const EffectRow> EffectRows() {
  return kRows;
}

std::span<const EffectRow> RecordRows() {
  return std::span(kRows).first<kRecordCount>();
}

std::span<const EffectPluginInfo> Records() {
  return kRecords;
}

const EffectRow* FindEffectRow(int32_t id) {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows), [id](const EffectRow& r) { return r.id == id; });
  return row == std::end(kRows) ? nullptr : row;
}
