// Descriptions meet the effect table here.
#ifndef KVX_CATALOGUE_FILTER_PROBE_H_
#define KVX_CATALOGUE_FILTER_PROBE_H_

#include <memory>

#include "catalogue/description/filter_info.h"
#include "kvx/host.h"
#include "runtime/pure_c_filter.h"

namespace vizcore {

struct FilterProbe {
  bool exists = false;                     // the GUID has an effect, and the effect can be made
  std::unique_ptr<NLEPureCFilter> filter;  // only if creation was asked for
};

// Looks the GUID up in the effect table and proves, with a 1 by 1 processor, that the effect exists. Sets the
// description's markers. `host` may be null.
FilterProbe CreatePureCFilterFromInfo(HostUtilSuite* host, const std::shared_ptr<NLEFilterInfo>& info, bool create);

}  // namespace vizcore

#endif  // KVX_CATALOGUE_FILTER_PROBE_H_
