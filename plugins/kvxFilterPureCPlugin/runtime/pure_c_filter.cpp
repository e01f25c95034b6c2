#include "runtime/pure_c_filter.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>
#include <string_view>
#include <utility>

#include "framework/factory/effect_table.h"
#include "framework/numeric.h"
#include "platform/text.h"
#include "runtime/alpha_blend.h"

namespace vizcore {

namespace {

constexpr double kFrameRate = 25.0;
constexpr size_t kKeyNameSize = 38;  // a name's key is its first 37 characters
constexpr size_t kRenderNameSize = 128;
constexpr size_t kMaxValues = std::size(ParamValueArray{}.value);

std::string NameOf(const NLEFilterParams& params, size_t size) {
  char name[kRenderNameSize];
  params.GetName(name, std::min(size, sizeof name));
  return name;
}

// A 64-bit float cut toward zero to a 64-bit integer, of which the low half counts.
int32_t LowWordOfTrunc64(double value) {
  constexpr double kLimit = 9223372036854775808.0;
  return value >= -kLimit && value < kLimit ? static_cast<int32_t>(static_cast<int64_t>(value)) : 0;
}

// Effects count the bytes of a frame in 32 bits. Rows without a pixel are gone through, too.
bool IsBeyondEffects(int32_t width, int32_t height) {
  return int64_t{std::max(width, 1)} * std::max(height, 1) > INT32_MAX / 4;
}

bool Overlap(const uint8_t* a, size_t sizeA, const uint8_t* b, size_t sizeB) {
  const std::less<> before;
  return before(a, b + sizeB) && before(b, a + sizeA);
}

// Kind and values by the processor's parameter type.
void FillFromDesc(NLEFilterParams& params, const FilterParamDesc& desc) {
  const auto fill = [&](ParamKind kind, auto convert) {
    params.SetKind(kind);
    params.SetRange(NLEParamValue::Of(convert(desc.minimum)), NLEParamValue::Of(convert(desc.maximum)));
    params.SetDefault(NLEParamValue::Of(convert(desc.defaultValue)));
  };
  switch (desc.type) {
    case FilterParamDesc::kRanged:
    case FilterParamDesc::kOnOff:
      fill(ParamKind::kInt32, Trunc32);
      break;
    case FilterParamDesc::kReal:
      fill(ParamKind::kDouble, [](double value) { return value; });
      break;
    case FilterParamDesc::kColor:
      fill(ParamKind::kInt32, LowWordOfTrunc64);
      break;
    default:  // a duration has no kind of its own
      params.SetKind(ParamKind::kNone);
      break;
  }
  NLEParamValue value;
  params.GetDefault(value);
  params.SetValue(value);
}

}  // namespace

NLEPureCFilter::NLEPureCFilter(std::shared_ptr<NLEFilterInfo> description) : description_(std::move(description)) {
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) productTable_[a][b] = static_cast<uint8_t>(a * b / 255);
  }
}

NLEPureCFilter::~NLEPureCFilter() = default;

int32_t NLEPureCFilter::Init(ProcessorFactory factory, const EffectPluginInfo* record) {
  if (!factory || !record) return 1;
  factory_ = factory;
  record_ = record;
  CBaseFilterProc* made = nullptr;
  if (!factory(record->effectId, 640, 640, &made) || !made) return 1;
  const std::unique_ptr<CBaseFilterProc> reporter(made);

  int32_t paramCount = description_->GetParamCount();
  for (int32_t i = 0; i < paramCount; ++i) {
    std::shared_ptr<NLEFilterParams> params;
    description_->GetParam(params, i);
    if (!params) continue;
    std::shared_ptr<NLEFilterParams> own;
    params->Clone(own);
    params_.emplace(NameOf(*own, kKeyNameSize), std::move(own));
  }
  DescribeByProcessor(*reporter, paramCount);

  NLEParamValue value;
  if (!GetParamValue("alpha", value)) {
    auto alpha = std::make_shared<NLEFilterParams>();
    alpha->SetAlias("alpha");
    alpha->SetName("alpha");
    alpha->SetKind(ParamKind::kInt32);
    alpha->SetRange(NLEParamValue::Of(int32_t{0}), NLEParamValue::Of(int32_t{100}));
    alpha->SetDefault(NLEParamValue::Of(int32_t{100}));
    alpha->SetValue(NLEParamValue::Of(int32_t{100}));
    AddParam(std::move(alpha), "alpha", paramCount);
  }
  return 0;
}

