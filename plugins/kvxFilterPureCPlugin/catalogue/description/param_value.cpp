#include "catalogue/description/param_value.h"

#include <algorithm>
#include <utility>

namespace vizcore {

NLEParamValue NLEParamValue::OfText(std::string text) {
  NLEParamValue value;
  value.text = std::move(text);
  value.kind = ParamKind::kText;
  return value;
}

int32_t UiTypeOfWord(std::string_view word) {
  static constexpr std::pair<std::string_view, int32_t> kWords[] = {
      {"Color", ui_type::kColor},           {"CheckBox", ui_type::kCheckBox},
      {"9Palaces", ui_type::kNinePalaces},  {"NoShow", ui_type::kNoShow},
      {"ListMask", ui_type::kListMask},     {"GradientColor", ui_type::kGradientColor},
      {"FilePath", ui_type::kFilePath},     {"ListMosaic", ui_type::kListMosaic},
      {"ColorStart", ui_type::kColorStart}, {"ColorEnd", ui_type::kColorEnd},
      {"Mult100", ui_type::kMult100},       {"TextEdit", ui_type::kTextEdit},
  };
  const auto* found =
      std::find_if(std::begin(kWords), std::end(kWords), [&](const auto& w) { return w.first == word; });
  return found == std::end(kWords) ? ui_type::kPlain : found->second;
}

void NLEFilterParams::GetName(char* out, size_t size) const {
  if (size == 0) return;
  const size_t length = std::min(name_.size(), size - 1);
  std::memcpy(out, name_.data(), length);
  out[length] = '\0';
}

void NLEFilterParams::SetRange(const NLEParamValue& minimum, const NLEParamValue& maximum) {
  minimum_ = minimum;
  maximum_ = maximum;
}

void NLEFilterParams::GetRange(NLEParamValue& minimum, NLEParamValue& maximum) const {
  minimum = minimum_;
  maximum = maximum_;
}

void NLEFilterParams::SetValue(const NLEParamValue& value) {
  static constexpr std::string_view kScheme = "file:/";
  current_ = value;
  if (kind_ != ParamKind::kText) return;
  const size_t at = current_.text.find(kScheme);
  if (at != std::string::npos) current_.text.erase(at, kScheme.size());
}

void NLEFilterParams::GetValue(NLEParamValue& out) const {
  out = current_;
  out.kind = kind_;
}

void NLEFilterParams::Clone(std::shared_ptr<NLEFilterParams>& out) const {
  out = std::make_shared<NLEFilterParams>(*this);
  out->SetValue(current_);
}

}  // namespace vizcore
