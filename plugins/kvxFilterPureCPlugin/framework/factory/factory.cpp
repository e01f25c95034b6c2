#include <exception>

#include "framework/factory/effect_table.h"
#include "kvx/exports.h"

int32_t GetEffectsCounts() {
  return static_cast<int32_t>(Records().size());
}

const EffectPluginInfo* GetEffectPluginsInfo(uint32_t index) {
  return index < Records().size() ? &Records()[index] : nullptr;
}

int32_t FindEffectByID(int32_t id, uint32_t width, uint32_t height, CBaseFilterProc** processor) {
  const EffectRow* row = FindEffectRow(id);
  if (!processor || !row) return 0;
  try {
    *processor = row->make(*row, static_cast<int32_t>(width), static_cast<int32_t>(height));
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

int32_t GetEffectPixFormat() {
  return 0;
}
