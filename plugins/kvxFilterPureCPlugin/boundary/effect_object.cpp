#include "boundary/effect_object.h"

#include <new>
#include <optional>
#include <utility>

#include "platform/memory_probe.h"

namespace vizcore {

namespace {

constexpr size_t kNameSize = 38;

std::optional<int32_t> HostTypeOf(ParamKind kind) {
  switch (kind) {
    case ParamKind::kBool:
      return HostParamValue::kByte;
    case ParamKind::kDouble:
      return HostParamValue::kDouble;
    case ParamKind::kFloat:
      return HostParamValue::kFloat;
    case ParamKind::kUnconverted:
      return HostParamValue::kNone;
    case ParamKind::kInt32:
      return HostParamValue::kInt32;
    case ParamKind::kText:
      return HostParamValue::kText;
    case ParamKind::kInt64:
      return HostParamValue::kInt64;
    case ParamKind::kNone:
      break;
  }
  return std::nullopt;
}

std::optional<NLEParamValue> Convert(ParamKind kind, const HostParamValue& from) {
  switch (kind) {
    case ParamKind::kBool:
      return NLEParamValue::Of(from.value.byte);
    case ParamKind::kDouble:
      return NLEParamValue::Of(from.value.float64);
    case ParamKind::kFloat:
      return NLEParamValue::Of(from.value.float32);
    case ParamKind::kInt32:
      return NLEParamValue::Of(from.value.int32);
    case ParamKind::kText:
      if (!from.value.text) return std::nullopt;
      return NLEParamValue::OfText(from.value.text);
    case ParamKind::kInt64:
      return NLEParamValue::Of(from.value.int64);
    case ParamKind::kNone:
    case ParamKind::kUnconverted:
      break;
  }
  return std::nullopt;
}

int64_t BytesOf(HostImage& image) {
  return static_cast<int64_t>(image.Step()) * image.Height();
}

}  // namespace

KVXPureCPluginFilterEffect::KVXPureCPluginFilterEffect(std::shared_ptr<NLEFilterInfo> description)
    : description_(std::move(description)) {}

int32_t KVXPureCPluginFilterEffect::SetFilter(std::shared_ptr<NLEPureCFilter> filter) {
  if (!filter) return kStatusUnusable;
  filter_ = std::move(filter);
  return kStatusOk;
}

int32_t KVXPureCPluginFilterEffect::Prepare(HostRenderContext* context) {
  if (!filter_) return kStatusOk;
  filter_->SetCurrentFrame(static_cast<int32_t>(context->CurrentFrame()));
  filter_->SetTotalFrames(static_cast<int32_t>(context->TotalFrames()));
  FetchParams(*context);
  return kStatusOk;
}

// A value that the host does not give, or that memory does not suffice for, is no failure: the parameter keeps the one
// it has.
void KVXPureCPluginFilterEffect::FetchParams(HostRenderContext& context) {
  const int64_t frame = context.CurrentFrame();
  const int32_t count = description_->GetParamCount();
  for (int32_t i = 0; i < count; ++i) {
    try {
      FetchParam(context, frame, i);
    } catch (const std::bad_alloc&) {
    }
  }
}

void KVXPureCPluginFilterEffect::FetchParam(HostRenderContext& context, int64_t frame, int32_t index) {
  std::shared_ptr<NLEFilterParams> params;
  description_->GetParam(params, index);
  if (!params) return;
  char name[kNameSize];
  params->GetName(name, sizeof name);
  const std::optional<int32_t> hostType = HostTypeOf(params->GetKind());
  if (!hostType) return;
  HostParamValue hostValue{};
  hostValue.type = *hostType;
  if (context.ParameterValue(name, frame, &hostValue) != 0) return;
  if (const auto value = Convert(params->GetKind(), hostValue)) {
    filter_->SetParamValue(name, params->GetKind(), *value);
  }
}

int32_t KVXPureCPluginFilterEffect::Render(HostRenderContext* context) {
  HostImage* input = context->InputImage(0);
  HostImage* output = context->OutputImage();
  if (!input || !output) return kStatusBadArgument;

  const int64_t inputBytes = BytesOf(*input);
  if (inputBytes != 0 &&
      (inputBytes < 0 || !input->Data() || IsBadReadPtr(input->Data(), static_cast<size_t>(inputBytes)))) {
    return kStatusUnusable;
  }
  const int64_t outputBytes = BytesOf(*output);
  if (outputBytes < 0 || !output->Data() || IsBadWritePtr(output->Data(), static_cast<size_t>(outputBytes))) {
    return kStatusUnusable;
  }
  if (!filter_) return kStatusUnusable;
  const int32_t failed = filter_->Render(input->Data(), input->Width(), input->Height(), input->Step(), 0, 0, 0, 0,
                                         output->Data(), output->Width(), output->Height(), output->Step());
  return failed ? kStatusUnusable : kStatusOk;
}

}  // namespace vizcore
