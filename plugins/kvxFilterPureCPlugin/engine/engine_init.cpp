// Defaults of a fresh record, by code.
#include <algorithm>

#include "engine/engine_internal.h"

namespace {

// Which parameter groups a code reads. A declaration for whoever shows controls; no routine looks at it.
uint32_t ParamMaskOf(uint32_t code) {
  switch (code) {
    case code::kAmNoise:
    case code::kMosaic:
    case code::kAmSplash:
    case code::kFilmGrain:
    case code::kExposure:
    case code::kBinary:
    case code::kOil:
    case code::kSketch:
    case code::kNeon:
    case code::kRandomWalk:
    case code::kRipple:
    case code::kRaindropWarp:
      return 1;
    case code::kSunshine:
      return 7;
    case code::kOneColor:
    case code::kTint:
      return 16;
    case code::kSnow:
    case code::kBubble:
      return 35;
    case code::kGetColor:
      return 67;
    case code::kTunnel:
      return 6;
    case code::kEnlarge:
    case code::kNarrow:
    case code::kWhirl:
      return 4;
    case code::kFlames:
      return 33;
    case code::kTiltShift:
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
    {code::kTint, 255, 255, 0},           {code::kStencilRed, 36, 55, 225},      {code::kStencilGreen, 70, 235, 50},
    {code::kStencilBlue, 235, 70, 40},    {code::kLinearBurnFirst, 70, 40, 245}, {code::kLinearBurn, 36, 155, 205},
    {code::kLinearBurnLast, 143, 81, 40},
};

struct LevelDefault {
  uint32_t first, last;
  int32_t level;
};
constexpr LevelDefault kLevelDefaults[] = {
    {code::kOverlayLast, code::kOverlayLast, 100},
    {code::kHardMix, code::kHardMixFullLast, 100},
    {code::kHardMixWeakFirst, code::kHardMixWeakLast, 60},
    {code::kHardMixLast, code::kHardMixLast, 100},
    {code::kLinearPercent, code::kLinearPercent, 100},
    {code::kLinearPercentWeak, code::kLinearPercentWeak, 40},
    {code::kLinearPercentFullFirst, code::kLinearPercentLast, 100},
};

}  // namespace

int32_t EngineInitLook(EngineRecord& record) {
  const int32_t status = InitCommon(record);
  record.pointX = record.pointY = 50.0f;
  constexpr int32_t kQuadX[] = {0, 0, 100, 100};
  constexpr int32_t kQuadY[] = {0, 100, 100, 0};
  std::copy(std::begin(kQuadX), std::end(kQuadX), record.quadX);
  std::copy(std::begin(kQuadY), std::end(kQuadY), record.quadY);
  if (record.code == code::kGetColor) record.radius = 30;
  return status;
}

int32_t EngineInitWarp(EngineRecord& record) {
  const int32_t status = InitCommon(record);
  if (record.code == code::kTiltShift) {
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
  if (record.code == code::kTint) record.colorExtra = 128;
  if (record.code >= code::kAlphaGate && record.code <= code::kBlueGate)
    record.channel = static_cast<int32_t>(code::kBlueGate - record.code);
  return status;
}
