// Rows of bytes, each moved up or down by an amount of its own.
#ifndef KVX_SOURCE_BYTE_OFFSETS_H_
#define KVX_SOURCE_BYTE_OFFSETS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// One offset per byte of a row of pixels.
using ByteOffsets = std::vector<int16_t>;

// Adds the offsets to a row; sums stay within 0 and 255.
inline void AddOffsets(const uint8_t* in, const ByteOffsets& offsets, uint8_t* out) {
  const int16_t* offset = offsets.data();
  const size_t count = offsets.size();  // out here: `out` might be where the vector keeps it
  for (size_t i = 0; i < count; ++i) {
    out[i] = static_cast<uint8_t>(std::clamp<int16_t>(static_cast<int16_t>(in[i] + offset[i]), 0, 255));
  }
}

#endif  // KVX_SOURCE_BYTE_OFFSETS_H_
