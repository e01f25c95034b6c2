// The opacity of an effect: its result over the source frame.
#ifndef KVX_RUNTIME_ALPHA_BLEND_H_
#define KVX_RUNTIME_ALPHA_BLEND_H_

#include <cstdint>

namespace vizcore {

// Writes `top` over `bottom` into `out`, which may be `top`, with opacity `alpha` from 0 to 255 (more counts as 255).
// All are frames of 32-bit pixels of `width` by `height` with steps in bytes.
//
// Colours come out multiplied by top's alpha, also at 255: nothing divides by the resulting alpha. Which pixels of a
// row go by the scalar and which by the block form depends on the address of the row in `out`, and the two forms differ
// in the last bit: both are meant.
void AlphaBlendFrame(uint8_t* out, int32_t outStep, const uint8_t* top, int32_t topStep, const uint8_t* bottom,
                     int32_t bottomStep, int32_t alpha, int32_t width, int32_t height);

}  // namespace vizcore

#endif  // KVX_RUNTIME_ALPHA_BLEND_H_
