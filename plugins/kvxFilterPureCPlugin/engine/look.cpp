// The look range: code -> routine.
#include <array>
#include <cstring>

#include "engine_internal.h"

namespace {

constexpr size_t kLookCodes = 98;

std::array<LookRoutine, kLookCodes> CollectRoutines() {
  std::array<LookRoutine, kLookCodes> byCode{};
  for (const auto group : {ColorToneRoutines(), FilmWearRoutines(), CompositeRoutines(), PaneRoutines()}) {
    for (const LookRoutine& routine : group) byCode[routine.code] = routine;
  }
  return byCode;
}

}  // namespace

int32_t EngineRunLook(EngineRecord& record, const EngineImage& image) {
  static const std::array<LookRoutine, kLookCodes> routines = CollectRoutines();
  const LookRoutine& routine = routines[record.code];
  if (!routine.run) return kEngineFailed;
  if (routine.prepares) {
    uint8_t* work = EnsureWorkCopy(record, image.totalBytes);
    uint8_t* source = EnsureSourceCopy(record, image.totalBytes);
    if (!work || !source) return kEngineNoScratch;
    std::memcpy(work, image.pixels, static_cast<size_t>(image.totalBytes));
    std::memcpy(source, image.pixels, static_cast<size_t>(image.totalBytes));
  }
  return routine.run(record, image);
}
