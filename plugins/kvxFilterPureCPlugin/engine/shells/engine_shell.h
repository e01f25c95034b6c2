// Processors that are thin shells over the engine: a table row each, no code of their own.
#ifndef KVX_ENGINE_SHELLS_ENGINE_SHELL_H_
#define KVX_ENGINE_SHELLS_ENGINE_SHELL_H_

#include <cstdint>
#include <span>

#include "engine/engine.h"
#include "framework/frame.h"
#include "framework/params.h"
#include "kvx/processor.h"

// What a shell does with its parameters before the engine runs.
enum class ShellGroup {
  kNone,         // A: nothing
  kLevel,        // B: level
  kScaledLevel,  // C: level, scaled to the frame's width
  kStar,         // D: level and the frame rate
  kParticles,    // E: level, direction, radius and the frame rate
  kPoint,        // F: point and radius
  kColor,        // G: colour
  kSpot,         // H: position, radius, level
  kVignette,     // I: level, after the copy
  kBadSignal,    // J: frame rate and frame number, after the copy
  kMapLevel,     // K: position and level; a change makes the map new
  kDirected,     // L: level and direction
  kDrop,         // M: position and level
  kMapRadius,    // N: position and radius; a change makes the map new
};

// The record's field that a parameter reports as its default, or none.
enum class ShellField {
  kConstant,
  kLevel,
  kRadius,
  kPosX,
  kPosY,
  kPointX,
  kPointY,
  kColorRed,
  kColorGreen,
  kColorBlue,
  kDirection,
  kRectLeft,
  kRectTop,
  kRectRight,
  kRectBottom,
};

// Stands for the frame's width or height as a maximum.
inline constexpr double kFrameWidth = -1;
inline constexpr double kFrameHeight = -2;

struct ShellParam {
  ParamRow row;
  ShellField field;
  double constant = 0;
};

struct ShellRow {
  int32_t effectId;
  const char* className;
  uint32_t code;
  ShellGroup group;
  std::span<const ShellParam> params;
};

std::span<const ShellRow> ShellRows();

class EngineShell : public CBaseFilterProc {
 public:
  EngineShell(const ShellRow& row, int32_t frameWidth, int32_t frameHeight);
  ~EngineShell() override;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void TakeParams(const ParamValueArray* params);
  void TakeLateParams(const ParamValueArray* params);
  double DefaultOf(const ShellParam& param) const;

  const ShellRow& row_;
  EngineRecord* record_ = nullptr;
};

#endif  // KVX_ENGINE_SHELLS_ENGINE_SHELL_H_
