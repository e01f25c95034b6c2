#include "hosts/mlt/metadata.h"

#include "hosts/mlt/names.h"

namespace kvx {

namespace {

// As data: attached in another way, lists vanish from `melt -query`.
void Attach(mlt_properties parent, const char* name, mlt_properties child) {
  mlt_properties_set_data(parent, name, child, 0, reinterpret_cast<mlt_destructor>(mlt_properties_close), nullptr);
}

const char* TypeOf(const ParamInfo& param) {
  if (param.IsText()) return "string";
  if (param.IsColor()) return "color";
  if (param.type == ParamType::kCheckBox) return "boolean";
  return param.TakesFractions() ? "float" : "integer";
}

mlt_properties MakeParameter(const std::string& identifier, const std::string& title, const char* type) {
  mlt_properties entry = mlt_properties_new();
  mlt_properties_set(entry, "identifier", identifier.c_str());
  mlt_properties_set(entry, "title", title.c_str());
  mlt_properties_set(entry, "type", type);
  mlt_properties_set(entry, "mutable", "yes");
  return entry;
}

void SetRange(mlt_properties entry, double minimum, double maximum, double value) {
  mlt_properties_set(entry, "minimum", NumberText(minimum).c_str());
  mlt_properties_set(entry, "maximum", NumberText(maximum).c_str());
  mlt_properties_set(entry, "default", NumberText(value).c_str());
}

mlt_properties MakeParameter(const ParamInfo& param) {
  mlt_properties entry = MakeParameter(PropertyName(param), param.name, TypeOf(param));
  if (param.IsColor()) {
    mlt_properties_set(entry, "default", ColorText(param.defaultValue).c_str());
    mlt_properties_set(entry, "widget", "color");
  } else if (!param.IsText()) {
    SetRange(entry, param.minimum, param.maximum, param.defaultValue);
  }
  if (param.type == ParamType::kCheckBox) mlt_properties_set(entry, "widget", "checkbox");
  if (!param.IsText()) mlt_properties_set(entry, "animation", "yes");
  if (param.hidden) mlt_properties_set(entry, "description", "Editors need not show it.");
  return entry;
}

}  // namespace

mlt_properties MakeMetadata(const EffectInfo& effect) {
  mlt_properties metadata = mlt_properties_new();
  mlt_properties_set(metadata, "schema_version", "7.0");
  mlt_properties_set(metadata, "type", "filter");
  mlt_properties_set(metadata, "identifier", ServiceName(effect).c_str());
  mlt_properties_set(metadata, "title", ServiceTitle(effect).c_str());
  mlt_properties_set(metadata, "version", KVX_VERSION);
  mlt_properties_set(metadata, "license", "MIT");
  mlt_properties_set(metadata, "language", "en");
  mlt_properties_set(metadata, "description", Describe(effect).c_str());
  mlt_properties tags = mlt_properties_new();
  mlt_properties_set(tags, "0", "Video");
  mlt_properties_set(tags, "1", effect.family.c_str());
  Attach(metadata, "tags", tags);

  mlt_properties parameters = mlt_properties_new();
  const std::string argument = ArgumentProperty(effect);
  int count = 0;
  const auto add = [&](mlt_properties entry) {
    if (mlt_properties_get(entry, "identifier") == argument) mlt_properties_set(entry, "argument", "yes");
    Attach(parameters, std::to_string(count++).c_str(), entry);
  };
  for (const ParamInfo& param : effect.params) add(MakeParameter(param));
  mlt_properties opacity = MakeParameter(kOpacityProperty, "Opacity", "float");
  SetRange(opacity, 0, 100, 100);
  mlt_properties_set(opacity, "unit", "%");
  mlt_properties_set(opacity, "animation", "yes");
  add(opacity);
  Attach(metadata, "parameters", parameters);
  return metadata;
}

}  // namespace kvx
