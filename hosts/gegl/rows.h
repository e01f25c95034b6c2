// The operations, as data.
#ifndef KVX_HOSTS_GEGL_ROWS_H_
#define KVX_HOSTS_GEGL_ROWS_H_

#include <string>
#include <vector>

#include "hostkit/effects.h"
#include "hostkit/param_track.h"
#include "hosts/gegl/properties.h"

namespace kvx {

struct OperationRow {
  EffectInfo effect;
  std::string name;         // "kvx:warm"
  std::string title;        // "kvx: Warm", unique
  std::string categories;   // with ':' between them
  std::string description;  // family, and whether the effect moves or is random
  std::vector<Property> properties;
  ParamTracks start;  // the values of a frame where nothing is set
};

// One for each described effect, made at the first call and kept for ever. A damaged description is told once, and the
// built-in one serves.
const std::vector<OperationRow>& Rows();

}  // namespace kvx

#endif  // KVX_HOSTS_GEGL_ROWS_H_
