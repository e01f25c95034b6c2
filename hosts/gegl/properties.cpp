#include "hosts/gegl/properties.h"

#include <fmt/format.h>
#include <gegl-plugin.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <set>

namespace kvx {

namespace {

constexpr auto kFlags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_CONSTRUCT | GEGL_PARAM_PAD_INPUT);
constexpr int kLastFrame = 9999;
constexpr int kLongestList = 64;
constexpr int kWholeColor = 0xFFFFFF;

// Property names that a node of GEGL keeps for itself.
const std::set<std::string>& TakenNames() {
  static const std::set<std::string> names = {"operation",    "gegl-operation", "name",        "dont-cache",
                                              "cache-policy", "use-opencl",     "passthrough", "input",
                                              "output",       "opacity",        kFrameProperty};
  return names;
}

bool IsList(const ParamInfo& param) {
  return (param.type == ParamType::kNinePositions || param.type == ParamType::kMosaicList) &&
         param.maximum - param.minimum < kLongestList;
}

int AsInt(double value) {
  return static_cast<int>(std::clamp<double>(value, INT_MIN, INT_MAX));
}

// A catalogue may say anything; GObject refuses a range that is not in order.
ParamInfo InOrder(ParamInfo param) {
  if (param.IsText()) return param;
  if (param.maximum < param.minimum) std::swap(param.minimum, param.maximum);
  if (!param.TakesFractions()) {
    param.minimum = AsInt(std::ceil(param.minimum));
    param.maximum = std::max<double>(param.minimum, AsInt(std::floor(param.maximum)));
    param.defaultValue = AsInt(param.defaultValue);
  }
  param.defaultValue = std::clamp(param.defaultValue, param.minimum, param.maximum);
  return param;
}

// The enumeration of a list from `first` to `last`, registered once for all lists of this length.
GType ListType(const char* kind, int first, int last) {
  const std::string name = fmt::format("Kvx{}From{}To{}", kind, first, last);
  if (const GType known = g_type_from_name(name.c_str())) return known;
  // GObject keeps the values for ever.
  auto* values = g_new0(GEnumValue, static_cast<size_t>(last - first) + 2);
  for (int i = first; i <= last; ++i) {
    values[i - first] = {i, g_strdup_printf("%s %d", kind, i), g_strdup_printf("%d", i)};
  }
  return g_enum_register_static(name.c_str(), values);
}

}  // namespace

std::vector<Property> PropertiesOf(const EffectInfo& effect) {
  std::vector<Property> properties;
  std::set<std::string> taken = TakenNames();
  for (const ParamInfo& param : effect.params) {
    std::string name = Slug(param.name);
    if (name.empty() || !g_ascii_isalpha(name[0]) || taken.count(name)) name = "kvx-" + name;
    for (const std::string stem = name; taken.count(name);) name = fmt::format("{}-{}", stem, properties.size());
    taken.insert(name);
    const ParamInfo ordered = InOrder(param);
    std::string blurb = param.name;
    if (!param.IsText() && !param.IsColor() && param.type != ParamType::kCheckBox)
      blurb += fmt::format(", {:g} to {:g}", ordered.minimum, ordered.maximum);
    properties.push_back({std::move(name), param.name, std::move(blurb), ordered});
  }
  ParamInfo opacity{.name = kOpacityName, .maximum = 100, .defaultValue = 100};
  properties.push_back({"opacity", "Opacity", "How much of the effect is seen, in percent", std::move(opacity)});
  if (effect.moving) {
    ParamInfo frame{.name = kFrameProperty, .type = ParamType::kInteger, .maximum = kLastFrame};
    properties.push_back(
        {kFrameProperty, "Frame", "Which frame of the movement is seen, 25 to a second", std::move(frame)});
  }
  return properties;
}

GParamSpec* MakeParamSpec(const Property& property) {
  const ParamInfo& param = property.param;
  const char* name = property.name.c_str();
  const char* label = property.label.c_str();
  const char* blurb = property.blurb.c_str();
  const int first = AsInt(param.minimum);
  const int last = AsInt(param.maximum);
  const int start = AsInt(param.defaultValue);
  GParamSpec* spec = nullptr;
  if (param.IsText()) {
    spec = gegl_param_spec_string(name, label, blurb, FALSE, TRUE, "", kFlags);
  } else if (param.IsColor()) {
    const std::string color = fmt::format("#{:06x}", start & kWholeColor);
    spec = gegl_param_spec_color_from_string(name, label, blurb, color.c_str(), kFlags);
  } else if (param.type == ParamType::kCheckBox) {
    spec = g_param_spec_boolean(name, label, blurb, start != 0, kFlags);
  } else if (IsList(param)) {
    const char* kind = param.type == ParamType::kNinePositions ? "Position" : "Mosaic";
    spec = gegl_param_spec_enum(name, label, blurb, ListType(kind, first, last), start, kFlags);
  } else if (param.TakesFractions()) {
    spec = gegl_param_spec_double(name, label, blurb, param.minimum, param.maximum, param.defaultValue, param.minimum,
                                  param.maximum, 1.0, kFlags);
  } else {
    const int shown = property.name == kFrameProperty ? kClipFrames - 1 : last;
    spec = gegl_param_spec_int(name, label, blurb, first, last, start, first, shown, 1.0, kFlags);
  }
  if (param.hidden) gegl_param_spec_set_property_key(spec, "visible", "0");
  return spec;
}

double NumberOf(const Property& property, const GValue& value, const Babl* space) {
  if (G_VALUE_HOLDS_DOUBLE(&value)) return g_value_get_double(&value);
  if (G_VALUE_HOLDS_INT(&value)) return g_value_get_int(&value);
  if (G_VALUE_HOLDS_BOOLEAN(&value)) return g_value_get_boolean(&value) ? 1 : 0;
  if (G_VALUE_HOLDS_ENUM(&value)) return g_value_get_enum(&value);
  auto* color = static_cast<GeglColor*>(g_value_get_object(&value));
  if (!color) return StartNumber(property);
  uint8_t rgb[3];
  gegl_color_get_pixel(color, babl_format_with_space("R'G'B' u8", space), rgb);
  return rgb[0] << 16 | rgb[1] << 8 | rgb[2];
}

double StartNumber(const Property& property) {
  const double start = property.param.defaultValue;
  return property.param.IsColor() ? AsInt(start) & kWholeColor : start;
}

}  // namespace kvx
