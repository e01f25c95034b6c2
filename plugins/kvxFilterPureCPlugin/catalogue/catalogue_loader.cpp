#include "catalogue/catalogue_loader.h"

#include <tinyxml2.h>

#include <cstring>
#include <exception>
#include <optional>
#include <set>
#include <utility>

#include "catalogue/filter_parser.h"
#include "catalogue/json_text.h"
#include "framework/host_log.h"
#include "kvx/exports.h"
#include "platform/files.h"
#include "platform/text.h"

namespace vizcore {

namespace {

using nlohmann::json;

std::string g_resourceRoot;

constexpr size_t kConfigFileNameSize = 128;

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

bool IsFrameRatioDirectory(const std::string& name) {
  return Contains(name, "2_") || Contains(name, "3_") || Contains(name, "4_") || Contains(name, "16_");
}

// Reads root + "/kvx_effect/material/PureCFilter.conf"; false, with `out` null, if it is absent or not JSON.
bool LoadJsonFromPath(HostUtilSuite* host, const std::string& root, json& out) {
  g_resourceRoot = root;
  const std::string path = root + "/kvx_effect/material/PureCFilter.conf";
  const std::optional<std::string> text = ReadFile(path);
  if (!text) {
    Log(host, kHostLogError, "[LoadJsonFromPath]Open PureCFilterConf Failed: %s", path.c_str());
    return false;
  }
  if (!ParseJson(*text, out)) {
    Log(host, kHostLogError, "[LoadJsonFromPath]Read PureCFilterConf Failed: %s", path.c_str());
    return false;
  }
  Log(host, kHostLogInfo, "[LoadJsonFromPath]Load PureCFilterConf Success: %s", path.c_str());
  return true;
}

// The description in one configuration file; empty if the file is absent, not JSON or names no GUID. With
// `recordDataPath` the configuration goes to `array` too, with its directory as "DATAPATH".
std::shared_ptr<NLEFilterInfo> GetFilterInfoFromJson(HostUtilSuite* host, const std::string& path, json& array,
                                                     bool recordDataPath) {
  const size_t separator = path.find_last_of("\\/");
  const std::string dataPath = separator == std::string::npos ? std::string() : path.substr(0, separator + 1);
  const std::optional<std::string> text = ReadFile(path);
  if (!text) return nullptr;
  JsonTree tree;
  json& object = tree.value;
  ParseJson(*text, object);
  const json* parsed = &object;
  if (recordDataPath) {
    try {
      // The library's own way from null to an object or array leaves neither if memory runs out.
      if (object.is_null()) object = json::object();
      if (array.is_null()) array = json::array();
      object["DATAPATH"] = dataPath.substr(g_resourceRoot.size());
      // Moved, not copied: a copy of a deeply nested value would exhaust the stack.
      array.push_back(std::move(object));
      parsed = &array.back();
    } catch (const std::exception&) {
      Log(host, kHostLogError, "[GetFilterInfoFromJson]PureCFilterConf emplace back failed: %s", dataPath.c_str());
    }
  }
  return ParseFilterInfo(*parsed, dataPath);
}

// The text of Filter/GPUFilter/ConfigFile in a filter.xml, with its NUL. 1, or 0 if there is none that fits.
int32_t ReadConfigFileName(char (&out)[kConfigFileNameSize], const std::string& path) {
  const std::optional<std::string> text = ReadFile(path);
  if (!text) return 0;
  tinyxml2::XMLDocument document;
  if (document.Parse(text->data(), text->size()) != tinyxml2::XML_SUCCESS) return 0;
  const tinyxml2::XMLElement* element = nullptr;
  const tinyxml2::XMLNode* node = &document;
  for (const char* name : {"Filter", "GPUFilter", "ConfigFile"}) {
    element = node->FirstChildElement(name);
    if (!element) return 0;
    node = element;
  }
  const char* name = element->GetText();
  if (!name || std::strlen(name) >= sizeof out) return 0;
  std::strcpy(out, name);
  return 1;
}

// Walks a directory, subdirectories first, and appends the descriptions found to `infos`. With `recordDataPath` each
// configuration goes to `array` too. With `subsetOnly` only directories named like frame ratios are entered and no file
// counts.
struct Scan {
  HostUtilSuite* host;
  std::vector<std::shared_ptr<NLEFilterInfo>>& infos;
  json& array;
  bool recordDataPath;
  bool subsetOnly;
  std::set<DirectoryId> seen;  // by whatever links a directory is reached, it is walked once

  // 0 if a filter of the directory itself was added, 1 if not, 5 if the directory cannot be read or was seen before.
  int32_t Directory(const std::string& path);
};

int32_t Scan::Directory(const std::string& path) {
  const std::optional<DirectoryId> id = IdentifyDirectory(path);
  if (!id || !seen.insert(*id).second) return 5;
  const std::optional<std::vector<DirectoryEntry>> entries = ListDirectory(path);
  if (!entries) return 5;
  const std::string base = path + "/";
  std::string configFile;
  std::string xmlFile;
  for (const DirectoryEntry& entry : *entries) {
    if (entry.isDirectory) {
      if (!subsetOnly || IsFrameRatioDirectory(entry.name)) Directory(base + entry.name);
    } else if (subsetOnly) {
      continue;
    } else if (Contains(entry.name, ".conf")) {
      configFile = base + entry.name;
    } else if (Contains(entry.name, "filter.xml")) {
      xmlFile = base + entry.name;
    }
  }
  if (configFile.empty()) return 1;
  if (!xmlFile.empty()) {
    // The configuration file seen here is then only a marker: the XML file names the one that counts.
    char name[kConfigFileNameSize];
    if (!ReadConfigFileName(name, xmlFile)) return 1;
    configFile = base + name;
  }
  auto info = GetFilterInfoFromJson(host, configFile, array, recordDataPath);
  if (!info) return 1;
  infos.push_back(std::move(info));
  return 0;
}

}  // namespace

void LoadCatalogue(HostUtilSuite& host, const std::function<void(std::shared_ptr<NLEFilterInfo>)>& add) {
  char buffer[512] = "resources";
  host.GetHostPath(1, buffer, sizeof buffer);
  buffer[sizeof buffer - 1] = '\0';
  const std::string root = buffer;
  if (const auto material = WidenUtf8(root + "/kvx_effect/material")) SetMergeImagePath(material->c_str());

  JsonTree catalogue;
  if (LoadJsonFromPath(&host, root, catalogue.value)) {
    for (const json& element : catalogue.value) {
      if (!element.is_object() || !element.contains("DATAPATH")) continue;
      auto info = ParseFilterInfo(element, root + element.at("DATAPATH").get<std::string>());
      if (info) add(std::move(info));
    }
    return;
  }
  std::vector<std::shared_ptr<NLEFilterInfo>> infos;
  JsonTree array;
  Scan{&host, infos, array.value, true, false, {}}.Directory(root + "/kvx_effect/nle_default");
  for (auto& info : infos) add(std::move(info));
}

std::vector<std::shared_ptr<NLEFilterInfo>> ScanFilterDirectory(HostUtilSuite* host, const std::string& path) {
  std::vector<std::shared_ptr<NLEFilterInfo>> infos;
  JsonTree array;
  Scan{host, infos, array.value, false, false, {}}.Directory(path);
  return infos;
}

}  // namespace vizcore
