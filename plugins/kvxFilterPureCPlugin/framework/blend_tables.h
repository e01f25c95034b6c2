// Byte tables that stand in for multiplications of two bytes. No effect of today reads them: blends are formulas.
#ifndef KVX_FRAMEWORK_BLEND_TABLES_H_
#define KVX_FRAMEWORK_BLEND_TABLES_H_

#include <cstdint>

struct BlendTables {
  uint8_t multiply[256][256];  // round(a * b / 255.0)
  uint8_t screen[256][256];    // 255 - (((255 - a) * (255 - b)) >> 8)

  // The one object of the process, built at first use.
  static const BlendTables& Get();

 private:
  BlendTables();
};

#endif  // KVX_FRAMEWORK_BLEND_TABLES_H_
