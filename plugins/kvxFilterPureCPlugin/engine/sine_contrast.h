// A contrast curve that other looks end with.
#ifndef KVX_ENGINE_SINE_CONTRAST_H_
#define KVX_ENGINE_SINE_CONTRAST_H_

#include "engine.h"

// B, G and R through a sine around 128; `n` is clamped to 0..100.
void SineContrast(const EngineImage& image, int32_t n);

#endif  // KVX_ENGINE_SINE_CONTRAST_H_
