// The seventeen background fills: one class, a row of data each.
#ifndef KVX_SOURCE_BACKGROUND_FILLS_H_
#define KVX_SOURCE_BACKGROUND_FILLS_H_

#include "framework/effect_row.h"

// The fill of this effect; null for an effect that is none.
CBaseFilterProc* MakeBackgroundFill(const EffectRow& effect, int32_t width, int32_t height);

#endif  // KVX_SOURCE_BACKGROUND_FILLS_H_
