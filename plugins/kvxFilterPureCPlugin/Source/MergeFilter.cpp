#include "MergeFilter.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <opencv2/core.hpp>

#include "frame.h"
#include "numeric.h"

namespace {

struct MergeRow {
  int32_t id;
  const char16_t* fileName;
  uint32_t code;
};

constexpr MergeRow kMergeRows[] = {
    {193, u"", 2049},
    {194, u"MergeImage.png", 2050},
    {196, u"AncientCanvas.jpg", 2052},
    {197, u"Filter1.jpg", 2053},
    {198, u"OldPaper.jpg", 2054},
    {199, u"Vignette1.jpg", 2055},
    {200, u"Vignette2.jpg", 2056},
    {201, u"Vignette3.jpg", 2057},
    {202, u"Vignette4.jpg", 2058},
    {203, u"Vignette5.jpg", 2059},
    {204, u"Vignette6.jpg", 2060},
    {205, u"WaterDrop3.jpg", 2061},
    {207, u"OldTV.jpg", 2063},
    {208, u"StencilPosterRed.jpg", 2064},
    {209, u"StencilPosterGreen.jpg", 2065},
    {210, u"StencilPosterBlue.jpg", 2066},
    {216, u"HardLight.jpg", 2072},
    {217, u"color_explosion.png", 2073},
    {221, u"pf_bubble4.png", 2077},
    {225, u"Overlay.jpg", 2081},
    {241, u"LinearDodge.jpg", 2097},
    {242, u"pf_shine2.png", 2098},
    {243, u"pf_raindrop.png", 2099},
    {251, u"MergeLight.jpg", 2107},
    {254, u"Dark.jpg", 2110},
    {280, u"VignetteWhite.jpg", 2136},
    {294, u"Screen.jpg", 2150},
    {313, u"SoftLight.jpg", 2169},
    {321, u"MergeLinear.jpg", 2177},
    {330, u"burntpaper.png", 2186},
    {332, u"LinearBurn.jpg", 2188},
    {335, u"LinearLight.jpg", 2191},
    {338, u"ColorTuneCircle00.png", 2193},
    {339, u"ColorTuneCircle00.png", 2194},
    {340, u"ColorTuneCircle01.png", 2195},
    {341, u"ColorTuneCircle01.png", 2196},
    {342, u"ColorTuneCircle01.png", 2197},
    {343, u"dark.png", 2198},
    {344, u"sketch_black.png", 2199},
    {345, u"sketch_black.png", 2200},
    {346, u"pc_focusColor.png", 2201},
    {347, u"radial3.png", 2202},
    {348, u"oldtime.png", 2203},
    {349, u"sketch.png", 2204},
    {350, u"sketch.png", 2205},
};
static_assert(std::size(kMergeRows) == 45);

constexpr ParamRow kPercentParams[] = {{u"Percent", 0, 0, 100}};
constexpr ParamRow kColorParams[] = {{u"Red", 0, 0, 255}, {u"Green", 0, 0, 255}, {u"Blue", 0, 0, 255}};
constexpr ParamRow kPositionParams[] = {{u"Position_X", 0, 0, 100}, {u"Position_Y", 0, 0, 100}};

enum class MergeParams { kNone, kPercent, kColor, kPosition };

MergeParams ParamsOf(uint32_t code) {
  const auto between = [code](uint32_t first, uint32_t last) { return code >= first && code <= last; };
  if (between(2081, 2093) || between(2177, 2184)) return MergeParams::kPercent;
  if (code == 2049 || between(2064, 2066) || between(2187, 2189)) return MergeParams::kColor;
  if (code == 2201) return MergeParams::kPosition;
  return MergeParams::kNone;
}

}  // namespace

CMergeFilter::~CMergeFilter() {
  EngineFree(engine_);
}

void CMergeFilter::SetUp(uint32_t code, const std::u16string& fileName) {
  material_.reset();
  EngineFree(engine_);
  engine_ = nullptr;
  EngineCreate(&engine_, code);
  materialFile_.Read(fileName);
}

// Upside down, as the engine's routines expect it.
void CMergeFilter::MountMaterial() {
  if (material_) return;
  material_ = materialFile_.TakePicture(width, height);
  if (!material_) return;
  cv::Mat rows(height, width, CV_8UC4, QK_ImageBits(material_.get()));
  cv::flip(rows, rows, 0);
}

void CMergeFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  if (!engine_) return;
  const EngineRecord& record = *engine_;
  switch (ParamsOf(record.code)) {
    case MergeParams::kPercent:
      return DescribeParam(desc, index, kPercentParams, {static_cast<double>(record.level)});
    case MergeParams::kColor:
      return DescribeParam(desc, index, kColorParams,
                           {static_cast<double>(record.colorRed), static_cast<double>(record.colorGreen),
                            static_cast<double>(record.colorBlue)});
    case MergeParams::kPosition:
      return DescribeParam(desc, index, kPositionParams, {50, 50});
    case MergeParams::kNone:
      return;
  }
}

void CMergeFilter::TakeParams(const ParamValueArray* params) {
  EngineRecord& record = *engine_;
  switch (ParamsOf(record.code)) {
    case MergeParams::kPercent:
      record.level = Trunc32(Param(params, 1));
      break;
    case MergeParams::kColor:
      record.colorRed = TruncByte(Param(params, 1));
      record.colorGreen = TruncByte(Param(params, 2));
      record.colorBlue = TruncByte(Param(params, 3));
      break;
    case MergeParams::kPosition:
      record.posX = Trunc32(Param(params, 1));
      record.posY = Trunc32(Param(params, 2));
      break;
    case MergeParams::kNone:
      break;
  }
}

void CMergeFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                           const ParamValueArray* params) {
  if (!src || !dst || width <= 0 || height <= 0) return;
  if (engine_) {
    MountMaterial();
    TakeParams(params);
  }
  const EngineImage from = MakeEngineImage(src, width, height, srcStep);
  const EngineImage frame = MakeEngineImage(dst, width, height, dstStep);
  EngineImage second{};
  if (material_) second = MakeEngineImage(QK_ImageBits(material_.get()), width, height, QK_ImageStep(material_.get()));
  const auto copy = [&] {
    for (int32_t y = 0; y < height; ++y) std::memcpy(frame.Row(y), from.Row(y), static_cast<size_t>(width) * 4);
  };
  const bool spared = EngineSparesCopy(engine_);
  if (!spared) copy();
  if (EngineRunFrom(engine_, from, frame, material_ ? &second : nullptr) != kEngineDone && spared) copy();
}

CBaseFilterProc* MakeMergeFilter(int32_t id, int32_t width, int32_t height) {
  const auto* row =
      std::find_if(std::begin(kMergeRows), std::end(kMergeRows), [id](const MergeRow& r) { return r.id == id; });
  if (row == std::end(kMergeRows)) return nullptr;
  auto filter = std::make_unique<CMergeFilter>(width, height);
  filter->SetUp(row->code, row->fileName);
  return filter.release();
}
