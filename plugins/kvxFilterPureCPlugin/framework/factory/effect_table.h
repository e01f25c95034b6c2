// The one table of effects: the records that a host reads, the factory and the description for our hosts are made from
// it.
#ifndef KVX_FACTORY_EFFECT_TABLE_H_
#define KVX_FACTORY_EFFECT_TABLE_H_

#include <cstdint>
#include <span>

#include "framework/effect_row.h"

// The rows with a record, in the host's order, then those that only the factory serves.
std::span<const EffectRow> EffectRows();
std::span<const EffectRow> RecordRows();

// The same as a host reads them.
std::span<const EffectPluginInfo> Records();

// Null for an id that no row has.
const EffectRow* FindEffectRow(int32_t id);

// Ids that mean something to whoever runs the effect. An effect in such a range must be of the class named, and an
// effect of that class must have an id in the range.

// CTimeRelateFilter: rendered by the frame count, `Process` is never called.
constexpr bool IsTimeDrivenId(int32_t id) {
  return (id >= 366 && id <= 370) || (id >= 373 && id <= 1371);
}
// BGFCommon: at full opacity the frame stands as it is, without the blend.
constexpr bool IsBackgroundFillId(int32_t id) {
  return id >= 1374 && id <= 2372;
}

#endif  // KVX_FACTORY_EFFECT_TABLE_H_
