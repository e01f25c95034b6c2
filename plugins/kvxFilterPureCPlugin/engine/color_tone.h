// Tone steps of the colour looks that composite looks use again.
#ifndef KVX_ENGINE_COLOR_TONE_H_
#define KVX_ENGINE_COLOR_TONE_H_

#include "engine/curve.h"
#include "engine/engine.h"

// A sine around 128; `n` is clamped to 0..100. And B, G and R through it: `from` may be `image`.
Curve SineContrastCurve(int32_t n);
void SineContrast(const EngineImage& from, const EngineImage& image, int32_t n);

// Warmer above 50, colder below.
CurveSet TemperatureCurves(int32_t level);

// The curves of the cross process look.
CurveSet CrossProcessCurves();

#endif  // KVX_ENGINE_COLOR_TONE_H_
