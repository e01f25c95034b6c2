#include "Source/MergeFilter.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <opencv2/core.hpp>

#include "Source/Overlays.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

struct MergeRow {
  int32_t id;
  uint32_t code;
};

constexpr MergeRow kMergeRows[] = {
    {193, 2049}, {194, 2050}, {196, 2052}, {197, 2053}, {198, 2054}, {199, 2055}, {200, 2056}, {201, 2057}, {202, 2058},
    {203, 2059}, {204, 2060}, {205, 2061}, {207, 2063}, {208, 2064}, {209, 2065}, {210, 2066}, {216, 2072}, {217, 2073},
    {221, 2077}, {225, 2081}, {241, 2097}, {242, 2098}, {243, 2099}, {251, 2107}, {254, 2110}, {280, 2136}, {294, 2150},
    {313, 2169}, {321, 2177}, {330, 2186}, {332, 2188}, {335, 2191}, {338, 2193}, {339, 2194}, {340, 2195}, {341, 2196},
    {342, 2197}, {343, 2198}, {344, 2199}, {345, 2200}, {346, 2201}, {347, 2202}, {348, 2203}, {349, 2204}, {350, 2205},
};

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

void CMergeFilter::SetUp(uint32_t code, const char* fileName) {
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

CBaseFilterProc* MakeMergeFilter(const EffectRow& effect, int32_t width, int32_t height) {
  const auto* row =
      std::find_if(std::begin(kMergeRows), std::end(kMergeRows), [&](const MergeRow& r) { return r.id == effect.id; });
  if (row == std::end(kMergeRows)) return nullptr;
  auto filter = std::make_unique<CMergeFilter>(width, height);
  filter->SetUp(row->code, effect.materials[0]);
  return filter.release();
}
