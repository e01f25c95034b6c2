#include "boundary/effect_object.h"

#include <exception>
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

// What an image says of itself, asked once: what was checked is what is used.
struct ImageFacts {
  explicit ImageFacts(HostImage& image)
      : width(image.Width()), height(image.Height()), step(image.Step()), data(image.Data()) {}

  int64_t Bytes() const { return static_cast<int64_t>(step) * height; }
  size_t Size() const { return static_cast<size_t>(Bytes()); }
  bool HasData() const { return Bytes() >= 0 && data; }

  int32_t width;
  int32_t height;
  int32_t step;
  uint8_t* data;
};

}  // namespace

KVXPureCPluginFilterEffect::KVXPureCPluginFilterEffect(std::shared_ptr<NLEFilterInfo> description)
    : description_(std::move(description)) {}

int32_t KVXPureCPluginFilterEffect::SetFilter(std::shared_ptr<NLEPureCFilter> filter) {
  if (!filter) return kStatusUnusable;
  filter_ = std::move(filter);
  return kStatusOk;
}

int32_t KVXPureCPluginFilterEffect::Prepare(HostRenderContext* context) {
  if (!filter_ || !context) return kStatusOk;
  filter_->SetCurrentFrame(static_cast<int32_t>(context->CurrentFrame()));
  filter_->SetTotalFrames(static_cast<int32_t>(context->TotalFrames()));
  FetchParams(*context);
  return kStatusOk;
}

// A value that the host does not give, or that cannot be taken over, for lack of memory say, is no failure: the
// parameter keeps the one it has.
void KVXPureCPluginFilterEffect::FetchParams(HostRenderContext& context) {
  const int64_t frame = context.CurrentFrame();
  const int32_t count = description_->GetParamCount();
  for (int32_t i = 0; i < count; ++i) {
    try {
      FetchParam(context, frame, i);
    } catch (const std::exception&) {
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
  if (!context) return kStatusBadArgument;
  HostImage* inputImage = context->InputImage(0);
  HostImage* outputImage = context->OutputImage();
  if (!inputImage || !outputImage) return kStatusBadArgument;
  const ImageFacts input(*inputImage), output(*outputImage);

  if (input.Bytes() != 0 && (!input.HasData() || IsBadReadPtr(input.data, input.Size()))) return kStatusUnusable;
  if (!output.HasData() || IsBadWritePtr(output.data, output.Size())) return kStatusUnusable;
  if (!filter_) return kStatusUnusable;
  try {
    const int32_t failed = filter_->Render(input.data, input.width, input.height, input.step, 0, 0, 0, 0, output.data,
                                           output.width, output.height, output.step);
    return failed ? kStatusUnusable : kStatusOk;
  } catch (const std::exception&) {
    return kStatusUnusable;
  }
}

}  // namespace vizcore
