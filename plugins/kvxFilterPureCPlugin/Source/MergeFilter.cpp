#include "Source/MergeFilter.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <opencv2/core.hpp>

#include "Source/Overlays.h"
#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

struct MergeRow {
  int32_t id;
  uint32_t code;
};

constexpr MergeRow kMergeRows[] = {
    {193, code::kTint},          {194, code::kAlphaOver},      {196, code::kAncientCanvas}, {197, code::kFilter1},
    {198, code::kOldPaper},      {199, code::kVignette1},      {200, code::kVignette2},     {201, code::kVignette3},
    {202, code::kVignette4},     {203, code::kVignette5},      {204, code::kVignette6},     {205, code::kWaterDrop3},
    {207, code::kOldTv},         {208, code::kStencilRed},     {209, code::kStencilGreen},  {210, code::kStencilBlue},
    {216, code::kHardLight},     {217, code::kColorExplosion}, {221, code::kBubble4},       {225, code::kHardMix},
    {241, code::kLinearDodge},   {242, code::kShine2},         {243, code::kRaindropAdd},   {251, code::kDodge},
    {254, code::kDarken},        {280, code::kVignetteWhite},  {294, code::kScreen},        {313, code::kSoftLight},
    {321, code::kLinearPercent}, {330, code::kBurntPaper},     {332, code::kLinearBurn},    {335, code::kLinearLight},
    {338, code::kColorTune1},    {339, code::kColorTune2},     {340, code::kColorTune3},    {341, code::kColorTune4},
    {342, code::kColorTune5},    {343, code::kDarkCorners},    {344, code::kCharcoal},      {345, code::kLiftedScreen},
    {346, code::kFocusColor},    {347, code::kRadialOverlay},  {348, code::kOldPhoto},      {349, code::kCanvasDrawing},
    {350, code::kPencilDrawing},
};

constexpr ParamRow kPercentParams[] = {{u"Percent", 0, 0, 100}};
constexpr ParamRow kColorParams[] = {{u"Red", 0, 0, 255}, {u"Green", 0, 0, 255}, {u"Blue", 0, 0, 255}};
constexpr ParamRow kPositionParams[] = {{u"Position_X", 0, 0, 100}, {u"Position_Y", 0, 0, 100}};

enum class MergeParams { kNone, kPercent, kColor, kPosition };

MergeParams ParamsOf(uint32_t code) {
  const auto between = [code](uint32_t first, uint32_t last) { return code >= first && code <= last; };
  if (between(code::kHardMix, code::kHardMixLast) || between(code::kLinearPercent, code::kLinearPercentLast))
    return MergeParams::kPercent;
  if (code == code::kTint || between(code::kStencilRed, code::kStencilBlue) ||
      between(code::kLinearBurnFirst, code::kLinearBurnLast))
    return MergeParams::kColor;
  if (code == code::kFocusColor) return MergeParams::kPosition;
  return MergeParams::kNone;
}

}  // namespace

CMergeFilter::~CMergeFilter() {
  EngineFree(engine_);
}

void CMergeFilter::SetUp(uint32_t code, const char* fileName) {
  material_.reset();
  EngineFree(engine_);
  engine_ = nullptr;
  EngineCreate(&engine_, code);
  materialFile_.Read(fileName, width, height);
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
  const auto copy = [&] { CopyVisibleInBands({src, width, height, srcStep}, {dst, width, height, dstStep}); };
  const bool spared = EngineSparesCopy(engine_);
  if (!spared) copy();
  if (EngineRunFrom(engine_, from, frame, material_ ? &second : nullptr) != kEngineDone && spared) copy();
}

CBaseFilterProc* MakeMergeFilter(const EffectRow& effect, int32_t width, int32_t height) {
  const auto* row =
      std::find_if(std::begin(kMergeRows), std::end(kMergeRows), [&](const MergeRow& r) { return r.id == effect.id; });
  if (row == std::end(kMergeRows)) return nullptr;
  auto filter = std::make_unique<CMergeFilter>(width, height);
  filter->SetUp(row->code, effect.materials[0]);
  return filter.release();
}
