// A box blur that works every second pixel and means the others.
#ifndef KVX_ENGINE_HALF_BOX_H_
#define KVX_ENGINE_HALF_BOX_H_

#include <cstdint>

#include "engine/engine.h"

// Blurs the colours of `image`; alpha stays. `rows` is scratch of the image's bytes, `sums` of a number and `means` of
// a byte for every byte of a row of 4 * width.
void HalfBoxBlur(const EngineImage& image, uint8_t* rows, int32_t radius, int32_t* sums, uint8_t* means);

#endif  // KVX_ENGINE_HALF_BOX_H_
