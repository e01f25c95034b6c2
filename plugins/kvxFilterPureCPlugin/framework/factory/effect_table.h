// The one table of effects: the records that a host reads and the factory are both made from it.
#ifndef KVX_FACTORY_EFFECT_TABLE_H_
#define KVX_FACTORY_EFFECT_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "kvx/processor.h"

// Makes the processor of effect `id`. Families whose members differ by data share one maker and look their data up by
// id.
using EffectMaker = CBaseFilterProc* (*)(int32_t id, int32_t width, int32_t height);

struct EffectRow {
  int32_t id;
  const char16_t* name;  // null for an effect that only the factory serves
  int32_t paramCount;    // parameters that the processor reports
  const char16_t* guid;
  EffectMaker make;  // null while the effect does not exist
};

inline constexpr size_t kRecordCount = 242;

// Rows 0 to kRecordCount - 1 are the records in the host's order; behind them stand the effects without a record.
std::span<const EffectRow> EffectRows();

// Null for an id that no row has.
const EffectRow* FindEffectRow(int32_t id);

#endif  // KVX_FACTORY_EFFECT_TABLE_H_
