// Defaults of a fresh record, by code.
#include <algorithm>

#include "engine/engine_internal.h"

namespace {

// Which parameter groups a code reads. A declaration for whoever shows controls; no routine looks at it.
uint32_t ParamMaskOf(uint32_t code) {
  switch (code) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 12:
    case 1025:
    case 1028:
    case 1029:
    case 1030:
    case 1031:
    case 1036:
      return 1;
    case 24:
      return 7;
    case 29:
    case 2049:
      return 16;
    case 61:
    case 62:
      return 35;
    case 63:
      return 67;
    case 1032:
      return 6;
    case 1033:
    case 1034:
    case 1035:
      return 4;
    case 1037:
      return 33;
    case 1041:
      return 8;
    default:
      return 0;
  }
}

// Gives -1 for a code without values of its own.
int32_t InitCommon(EngineRecord& record) {
  record.level = record.radius = record.posX = record.posY = 50;
  record.rectRight = record.rectBottom = 100;
  record.dirtyFlags = kDirtyAll;
  record.paramMask = ParamMaskOf(record.code);
  return record.paramMask ? kEngineDone : kEngineFailed;
}

struct ColorDefault {
  uint32_t code;
  uint8_t blue, green, red;
};
constexpr ColorDefault kColorDefaults[] = {
    {2049, 255, 255, 0}, {2064, 36, 55, 225},  {2065, 70, 235, 50}, {2066, 235, 70, 40},
    {2187, 70, 40, 245}, {2188, 36, 155, 205}, {2189, 143, 81, 40},
};

struct LevelDefault {
  uint32_t first, last;
  int32_t level;
};
constexpr LevelDefault kLevelDefaults[] = {
    {2078, 2078, 100}, {2081, 2089, 100}, {2090, 2092, 60},  {2093, 2093, 100},
    {2177, 2177, 100}, {2178, 2178, 40},  {2180, 2184, 100},
};

}  // namespace

int32_t EngineInitLook(EngineRecord& record) {
  const int32_t status = InitCommon(record);
  record.pointX = record.pointY = 50.0f;
  constexpr int32_t kQuadX[] = {0, 0, 100, 100};
  constexpr int32_t kQuadY[] = {0, 100, 100, 0};
  std::copy(std::begin(kQuadX), std::end(kQuadX), record.quadX);
  std::copy(std::begin(kQuadY), std::end(kQuadY), record.quadY);
  if (record.code == 63) record.radius = 30;
  return status;
}

int32_t EngineInitWarp(EngineRecord& record) {
  const int32_t status = InitCommon(record);
  if (record.code == 1041) {
    record.rectTop = 40;
    record.rectBottom = 60;
  }
  return status;
}

int32_t EngineInitMerge(EngineRecord& record) {
  const int32_t status = InitCommon(record);
  for (const ColorDefault& row : kColorDefaults) {
    if (row.code != record.code) continue;
    record.colorBlue = row.blue;
    record.colorGreen = row.green;
    record.colorRed = row.red;
  }
  for (const LevelDefault& row : kLevelDefaults) {
    if (record.code >= row.first && record.code <= row.last) record.level = row.level;
  }
  if (record.code == 2049) record.colorExtra = 128;
  if (record.code >= 2067 && record.code <= 2070) record.channel = static_cast<int32_t>(2070 - record.code);
  return status;
}