// Adds what the processor reports and the catalogue does not name: where both speak the catalogue wins.
void NLEPureCFilter::DescribeByProcessor(CBaseFilterProc& processor, int32_t& paramCount) {
  for (int32_t i = 0; i < record_->paramCount; ++i) {
    FilterParamDesc desc{};
    processor.GetParamDesc(&desc, i);
    const std::u16string_view wide(desc.name, std::find(std::begin(desc.name), std::end(desc.name), u'\0') - desc.name);
    const std::string name = NarrowUtf8(wide);
    NLEParamValue value;
    if (GetParamValue(name, value)) continue;
    auto params = std::make_shared<NLEFilterParams>();
    params->SetAlias(name.c_str());
    params->SetName(name.c_str());
    FillFromDesc(*params, desc);
    AddParam(std::move(params), name, paramCount);
  }
}

void NLEPureCFilter::AddParam(std::shared_ptr<NLEFilterParams> params, const std::string& name, int32_t& paramCount) {
  std::shared_ptr<NLEFilterParams> shared;
  params->Clone(shared);
  params_[name] = std::move(params);
  description_->AddParam(paramCount, std::move(shared));
  description_->SetParamCount(++paramCount);
}

int32_t NLEPureCFilter::SetCurrentFrame(int32_t frame) {
  currentFrame_ = frame;
  return 0;
}

int32_t NLEPureCFilter::SetTotalFrames(int32_t count) {
  totalFrames_ = count;
  return 0;
}

int32_t NLEPureCFilter::SetParamValue(const std::string& name, ParamKind, const NLEParamValue& value) {
  const auto found = params_.find(name);
  if (found == params_.end() || !found->second) return 2;
  found->second->SetValue(value);
  return 0;
}

bool NLEPureCFilter::GetParamValue(const std::string& name, NLEParamValue& out) const {
  const auto found = params_.find(name);
  if (found == params_.end() || !found->second) return false;
  found->second->GetValue(out);
  return true;
}

ParamValueArray NLEPureCFilter::GatherValues() {
  ParamValueArray values{};
  values.effectId = record_->effectId;
  const int32_t count = description_->GetParamCount();
  for (int32_t i = 0; i < count; ++i) {
    std::shared_ptr<NLEFilterParams> params;
    description_->GetParam(params, i);
    if (!params) continue;
    const std::string name = NameOf(*params, kRenderNameSize);
    const auto& own = params_[name];
    if (!own) continue;
    NLEParamValue value;
    own->GetValue(value);
    if (i == count - 1 && name == "alpha") continue;
    if (static_cast<size_t>(i) >= kMaxValues) continue;
    if (value.kind == ParamKind::kDouble) values.value[i] = value.AsDouble();
    if (value.kind == ParamKind::kFloat) values.value[i] = value.AsFloat();
    if (value.kind == ParamKind::kInt32) values.value[i] = value.AsInt32();
  }
  return values;
}

void NLEPureCFilter::RunProcessor(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                                  const ParamValueArray& values) {
  if (IsTimeDrivenId(record_->effectId)) {
    if (auto* timed = dynamic_cast<CTimeRelateFilter*>(processor_.get())) {
      timed->ProcessTimed(src, dst, &values, currentFrame_, totalFrames_, kFrameRate, srcStep, dstStep);
    }
    return;
  }
  processor_->SetFrameRate(kFrameRate);
  processor_->currentFrame = currentFrame_;
  processor_->totalFrames = totalFrames_;
  processor_->Process(src, dst, srcStep, dstStep, &values);
}

