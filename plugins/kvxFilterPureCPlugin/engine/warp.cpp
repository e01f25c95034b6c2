// The warp range: code -> routine.
#include <array>
#include <cstring>

#include "warp_routines.h"

namespace {

constexpr uint32_t kFirst = 1025;
constexpr size_t kCodes = 19;
using Run = decltype(WarpRoutine::run);

std::array<Run, kCodes> CollectRoutines() {
  std::array<Run, kCodes> byCode{};
  for (const auto group : {DisplaceRoutines(), MapRoutines(), DropRoutines(), FlameRoutines(), EdgeRoutines(),
                           BoxBlurRoutines(), TiltShiftRoutines(), ExplosionRoutines()}) {
    for (const WarpRoutine& routine : group) byCode[routine.code - kFirst] = routine.run;
  }
  return byCode;
}

}  // namespace

int32_t EngineRunWarp(EngineRecord& record, const EngineImage& image) {
  static const std::array<Run, kCodes> routines = CollectRoutines();
  uint8_t* work = EnsureWorkCopy(record, image.totalBytes);
  if (!work) return kEngineNoScratch;
  std::memcpy(work, image.pixels, static_cast<size_t>(image.totalBytes));
  const Run run = routines[record.code - kFirst];
  if (!run) return kEngineFailed;
  EngineImage copy = image;
  copy.pixels = work;
  return run(record, image, copy);
}
