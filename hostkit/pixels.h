// Other orders of a pixel's bytes than the plug-in's, which is blue, green, red, alpha.
#ifndef KVX_HOSTKIT_PIXELS_H_
#define KVX_HOSTKIT_PIXELS_H_

#include <cstddef>
#include <cstdint>

namespace kvx {

// Each turns `pixels` pixels that lie one behind the other. `in` and `out` may be one buffer only where it is said.

// BGRA to RGBA and back. `in` may be `out`.
void SwapRedBlue(const uint8_t* in, uint8_t* out, size_t pixels);

// Alpha becomes 255.
void BgrToBgra(const uint8_t* in, uint8_t* out, size_t pixels);
void RgbToBgra(const uint8_t* in, uint8_t* out, size_t pixels);

// Alpha is dropped.
void BgraToBgr(const uint8_t* in, uint8_t* out, size_t pixels);
void BgraToRgb(const uint8_t* in, uint8_t* out, size_t pixels);

}  // namespace kvx

#endif  // KVX_HOSTKIT_PIXELS_H_
