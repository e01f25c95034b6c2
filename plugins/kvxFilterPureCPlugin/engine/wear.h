// The wear of a film that has run often: dust, hairs, scratches.
#ifndef KVX_ENGINE_WEAR_H_
#define KVX_ENGINE_WEAR_H_

#include <cstdint>

#include "engine/engine.h"
#include "framework/random.h"

// Draws three numbers for each spot, then two for each scratch.
void AddWear(const EngineImage& image, int32_t spots, int32_t scratches, Rand& rand);

#endif  // KVX_ENGINE_WEAR_H_
