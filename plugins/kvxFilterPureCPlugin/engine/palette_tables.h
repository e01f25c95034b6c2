// Colours that a picture is reduced to.
#ifndef KVX_ENGINE_PALETTE_TABLES_H_
#define KVX_ENGINE_PALETTE_TABLES_H_

#include <cstdint>

struct PaletteColor {
  uint8_t red, green, blue;
};

extern const PaletteColor kTcvgaPalette[16];
extern const PaletteColor kCartoonPalette[97];

#endif  // KVX_ENGINE_PALETTE_TABLES_H_
