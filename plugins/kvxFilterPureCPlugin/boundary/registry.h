// The registry: every filter that the catalogue offers.
#ifndef KVX_BOUNDARY_REGISTRY_H_
#define KVX_BOUNDARY_REGISTRY_H_

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "catalogue/description/filter_info.h"
#include "runtime/pure_c_filter.h"

namespace vizcore {

// One instance per process, between `StartupKVX` and `ShutdownKVX`.
class PureCFilter {
 public:
  // Makes the instance at the first call. Null after `Destroy`: the registry does not come back within one load of the
  // library.
  static PureCFilter* GetInstance();
  static void Destroy();

  // Reads the catalogue. Does nothing without a Host Util Suite. If memory runs out the registry is empty afterwards.
  void LoadFilters();

  // Adds to the map, where a repeated GUID replaces, and to the list, where it stands again. A filter whose NAME equals
  // the GUID of a loaded one is left out.
  void AddFilterInfo(std::shared_ptr<NLEFilterInfo> info);

  // Empty if there is none.
  std::shared_ptr<NLEFilterInfo> GetNLEFilterInfoByName(const std::string& guid);

  // The list's element, in order of registration; empty beyond its end.
  std::shared_ptr<NLEFilterInfo> At(size_t index) const;

  // Number of distinct GUIDs, and length of the list.
  size_t Count() const { return byGuid_.size(); }
  size_t ListLength() const { return list_.size(); }

 private:
  std::map<std::string, std::shared_ptr<NLEFilterInfo>> byGuid_;
  std::vector<std::shared_ptr<NLEFilterInfo>> list_;
  std::mutex mutex_;
};

// A new filter for `guid`, or null. The caller owns it.
NLEPureCFilter* CreateFilterByName(const char* guid);

}  // namespace vizcore

#endif  // KVX_BOUNDARY_REGISTRY_H_
