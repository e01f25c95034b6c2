// Files -> filter descriptions.
#ifndef KVX_CATALOGUE_CATALOGUE_LOADER_H_
#define KVX_CATALOGUE_CATALOGUE_LOADER_H_

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "filter_info.h"
#include "kvx/host.h"

namespace vizcore {

// Reads the catalogue below the host's resource root, either as one file or, failing that, as a directory tree, and
// hands every description that has an effect to `add`. Also tells the processors where their material images lie.
// Errors of a value of a wrong type pass through.
void LoadCatalogue(HostUtilSuite& host, const std::function<void(std::shared_ptr<NLEFilterInfo>)>& add);

// Reads root + "/kvx_effect/material/PureCFilter.conf"; false, with `out` null, if it is absent or not JSON.
bool LoadJsonFromPath(HostUtilSuite* host, const std::string& root, nlohmann::json& out);

// Walks one directory, subdirectories first, and appends the descriptions found to `infos`. Gives 0 if a filter of the
// directory itself was added, 1 if not, 5 if the directory cannot be read. With `recordDataPath` each configuration
// goes to `array` too, with its directory as "DATAPATH". With `subsetOnly` only directories named like frame ratios are
// entered and no file counts.
int32_t ScanFilterDirectory(HostUtilSuite* host, const std::string& path,
                            std::vector<std::shared_ptr<NLEFilterInfo>>& infos, nlohmann::json& array,
                            bool recordDataPath, bool subsetOnly);

// The description in one configuration file; empty if the file is absent, not JSON or names no GUID.
std::shared_ptr<NLEFilterInfo> GetFilterInfoFromJson(HostUtilSuite* host, const std::string& path,
                                                     nlohmann::json& array, bool recordDataPath);

inline constexpr size_t kConfigFileNameSize = 128;

// The text of Filter/GPUFilter/ConfigFile in a filter.xml, with its NUL. 1, or 0 if there is none that fits.
int32_t ReadConfigFileName(char (&out)[kConfigFileNameSize], const std::string& path);

}  // namespace vizcore

#endif  // KVX_CATALOGUE_CATALOGUE_LOADER_H_