// Lets the processor of another size go, and sees to it that there is one.
bool NLEPureCFilter::MakeProcessor(int32_t width, int32_t height, int32_t step) {
  if (width != frameWidth_ || height != frameHeight_) {
    processor_.reset();
    frameWidth_ = width;
    frameHeight_ = height;
  }
  if (!factory_ || width < 0 || height < 0 || static_cast<int64_t>(step) < int64_t{width} * 4) return false;
  if (IsBeyondEffects(width, height)) return false;
  if (!processor_) {
    CBaseFilterProc* made = nullptr;
    if (!factory_(record_->effectId, static_cast<uint32_t>(width), static_cast<uint32_t>(height), &made)) return false;
    processor_.reset(made);
  }
  return processor_ != nullptr;
}

// A copy of the `given` bytes of the source, continued with its last row up to the `wanted` bytes.
uint8_t* NLEPureCFilter::CopySource(const uint8_t* src, size_t given, size_t step, size_t wanted) {
  ownSource_.assign(std::max(given, wanted), 0);
  if (given > 0) {
    std::memcpy(ownSource_.data(), src, given);
    for (size_t at = given; at < wanted; at += step) {
      std::memcpy(&ownSource_[at], &ownSource_[at - step], std::min(step, wanted - at));
    }
  }
  return ownSource_.data();
}

// From percent, rounded down to 255 steps.
int32_t NLEPureCFilter::Opacity() const {
  NLEParamValue value;
  if (!GetParamValue("alpha", value)) return 255;
  return static_cast<int32_t>(std::clamp<int64_t>(int64_t{value.AsInt32()} * 255 / 100, 0, 255 * 2));
}

int32_t NLEPureCFilter::Render(uint8_t* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep, int32_t, int32_t,
                               int32_t, int32_t, uint8_t* dst, int32_t dstWidth, int32_t dstHeight, int32_t dstStep) {
  if (!src || !dst) return 1;
  if (!MakeProcessor(dstWidth, dstHeight, dstStep)) return 1;

  // A processor reads its source as if it had the destination's size. A smaller one is continued with its last row, so
  // that nothing is read behind it; what lies within is read as it came. Nor does a processor expect its source to
  // change while it writes: where the two share memory it gets a copy.
  const size_t given = srcHeight > 0 && srcStep > 0 ? static_cast<size_t>(srcStep) * static_cast<size_t>(srcHeight) : 0;
  const int32_t step = given > 0 ? srcStep : dstWidth * 4;
  const size_t wanted = static_cast<size_t>(std::max(step, dstWidth * 4)) * static_cast<size_t>(dstHeight);
  if (given < wanted && wanted > INT32_MAX) return 1;  // a step that only claims to be one
  const size_t dstBytes = static_cast<size_t>(dstStep) * static_cast<size_t>(dstHeight);
  const ParamValueArray values = GatherValues();
  uint8_t* frame = src;
  try {
    if (given < wanted || Overlap(src, given, dst, dstBytes)) {
      frame = CopySource(src, given, static_cast<size_t>(step), wanted);
    }
    RunProcessor(frame, dst, step, dstStep, values);
  } catch (const std::exception&) {
    return 1;
  }

  // Background fills at full opacity are the only frames without the blend.
  const int32_t opacity = Opacity();
  if (opacity < 255 || !IsBackgroundFillId(record_->effectId)) {
    const int32_t width = std::min({srcWidth, dstWidth, srcStep / 4});
    AlphaBlendFrame(dst, dstStep, dst, dstStep, frame, srcStep, std::clamp(opacity, 0, 255), width,
                    std::min(srcHeight, dstHeight));
  }
  return 0;
}

}  // namespace vizcore
