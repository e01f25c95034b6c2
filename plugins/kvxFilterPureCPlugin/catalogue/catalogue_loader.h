// Files -> filter descriptions.
#ifndef KVX_CATALOGUE_CATALOGUE_LOADER_H_
#define KVX_CATALOGUE_CATALOGUE_LOADER_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/description/filter_info.h"
#include "kvx/host.h"

namespace vizcore {

// Reads the catalogue below the host's resource root, either as one file or, failing that, as a directory tree, and
// hands every description to `add`. Also tells the processors where their material images lie. Errors of a value of a
// wrong type pass through.
void LoadCatalogue(HostUtilSuite& host, const std::function<void(std::shared_ptr<NLEFilterInfo>)>& add);

// The descriptions found in one directory, those of subdirectories first.
std::vector<std::shared_ptr<NLEFilterInfo>> ScanFilterDirectory(HostUtilSuite* host, const std::string& path);

}  // namespace vizcore

#endif  // KVX_CATALOGUE_CATALOGUE_LOADER_H_
