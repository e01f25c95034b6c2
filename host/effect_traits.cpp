#include "effect_traits.h"

#include <algorithm>
#include <iterator>

namespace {

struct FamilyMember {
  int32_t effectId;
  int32_t family;
};

constexpr std::string_view kFamilies[] = {
    "colour and tone",    "colour looks",     "composite looks",  "film and noise",   "blur, edges, stylise",
    "warps and sketches", "flips and panes",  "lenses and water", "time and layouts", "particles and generators",
    "overlays",           "background fills",
};

constexpr FamilyMember kMembers[] = {
    {21, 0},    {23, 0},    {25, 0},    {26, 0},    {27, 0},    {28, 0},    {38, 0},    {39, 0},    {40, 0},
    {41, 0},    {42, 0},    {43, 0},    {44, 0},    {45, 0},    {46, 0},    {47, 0},    {49, 0},    {54, 0},
    {55, 0},    {67, 0},    {71, 0},    {136, 0},   {363, 0},   {79, 1},    {81, 1},    {82, 1},    {83, 1},
    {84, 1},    {85, 1},    {86, 1},    {87, 1},    {88, 1},    {89, 1},    {90, 1},    {91, 1},    {92, 1},
    {98, 1},    {99, 1},    {100, 1},   {101, 1},   {102, 1},   {103, 1},   {104, 1},   {105, 1},   {106, 1},
    {107, 1},   {108, 1},   {109, 1},   {110, 1},   {111, 1},   {112, 1},   {113, 1},   {114, 1},   {115, 1},
    {116, 1},   {117, 1},   {123, 1},   {124, 1},   {125, 1},   {126, 1},   {127, 1},   {129, 1},   {133, 1},
    {140, 1},   {141, 1},   {142, 1},   {146, 1},   {152, 1},   {153, 1},   {138, 2},   {139, 2},   {143, 2},
    {144, 2},   {145, 2},   {147, 2},   {148, 2},   {149, 2},   {150, 2},   {151, 2},   {154, 2},   {155, 2},
    {156, 2},   {157, 2},   {158, 2},   {159, 2},   {160, 2},   {75, 3},    {76, 3},    {77, 3},    {78, 3},
    {80, 3},    {118, 3},   {119, 3},   {120, 3},   {121, 3},   {122, 3},   {128, 3},   {130, 3},   {131, 3},
    {132, 3},   {167, 3},   {168, 3},   {1, 4},     {10, 4},    {11, 4},    {12, 4},    {17, 4},    {22, 4},
    {24, 4},    {29, 4},    {30, 4},    {33, 4},    {35, 4},    {36, 4},    {37, 4},    {51, 4},    {63, 4},
    {170, 5},   {171, 5},   {172, 5},   {173, 5},   {174, 5},   {175, 5},   {176, 5},   {177, 5},   {178, 5},
    {179, 5},   {180, 5},   {181, 5},   {182, 5},   {183, 5},   {184, 5},   {187, 5},   {188, 5},   {189, 5},
    {190, 5},   {93, 6},    {94, 6},    {95, 6},    {96, 6},    {97, 6},    {161, 6},   {162, 6},   {163, 6},
    {164, 6},   {165, 6},   {166, 6},   {169, 6},   {18, 7},    {19, 7},    {20, 7},    {31, 7},    {34, 7},
    {48, 7},    {62, 7},    {65, 7},    {66, 7},    {69, 7},    {70, 7},    {13, 8},    {14, 8},    {15, 8},
    {16, 8},    {32, 8},    {56, 8},    {59, 8},    {60, 8},    {61, 8},    {64, 8},    {73, 8},    {366, 8},
    {367, 8},   {368, 8},   {369, 8},   {370, 8},   {3, 9},     {4, 9},     {9, 9},     {50, 9},    {52, 9},
    {53, 9},    {57, 9},    {58, 9},    {72, 9},    {74, 9},    {134, 9},   {135, 9},   {193, 10},  {194, 10},
    {196, 10},  {197, 10},  {198, 10},  {199, 10},  {200, 10},  {201, 10},  {202, 10},  {203, 10},  {204, 10},
    {205, 10},  {207, 10},  {208, 10},  {209, 10},  {210, 10},  {216, 10},  {217, 10},  {221, 10},  {225, 10},
    {241, 10},  {242, 10},  {243, 10},  {251, 10},  {254, 10},  {280, 10},  {294, 10},  {313, 10},  {321, 10},
    {330, 10},  {332, 10},  {335, 10},  {338, 10},  {339, 10},  {340, 10},  {341, 10},  {342, 10},  {343, 10},
    {344, 10},  {345, 10},  {346, 10},  {347, 10},  {348, 10},  {349, 10},  {350, 10},  {351, 10},  {352, 10},
    {353, 10},  {354, 10},  {355, 10},  {356, 10},  {357, 10},  {358, 10},  {359, 10},  {360, 10},  {362, 10},
    {1374, 11}, {1375, 11}, {1376, 11}, {1377, 11}, {1378, 11}, {1379, 11}, {1380, 11}, {1381, 11}, {1382, 11},
    {1383, 11}, {1384, 11}, {1385, 11}, {1386, 11}, {1387, 11}, {1388, 11}, {1389, 11}, {1390, 11},
};

// Effects that remember frames, simulate, count frames or draw from the shared random stream: their frames must come in
// order.
constexpr int32_t kOrdered[] = {
    11, 16,  22,  31,  34,  50,  51,  52,  57,  58,  59,  60,  61,  62,  64,  69,  72,  73,  74,  75,
    78, 118, 119, 120, 121, 122, 128, 130, 134, 135, 145, 170, 176, 181, 182, 321, 349, 356, 360, 1386,
};

struct Material {
  int32_t effectId;
  const char* file;
};

constexpr Material kMaterials[] = {
    {194, "MergeImage.png"},
    {196, "AncientCanvas.jpg"},
    {197, "Filter1.jpg"},
    {198, "OldPaper.jpg"},
    {199, "Vignette1.jpg"},
    {200, "Vignette2.jpg"},
    {201, "Vignette3.jpg"},
    {202, "Vignette4.jpg"},
    {203, "Vignette5.jpg"},
    {204, "Vignette6.jpg"},
    {205, "WaterDrop3.jpg"},
    {207, "OldTV.jpg"},
    {208, "StencilPosterRed.jpg"},
    {209, "StencilPosterGreen.jpg"},
    {210, "StencilPosterBlue.jpg"},
    {216, "HardLight.jpg"},
    {217, "color_explosion.png"},
    {221, "pf_bubble4.png"},
    {225, "Overlay.jpg"},
    {241, "LinearDodge.jpg"},
    {242, "pf_shine2.png"},
    {243, "pf_raindrop.png"},
    {251, "MergeLight.jpg"},
    {254, "Dark.jpg"},
    {280, "VignetteWhite.jpg"},
    {294, "Screen.jpg"},
    {313, "SoftLight.jpg"},
    {321, "MergeLinear.jpg"},
    {330, "burntpaper.png"},
    {332, "LinearBurn.jpg"},
    {335, "LinearLight.jpg"},
    {338, "ColorTuneCircle00.png"},
    {339, "ColorTuneCircle00.png"},
    {340, "ColorTuneCircle01.png"},
    {341, "ColorTuneCircle01.png"},
    {342, "ColorTuneCircle01.png"},
    {343, "dark.png"},
    {344, "sketch_black.png"},
    {345, "sketch_black.png"},
    {346, "pc_focusColor.png"},
    {347, "radial3.png"},
    {348, "oldtime.png"},
    {349, "sketch.png"},
    {350, "sketch.png"},
    {351, "Sight16_9.png"},
    {351, "Sight4_3.png"},
    {354, "Concert16_9.png"},
    {354, "Concert4_3.png"},
    {355, "NightGlassView16_9.png"},
    {355, "NightGlassView4_3.png"},
    {356, "CamcorderOn16_9.png"},
    {356, "CamcorderOff16_9.png"},
    {356, "CamcorderOn4_3.png"},
    {356, "CamcorderOff4_3.png"},
    {362, "GrungeRays.png"},
};

template <size_t Size>
bool Contains(const int32_t (&ids)[Size], int32_t id) {
  return std::binary_search(std::begin(ids), std::end(ids), id);
}

}  // namespace

std::string_view FamilyOf(int32_t effectId) {
  const auto* found = std::find_if(std::begin(kMembers), std::end(kMembers),
                                   [=](const FamilyMember& member) { return member.effectId == effectId; });
  return found == std::end(kMembers) ? "other" : kFamilies[found->family];
}

std::span<const std::string_view> Families() {
  return kFamilies;
}

bool IsStatelessEffect(int32_t effectId) {
  return !Contains(kOrdered, effectId);
}

std::vector<std::string> MaterialsOf(int32_t effectId) {
  std::vector<std::string> files;
  for (const Material& material : kMaterials) {
    if (material.effectId == effectId) files.emplace_back(material.file);
  }
  return files;
}

bool UsesMaterial(int32_t effectId) {
  return std::any_of(std::begin(kMaterials), std::end(kMaterials),
                     [=](const Material& material) { return material.effectId == effectId; });
}
