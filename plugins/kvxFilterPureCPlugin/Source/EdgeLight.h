// The light of edges: a scalar definition, and a vector form that gives the same bytes.
#ifndef KVX_SOURCE_EDGE_LIGHT_H_
#define KVX_SOURCE_EDGE_LIGHT_H_

#include <cstdint>

struct EdgeLight {
  float limit;  // of the strength of an edge
  double upscale;
  double redscale;
};

// The strength of an edge is (least + greatest) / 2 of bytes 0 to 2 of `edges`. Above the limit a pixel's luminance
// rises by strength * upscale, within a byte; otherwise, with redscale above 0, it is multiplied by 1 - redscale, and
// without, it becomes the strength. With no redscale, pixels whose new luminance as a byte is not above the limit stay;
// all others take the colour that belongs to it. Byte 3 is copied.
void RelightRow(const uint8_t* in, const uint8_t* edges, uint8_t* out, int32_t count, const EdgeLight& light);
void RelightRowScalar(const uint8_t* in, const uint8_t* edges, uint8_t* out, int32_t count, const EdgeLight& light);

#endif  // KVX_SOURCE_EDGE_LIGHT_H_
