// Usage: kdenlive_effects FOLDER. Writes what Kdenlive wants to know of our filters below FOLDER: effects/kvx_SLUG.xml
// for each, which gives it keyframes, and categories.xml, a group for each family in the form of Kdenlive's own list.
#include <fmt/format.h>
#include <tinyxml2.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <string>

#include "hostkit/error.h"
#include "hosts/mlt/names.h"

namespace fs = std::filesystem;

namespace {

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

void AddText(XMLElement* parent, const char* name, const std::string& text) {
  parent->InsertNewChildElement(name)->SetText(text.c_str());
}

XMLElement* AddParameter(XMLElement* effect, const char* type, const std::string& name, const std::string& title) {
  XMLElement* element = effect->InsertNewChildElement("parameter");
  element->SetAttribute("type", type);
  element->SetAttribute("name", name.c_str());
  AddText(element, "name", title);
  return element;
}

void SetRange(XMLElement* element, const kvx::ParamInfo& param) {
  element->SetAttribute("min", kvx::NumberText(param.minimum).c_str());
  element->SetAttribute("max", kvx::NumberText(param.maximum).c_str());
  element->SetAttribute("default", kvx::NumberText(param.defaultValue).c_str());
  if (param.TakesFractions() && param.maximum - param.minimum <= 1000) element->SetAttribute("decimals", "2");
}

void AddParameter(XMLElement* effect, const kvx::ParamInfo& param) {
  const std::string name = kvx::PropertyName(param);
  if (param.IsText()) {
    AddParameter(effect, "url", name, param.name);
  } else if (param.IsColor()) {
    AddParameter(effect, "color", name, param.name)
        ->SetAttribute("default", kvx::ColorText(param.defaultValue).c_str());
  } else if (param.type == kvx::ParamType::kCheckBox) {
    AddParameter(effect, "bool", name, param.name)->SetAttribute("default", param.defaultValue != 0 ? "1" : "0");
  } else {
    SetRange(AddParameter(effect, "animated", name, param.name), param);
  }
}

void Save(XMLDocument& document, const fs::path& path) {
  if (document.SaveFile(path.c_str()) != tinyxml2::XML_SUCCESS) throw kvx::Error(path.string() + ": cannot be written");
}

void StartDocument(XMLDocument& document) {
  document.InsertEndChild(document.NewDeclaration());
  document.InsertEndChild(document.NewUnknown("DOCTYPE kpartgui"));
}

void WriteEffect(const kvx::EffectInfo& effect, const fs::path& path) {
  XMLDocument document;
  StartDocument(document);
  XMLElement* root = document.NewElement("effect");
  document.InsertEndChild(root);
  root->SetAttribute("tag", kvx::ServiceName(effect).c_str());
  root->SetAttribute("id", kvx::ServiceName(effect).c_str());
  AddText(root, "name", kvx::ServiceTitle(effect));
  AddText(root, "description", kvx::Describe(effect));
  AddText(root, "author", "kvx");
  for (const kvx::ParamInfo& param : effect.params) {
    if (!param.hidden) AddParameter(root, param);
  }
  XMLElement* opacity = AddParameter(root, "animated", kvx::kOpacityProperty, "Opacity");
  SetRange(opacity, {kvx::kOpacityName, kvx::ParamType::kDouble, 0, 100, 100, false});
  opacity->SetAttribute("suffix", "%");
  Save(document, path);
}

// Groups without a root: they are put into Kdenlive's list.
void WriteCategories(const kvx::EffectList& effects, const fs::path& path) {
  std::map<std::string, std::string> members;
  for (const kvx::EffectInfo& effect : effects.All()) {
    std::string& list = members[effect.family];
    list += (list.empty() ? "" : ",") + kvx::ServiceName(effect);
  }
  XMLDocument document;
  for (const std::string& family : kvx::Families()) {
    if (!members.contains(family)) continue;
    XMLElement* group = document.NewElement("group");
    document.InsertEndChild(group);
    group->SetAttribute("list", members[family].c_str());
    AddText(group, "text", "kvx: " + family);
  }
  Save(document, path);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: kdenlive_effects FOLDER\n");
    return 2;
  }
  try {
    const fs::path folder = argv[1];
    const kvx::EffectList effects = kvx::BuiltinDescription();
    fs::remove_all(folder / "effects");
    fs::create_directories(folder / "effects");
    for (const kvx::EffectInfo& effect : effects.All()) {
      WriteEffect(effect, folder / "effects" / fmt::format("kvx_{}.xml", effect.slug));
    }
    WriteCategories(effects, folder / "categories.xml");
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kdenlive_effects: %s\n", error.what());
    return 1;
  }
}
