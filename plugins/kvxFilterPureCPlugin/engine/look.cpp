// The look range: code -> routine.
#include <array>
#include <cstring>

#include "engine/engine_internal.h"

namespace {

constexpr size_t kLookCodes = code::kKaleidoscope + 1;

struct Looks {
  std::array<LookRoutine, kLookCodes> inPlace{};
  std::array<DirectLook, kLookCodes> direct{};
};

const Looks& AllLooks() {
  static const Looks looks = [] {
    Looks all;
    for (const auto group : {FilmWearRoutines(), CompositeRoutines(), PaneRoutines()}) {
      for (const LookRoutine& look : group) all.inPlace[look.code] = look;
    }
    for (const auto group : {ColorToneLooks(), FilmWearLooks(), CompositeLooks(), PaneLooks()}) {
      for (const DirectLook& look : group) all.direct[look.code] = look;
    }
    return all;
  }();
  return looks;
}

}  // namespace

bool IsDirectLook(uint32_t code) {
  return code < kLookCodes && AllLooks().direct[code].run;
}

int32_t EngineRunLook(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  if (IsDirectLook(record.code)) return AllLooks().direct[record.code].run(record, from, image);
  const LookRoutine& look = AllLooks().inPlace[record.code];
  if (!look.run) return kEngineFailed;
  if (look.prepares) {
    uint8_t* work = EnsureWorkCopy(record, image.totalBytes);
    uint8_t* source = EnsureSourceCopy(record, image.totalBytes);
    if (!work || !source) return kEngineNoScratch;
    ForEachRow(image, [=, step = image.stepBytes](int32_t y, const uint8_t* row) {
      std::memcpy(work + ptrdiff_t{y} * step, row, static_cast<size_t>(step));
      std::memcpy(source + ptrdiff_t{y} * step, row, static_cast<size_t>(step));
    });
  }
  return look.run(record, image);
}
