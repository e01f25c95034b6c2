// Declares a filter and its parameters to the host.
#ifndef KVX_BOUNDARY_REGISTER_EFFECT_H_
#define KVX_BOUNDARY_REGISTER_EFFECT_H_

#include <memory>

#include "catalogue/description/filter_info.h"
#include "kvx/host.h"

namespace vizcore {

// Declares the registry's description of `info`'s GUID, which need not be `info` itself. 0, or 2 if the registry has
// none.
int32_t RegisterEffect(const std::shared_ptr<NLEFilterInfo>& info, HostEffectRegistrar& registrar);

}  // namespace vizcore

#endif  // KVX_BOUNDARY_REGISTER_EFFECT_H_
