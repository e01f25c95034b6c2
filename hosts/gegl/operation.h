// The class of operations that all effects share.
#ifndef KVX_HOSTS_GEGL_OPERATION_H_
#define KVX_HOSTS_GEGL_OPERATION_H_

#include <glib-object.h>

#include "hosts/gegl/rows.h"

namespace kvx {

// `row` must stay where it is for as long as the process lives. May be called again for the same row.
void RegisterOperation(GTypeModule* module, const OperationRow& row);

}  // namespace kvx

#endif  // KVX_HOSTS_GEGL_OPERATION_H_
