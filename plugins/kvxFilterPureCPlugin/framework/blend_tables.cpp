#include "framework/blend_tables.h"

#include <cmath>

BlendTables::BlendTables() {
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      multiply[a][b] = static_cast<uint8_t>(std::lround(a * b / 255.0));
      screen[a][b] = static_cast<uint8_t>(255 - (((255 - a) * (255 - b)) >> 8));
    }
  }
}

const BlendTables& BlendTables::Get() {
  static const BlendTables tables;
  return tables;
}
