#include <array>
#include <new>

#include "effect_table.h"
#include "kvx/exports.h"

namespace {

template <size_t Size>
void CopyText(char16_t (&out)[Size], const char16_t* text) {
  for (size_t i = 0; i < Size - 1 && text[i]; ++i) out[i] = text[i];
}

std::array<EffectPluginInfo, kRecordCount> MakeRecords() {
  std::array<EffectPluginInfo, kRecordCount> records{};
  for (size_t i = 0; i < kRecordCount; ++i) {
    const EffectRow& row = EffectRows()[i];
    records[i].effectId = row.id;
    records[i].paramCount = row.paramCount;
    CopyText(records[i].name, row.name);
    CopyText(records[i].guid, row.guid);
  }
  return records;
}

}  // namespace

int32_t GetEffectsCounts() {
  return kRecordCount;
}

const EffectPluginInfo* GetEffectPluginsInfo(uint32_t index) {
  static const std::array<EffectPluginInfo, kRecordCount> records = MakeRecords();
  return index < records.size() ? &records[index] : nullptr;
}

int32_t FindEffectByID(int32_t id, uint32_t width, uint32_t height, CBaseFilterProc** processor) {
  const EffectRow* row = FindEffectRow(id);
  if (!processor || !row || !row->make) return 0;
  try {
    *processor = row->make(id, static_cast<int32_t>(width), static_cast<int32_t>(height));
    return 1;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

int32_t GetEffectPixFormat() {
  return 0;
}
