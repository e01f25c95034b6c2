// Makers of the effects that lay a picture of the material directory over the frame. The row names the files.
#ifndef KVX_SOURCE_OVERLAYS_H_
#define KVX_SOURCE_OVERLAYS_H_

#include "framework/effect_row.h"

CBaseFilterProc* MakeMergeFilter(const EffectRow& row, int32_t width, int32_t height);
CBaseFilterProc* MakeAspectMergeFilter(const EffectRow& row, int32_t width, int32_t height);
CBaseFilterProc* MakeSight(const EffectRow& row, int32_t width, int32_t height);
CBaseFilterProc* MakeNightGlassView(const EffectRow& row, int32_t width, int32_t height);
CBaseFilterProc* MakeCamRecorder(const EffectRow& row, int32_t width, int32_t height);
CBaseFilterProc* MakeGrungeRay(const EffectRow& row, int32_t width, int32_t height);

#endif  // KVX_SOURCE_OVERLAYS_H_
