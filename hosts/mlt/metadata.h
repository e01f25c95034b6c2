// What MLT can tell of a filter before it makes one.
#ifndef KVX_HOSTS_MLT_METADATA_H_
#define KVX_HOSTS_MLT_METADATA_H_

#include <framework/mlt.h>

#include "hostkit/effects.h"

namespace kvx {

// The caller closes it.
mlt_properties MakeMetadata(const EffectInfo& effect);

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_METADATA_H_
