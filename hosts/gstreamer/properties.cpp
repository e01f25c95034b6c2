#include "hosts/gstreamer/properties.h"

#include <fmt/format.h>
#include <gst/gst.h>

#include <algorithm>
#include <cctype>
#include <climits>

namespace kvx {

namespace {

constexpr auto kReadWrite = static_cast<GParamFlags>(G_PARAM_READWRITE);
constexpr auto kControllable =
    static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_CONTROLLABLE | GST_PARAM_MUTABLE_PLAYING);
// A colour of the framework is 0xAARRGGBB, one of an effect 0xRRGGBB.
constexpr guint kOpaque = 0xFF000000u;

// "BG_Blur_Level" and "FireWidthArea" as words.
std::string Words(const std::string& name) {
  std::string words;
  for (size_t i = 0; i < name.size(); ++i) {
    const auto at = [&name](size_t index) { return static_cast<unsigned char>(name[index]); };
    const bool begins = i > 0 && std::isupper(at(i)) && std::islower(at(i - 1));
    if (begins) words += ' ';
    words += name[i] == '_' ? ' ' : name[i];
  }
  return words;
}

std::string PropertyName(GObjectClass* objectClass, const ParamInfo& param) {
  std::string name = Slug(param.name);
  while (name.empty() || !std::isalpha(static_cast<unsigned char>(name[0])) || name == kOpacityProperty ||
         g_object_class_find_property(objectClass, name.c_str())) {
    name = "param-" + name;
  }
  return name;
}

int ToInt(double value) {
  return static_cast<int>(std::clamp<double>(value, INT_MIN, INT_MAX));
}

GParamSpec* SpecOf(const std::string& name, const EffectInfo& effect, const ParamInfo& param) {
  const std::string nick = Words(param.name);
  const auto [least, most] = std::minmax(param.minimum, param.maximum);
  const double value = std::clamp(param.defaultValue, least, most);
  const auto blurb = [&](const std::string& kind) { return fmt::format("{} of {}, {}", nick, effect.name, kind); };
  if (param.IsText()) {
    return g_param_spec_string(name.c_str(), nick.c_str(), blurb("a text").c_str(), "", kReadWrite);
  }
  if (param.type == ParamType::kCheckBox) {
    return g_param_spec_boolean(name.c_str(), nick.c_str(), blurb("on or off").c_str(), value != 0, kControllable);
  }
  if (param.IsColor()) {
    return g_param_spec_uint(name.c_str(), nick.c_str(), blurb("a colour, 0xAARRGGBB; alpha is not used").c_str(), 0,
                             G_MAXUINT, kOpaque | static_cast<guint>(value), kControllable);
  }
  const std::string range = blurb(fmt::format("{:.6g} to {:.6g}", least, most));
  if (param.TakesFractions()) {
    return g_param_spec_double(name.c_str(), nick.c_str(), range.c_str(), least, most, value, kControllable);
  }
  return g_param_spec_int(name.c_str(), nick.c_str(), range.c_str(), ToInt(least), ToInt(most), ToInt(value),
                          kControllable);
}

double NumberOf(const GValue* value) {
  switch (G_VALUE_TYPE(value)) {
    case G_TYPE_BOOLEAN:
      return g_value_get_boolean(value) ? 1 : 0;
    case G_TYPE_UINT:
      return g_value_get_uint(value) & ~kOpaque;
    case G_TYPE_INT:
      return g_value_get_int(value);
    default:
      return g_value_get_double(value);
  }
}

void SetNumber(GValue* value, double number) {
  switch (G_VALUE_TYPE(value)) {
    case G_TYPE_BOOLEAN:
      return g_value_set_boolean(value, number != 0);
    case G_TYPE_UINT:
      return g_value_set_uint(value, kOpaque | static_cast<guint>(number));
    case G_TYPE_INT:
      return g_value_set_int(value, ToInt(number));
    default:
      return g_value_set_double(value, number);
  }
}

}  // namespace

std::vector<const ParamInfo*> ShownParams(const EffectInfo& effect) {
  std::vector<const ParamInfo*> shown;
  for (const ParamInfo& param : effect.params) {
    if (!param.hidden) shown.push_back(&param);
  }
  return shown;
}

void InstallProperties(GObjectClass* objectClass, const EffectInfo& effect,
                       const std::vector<const ParamInfo*>& params) {
  guint id = 1;
  g_object_class_install_property(
      objectClass, id++,
      g_param_spec_double(kOpacityProperty, "Opacity", "Opacity of the effect over its source, in percent", 0, 100, 100,
                          kControllable));
  for (const ParamInfo* param : params) {
    const std::string name = PropertyName(objectClass, *param);
    g_object_class_install_property(objectClass, id++, SpecOf(name, effect, *param));
  }
}

double Settings::Opacity() const {
  const std::lock_guard lock(mutex_);
  return opacity_;
}

void Settings::SetOpacity(double percent) {
  const std::lock_guard lock(mutex_);
  opacity_ = percent;
}

void Settings::Set(const ParamInfo& param, const GValue* value) {
  const std::lock_guard lock(mutex_);
  if (param.IsText()) {
    const char* text = g_value_get_string(value);
    set_.texts[param.name] = text ? text : "";
  } else {
    set_.numbers[param.name] = NumberOf(value);
  }
}

void Settings::Get(const ParamInfo& param, GValue* value) const {
  const std::lock_guard lock(mutex_);
  if (param.IsText()) {
    const auto found = set_.texts.find(param.name);
    g_value_set_string(value, found == set_.texts.end() ? "" : found->second.c_str());
  } else {
    const auto found = set_.numbers.find(param.name);
    SetNumber(value, found == set_.numbers.end() ? param.defaultValue : found->second);
  }
}

void Settings::ApplyTo(FrameValues& values) const {
  const std::lock_guard lock(mutex_);
  for (const auto& [name, number] : set_.numbers) values.numbers[name] = number;
  for (const auto& [name, text] : set_.texts) values.texts[name] = text;
  values.numbers[kOpacityName] = opacity_;
}

}  // namespace kvx
