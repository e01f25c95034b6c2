#include "hosts/mlt/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "hostkit/text.h"
#include "hosts/mlt/names.h"

namespace kvx {

namespace {

constexpr char kTimeName[] = "Time";

std::optional<double> ParseNumber(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

// MLT takes whatever is no colour for black.
bool IsColorText(std::string_view text) {
  constexpr std::array<std::string_view, 5> kNames = {"black", "blue", "green", "red", "white"};
  if (std::find(kNames.begin(), kNames.end(), text) != kNames.end()) return true;
  const size_t prefix = text.starts_with('#') ? 1 : text.starts_with("0x") ? 2 : 0;
  text.remove_prefix(prefix);
  const bool whole = text.size() == 8 || (prefix == 1 && text.size() == 6);
  return prefix != 0 && whole && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

[[noreturn]] void Refuse(const std::string& property, std::string_view text, const std::string& why) {
  throw Error(fmt::format("{}={}: {}", property, text, why), ErrorKind::kBadValue);
}

double CheckedNumber(const ParamInfo& param, const std::string& property, std::string_view text) {
  const std::optional<double> value = ParseNumber(text);
  if (!value) Refuse(property, text, "not a number");
  // Many bounds were single-precision numbers: 0.2 stands for 0.200000003.
  const auto single = static_cast<float>(*value);
  if (single < static_cast<float>(param.minimum) || single > static_cast<float>(param.maximum)) {
    Refuse(property, text, fmt::format("out of range, {} to {}", NumberText(param.minimum), NumberText(param.maximum)));
  }
  return *value;
}

// Calls `check` with the value of every keyframe of "TIME=VALUE;TIME=VALUE".
template <typename Check>
void ForKeyframes(const std::string& property, const std::string& text, Check check) {
  for (const std::string& keyframe : Split(text, ';')) {
    const size_t equals = keyframe.find('=');
    if (equals == std::string::npos) Refuse(property, text, "not FRAME=VALUE;FRAME=VALUE");
    check(std::string_view(keyframe).substr(equals + 1));
  }
}

class Reader {
 public:
  Reader(mlt_properties properties, KeyframePlace place) : properties_(properties), place_(place) {}

  // Null for a property that is not set.
  const char* Text(const std::string& property) const {
    const char* text = mlt_properties_get(properties_, property.c_str());
    return text && *text ? text : nullptr;
  }

  std::optional<double> Number(const ParamInfo& param, const std::string& property) const {
    const char* set = Text(property);
    if (!set) return std::nullopt;
    const std::string text = set;
    if (text.find('=') == std::string::npos) return CheckedNumber(param, property, text);
    ForKeyframes(property, text, [&](std::string_view value) { CheckedNumber(param, property, value); });
    double value = mlt_properties_anim_get_double(properties_, property.c_str(), place_.position, place_.length);
    // The effect cuts fractions: 28.999999999999996 is 29.
    if (!param.TakesFractions()) value = std::nearbyint(value * 1e6) / 1e6;
    return std::clamp(value, param.minimum, param.maximum);
  }

  std::optional<double> Color(const ParamInfo& param, const std::string& property) const {
    const char* set = Text(property);
    if (!set) return std::nullopt;
    const std::string text = set;
    const auto check = [&](std::string_view value) {
      if (!IsColorText(value)) Refuse(property, value, "not a colour, say #RRGGBB");
    };
    if (text.find('=') != std::string::npos) {
      ForKeyframes(property, text, check);
    } else if (ParseNumber(text)) {
      return CheckedNumber(param, property, text);
    } else {
      check(text);
    }
    const mlt_color color =
        mlt_properties_anim_get_color(properties_, property.c_str(), place_.position, place_.length);
    return color.r << 16 | color.g << 8 | color.b;
  }

 private:
  mlt_properties properties_;
  KeyframePlace place_;
};

}  // namespace

FrameValues ReadValues(mlt_properties properties, const EffectInfo& effect, KeyframePlace place, double milliseconds) {
  FrameValues values;
  const Reader reader(properties, place);
  for (const ParamInfo& param : effect.params) {
    const std::string property = PropertyName(param);
    if (param.IsText()) {
      if (const char* text = reader.Text(property)) values.texts[param.name] = text;
      continue;
    }
    const std::optional<double> set = param.IsColor() ? reader.Color(param, property) : reader.Number(param, property);
    values.numbers[param.name] = set.value_or(param.name == kTimeName ? milliseconds : param.defaultValue);
  }
  static const ParamInfo opacity = {kOpacityName, ParamType::kDouble, 0, 100, 100, false};
  values.numbers[kOpacityName] = reader.Number(opacity, kOpacityProperty).value_or(opacity.defaultValue);
  return values;
}

}  // namespace kvx
