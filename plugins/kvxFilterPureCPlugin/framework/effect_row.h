// One row of the effect table: everything that is known of an effect beyond its code.
#ifndef KVX_FRAMEWORK_EFFECT_ROW_H_
#define KVX_FRAMEWORK_EFFECT_ROW_H_

#include <array>
#include <cstdint>

#include "kvx/processor.h"

// What an effect is listed under.
enum class Family {
  kTone,
  kColorLook,
  kComposite,
  kFilm,
  kBlurAndEdges,
  kWarp,
  kPanes,
  kLens,
  kTime,
  kParticles,
  kOverlay,
  kFill,
};

// What whoever renders many frames has to know. Bits.
enum Traits : uint32_t {
  kPlain = 0,
  // A frame depends on earlier ones: the effect remembers, simulates, counts or draws. Frames must come in order.
  kOrdered = 1,
  // Draws from the random stream or asks the clock, so that two runs differ.
  kRandom = 2,
  // The caller's source comes back changed.
  kWritesSource = 4,
  // Leaves bytes of the destination as they were, at some values, sizes or without its material.
  kLeavesPixels = 8,
  // Takes the random stream in hand (a Rand lives in it) although its own frames do not show that: random effects
  // beside it do.
  kMovesStream = 16,
};
constexpr uint32_t operator|(Traits a, Traits b) {
  return static_cast<uint32_t>(a) | static_cast<uint32_t>(b);
}

struct EffectRow;

// Makes the processor of the effect in `row`. Families whose members differ by data share one maker.
using EffectMaker = CBaseFilterProc* (*)(const EffectRow& row, int32_t width, int32_t height);

struct EffectRow {
  int32_t id;
  const char16_t* name;  // null for an effect that only the factory serves
  int32_t paramCount;    // parameters that the processor reports
  const char16_t* guid;
  EffectMaker make;
  Family family;
  uint32_t traits = kPlain;
  // Files below "Merge" of the material directory. A screen shape's pair has the wide file first.
  std::array<const char*, 4> materials = {};
};

#endif  // KVX_FRAMEWORK_EFFECT_ROW_H_
