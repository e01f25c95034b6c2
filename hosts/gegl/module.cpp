// What GEGL calls.
#include <gegl-plugin.h>

#include <exception>

#include "hosts/gegl/operation.h"

#define KVX_GEGL_EXPORT extern "C" __attribute__((visibility("default")))

KVX_GEGL_EXPORT const GeglModuleInfo* gegl_module_query(GTypeModule*) {
  static const GeglModuleInfo info = {GEGL_MODULE_ABI_VERSION};
  return &info;
}

// GEGL registers, unloads and registers again.
KVX_GEGL_EXPORT gboolean gegl_module_register(GTypeModule* module) {
  try {
    for (const kvx::OperationRow& row : kvx::Rows()) kvx::RegisterOperation(module, row);
    return TRUE;
  } catch (const std::exception& error) {
    g_warning("no operations: %s", error.what());
    return FALSE;
  }
}
