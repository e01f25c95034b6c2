// What the routines of the warp range share.
#ifndef KVX_ENGINE_WARP_ROUTINES_H_
#define KVX_ENGINE_WARP_ROUTINES_H_

#include <cstdint>
#include <span>

#include "engine/engine_internal.h"
#include "framework/numeric.h"

struct WarpRoutine {
  uint32_t code;
  // `copy` is the frame as it came, apart from `frame`, which holds the same pixels.
  int32_t (*run)(EngineRecord& record, const EngineImage& frame, const EngineImage& copy);
  bool writesEveryPixel = false;  // and does not read the frame before
};

// The routine groups, a file each.
std::span<const WarpRoutine> DisplaceRoutines();
std::span<const WarpRoutine> MapRoutines();
std::span<const WarpRoutine> DropRoutines();
std::span<const WarpRoutine> FlameRoutines();
std::span<const WarpRoutine> EdgeRoutines();
std::span<const WarpRoutine> BoxBlurRoutines();
std::span<const WarpRoutine> TiltShiftRoutines();
std::span<const WarpRoutine> ExplosionRoutines();

inline int32_t Percent(int32_t value, int32_t low = 0) {
  return ClampInt(value, low, 100);
}

// The record's position on the frame.
inline int32_t CenterX(const EngineRecord& record, const EngineImage& frame) {
  return Percent(record.posX) * frame.width / 100;
}
inline int32_t CenterY(const EngineRecord& record, const EngineImage& frame) {
  return Percent(record.posY) * frame.height / 100;
}

#endif  // KVX_ENGINE_WARP_ROUTINES_H_
