#include "catalogue/filter_parser.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <stdexcept>

#include "framework/numeric.h"

namespace vizcore {

namespace {

using nlohmann::json;

// A missing text is read like a null one, which raises the library's type error.
std::string TextAt(const json& object, const char* key) {
  return object.contains(key) ? object.at(key).get<std::string>() : json().get<std::string>();
}

std::string TextOr(const json& object, const char* key, const std::string& fallback) {
  return object.contains(key) ? object.at(key).get<std::string>() : fallback;
}

// The messages are fixed texts, whatever the standard library at hand says.
int32_t ParseDecimal(const std::string& text) {
  errno = 0;
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) throw std::invalid_argument("invalid stoi argument");
  if (errno == ERANGE || value < INT_MIN || value > INT_MAX) throw std::out_of_range("stoi argument out of range");
  return static_cast<int32_t>(value);
}

void ReadNumber(const json& value, int32_t& out) {
  out = value.is_number_float() ? Trunc32(value.get<double>()) : value.get<int32_t>();
}
void ReadNumber(const json& value, float& out) {
  out = value.get<float>();
}

// The three numbers of one type. An element that leaves one out gets what the previous element of its type had.
template <typename Number>
struct Range {
  Number minimum = 0;
  Number maximum = 0;
  Number defaultValue = 0;

  void ReadInto(const json& element, ParamKind kind, NLEFilterParams& params) {
    if (element.contains("MIN")) ReadNumber(element.at("MIN"), minimum);
    if (element.contains("MAX")) ReadNumber(element.at("MAX"), maximum);
    if (element.contains("DEFAULT")) ReadNumber(element.at("DEFAULT"), defaultValue);
    params.SetKind(kind);
    params.SetRange(NLEParamValue::Of(minimum), NLEParamValue::Of(maximum));
    params.SetDefault(NLEParamValue::Of(defaultValue));
    params.SetValue(NLEParamValue::Of(defaultValue));
  }
};

void ParseTextures(const json& array, const std::string& dataPath, NLEFilterInfo& info) {
  int32_t count = 0;
  for (const json& element : array) {
    if (element.is_null() || element.empty()) continue;
    const std::string type = TextAt(element, "TYPE");
    const std::string path = dataPath + TextAt(element, "FILE");
    info.AddTexture(count++, type == "image" ? path : type + "|" + path);
  }
  info.SetTextureCount(count);
}

}  // namespace

std::shared_ptr<NLEFilterInfo> ParseFilterInfo(const json& object, const std::string& dataPath) {
  if (object.empty() || !object.contains("GUID")) return nullptr;
  const std::string guid = TextAt(object, "GUID");
  if (guid.empty()) return nullptr;
  auto info = std::make_shared<NLEFilterInfo>();
  info->SetGuid(guid);
  if (object.contains("NAME")) info->SetName(TextAt(object, "NAME"));
  if (object.contains("DYNAMIC")) info->SetDynamic(ParseDecimal(TextAt(object, "DYNAMIC")));
  if (object.contains("TEXTURES")) ParseTextures(object.at("TEXTURES"), dataPath, *info);
  if (object.contains("PARAMS")) ParseFilterParams(object.at("PARAMS"), info);
  return info;
}

void ParseFilterParams(const json& array, const std::shared_ptr<NLEFilterInfo>& info) {
  Range<float> floats;
  Range<int32_t> ints;
  Range<int32_t> points;
  for (const json& element : array) {
    auto params = std::make_shared<NLEFilterParams>();
    const std::string name = TextOr(element, "NAME", "");
    const std::string alias = TextOr(element, "ALIAS", name);
    const std::string type = TextOr(element, "TYPE", "");
    if (type == "float") {
      floats.ReadInto(element, ParamKind::kFloat, *params);
    } else if (type == "int") {
      ints.ReadInto(element, ParamKind::kInt32, *params);
    } else if (type == "point") {
      points.ReadInto(element, ParamKind::kInt32, *params);
    } else if (type == "string") {
      params->SetKind(ParamKind::kText);
    } else {
      continue;
    }
    params->SetUiType(UiTypeOfWord(TextOr(element, "UIType", "")));
    params->SetAlias(alias.c_str());
    params->SetName(name.c_str());
    const int32_t index = info->GetParamCount();
    info->AddParam(index, std::move(params));
    info->SetParamCount(index + 1);
  }
}

}  // namespace vizcore
