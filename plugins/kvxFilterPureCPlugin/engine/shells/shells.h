// Processors that are thin shells over the engine.
#ifndef KVX_ENGINE_SHELLS_SHELLS_H_
#define KVX_ENGINE_SHELLS_SHELLS_H_

#include "framework/effect_row.h"

// The shell of this effect; null for an effect that has none.
CBaseFilterProc* MakeEngineShell(const EffectRow& row, int32_t width, int32_t height);

#endif  // KVX_ENGINE_SHELLS_SHELLS_H_
