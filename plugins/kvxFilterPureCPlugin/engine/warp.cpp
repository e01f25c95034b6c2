// The warp range: code -> routine.
#include <array>
#include <cstring>

#include "engine/warp_routines.h"

namespace {

constexpr uint32_t kFirst = code::kOil;
constexpr size_t kCodes = code::kExplosion + 2 - kFirst;

std::array<WarpRoutine, kCodes> CollectRoutines() {
  std::array<WarpRoutine, kCodes> byCode{};
  for (const auto group : {DisplaceRoutines(), MapRoutines(), DropRoutines(), FlameRoutines(), EdgeRoutines(),
                           BoxBlurRoutines(), TiltShiftRoutines(), ExplosionRoutines()}) {
    for (const WarpRoutine& routine : group) byCode[routine.code - kFirst] = routine;
  }
  return byCode;
}

const WarpRoutine& RoutineOf(uint32_t code) {
  static const std::array<WarpRoutine, kCodes> routines = CollectRoutines();
  return routines[code - kFirst];
}

}  // namespace

bool IsDirectWarp(uint32_t code) {
  return code >= kFirst && code < kFirst + kCodes && RoutineOf(code).writesEveryPixel;
}

int32_t EngineRunWarp(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  EngineImage copy = from;
  if (from.pixels == image.pixels) {
    copy.pixels = EnsureWorkCopy(record, image.totalBytes);
    if (!copy.pixels) return kEngineNoScratch;
    std::memcpy(copy.pixels, image.pixels, static_cast<size_t>(image.totalBytes));
  }
  const WarpRoutine& routine = RoutineOf(record.code);
  return routine.run ? routine.run(record, image, copy) : kEngineFailed;
}
