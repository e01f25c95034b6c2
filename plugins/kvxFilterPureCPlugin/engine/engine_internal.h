// What the engine's routine groups share.
#ifndef KVX_ENGINE_ENGINE_INTERNAL_H_
#define KVX_ENGINE_ENGINE_INTERNAL_H_

#include <cstdint>
#include <cstring>
#include <span>

#include "engine/engine.h"
#include "framework/parallel.h"
#include "framework/pixel_kernels.h"
#include "framework/pixels.h"

// Index -256 to 511 gives 0 to 255.
extern const uint8_t* const clampTable;
inline uint8_t Clamp(int32_t x) {
  return clampTable[x];
}

// 1024 bytes of noise, drawn when the first record is created; index with a value masked by 0x3FF.
extern uint8_t randomTable[1024];

// The buffer if it holds `size` bytes, otherwise a new one of that size, or null. Buffers never shrink.
uint8_t* EnsureWorkCopy(EngineRecord& record, int32_t size);
uint8_t* EnsureSourceCopy(EngineRecord& record, int32_t size);
// A new buffer also sets `flags` in dirtyFlags.
uint8_t* EnsureTable(EngineRecord& record, int32_t size, uint32_t flags);

// Defaults and run of each range of codes. An initialiser's result is ignored by EngineCreate.
int32_t EngineInitLook(EngineRecord& record);
int32_t EngineInitWarp(EngineRecord& record);
int32_t EngineInitMerge(EngineRecord& record);
// `from` is the picture as it came. `image` is the same, or another that holds a copy; direct routines do not need
// the copy.
int32_t EngineRunLook(EngineRecord& record, const EngineImage& from, const EngineImage& image);
int32_t EngineRunWarp(EngineRecord& record, const EngineImage& from, const EngineImage& image);
int32_t EngineRunMerge(EngineRecord& record, const EngineImage& from, const EngineImage& image,
                       const EngineImage* second);
bool IsDirectLook(uint32_t code);
bool IsDirectWarp(uint32_t code);
bool IsDirectMerge(uint32_t code);

// A look that writes every pixel of `image`, alpha included, from those of `from`; both may be the same.
struct DirectLook {
  uint32_t code;
  int32_t (*run)(EngineRecord& record, const EngineImage& from, const EngineImage& image);
};

// A look that works in place, and whether unmodified copies of the image must stand in workCopy and sourceCopy before
// it runs.
struct LookRoutine {
  uint32_t code;
  int32_t (*run)(EngineRecord& record, const EngineImage& image);
  bool prepares = false;
};

// The routine groups, a file each.
std::span<const DirectLook> ColorToneLooks();
std::span<const DirectLook> FilmWearLooks();
std::span<const DirectLook> PaneLooks();
std::span<const DirectLook> CompositeLooks();
std::span<const LookRoutine> FilmWearRoutines();
std::span<const LookRoutine> CompositeRoutines();
std::span<const LookRoutine> PaneRoutines();

using Curve = ByteTable;

// The grey forms as weights.
inline constexpr GrayWeights kLuma255 = {29, 150, 76, 255, 1, 8};
inline constexpr GrayWeights kLuma4 = {1, 2, 1, 0, 1, 2};
inline constexpr GrayWeights kLuma1024 = {117, 601, 306, 512, 1, 10};

inline void SetGray(uint8_t* p, uint8_t gray) {
  p[0] = p[1] = p[2] = gray;
}

// `perRow` gets every row's number and address; the rows of a large image on several threads, so it may not change
// what it shares with itself.
template <typename PerRow>
void ForEachRow(const EngineImage& image, PerRow perRow) {
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) perRow(y, image.Row(y));
  });
}

// The same for a direct look: each row of `image` is a copy of that of `from`.
template <typename PerRow>
void ForEachCopiedRow(const EngineImage& from, const EngineImage& image, PerRow perRow) {
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      uint8_t* row = image.Row(y);
      if (from.pixels != image.pixels) std::memcpy(row, from.Row(y), static_cast<size_t>(image.width) * 4);
      perRow(y, row);
    }
  });
}

// `perPixel` gets the address of every pixel, rows as above.
template <typename PerPixel>
void ForEachPixel(const EngineImage& image, PerPixel perPixel) {
  const int32_t width = image.width;
  ForEachRow(image, [=](int32_t, uint8_t* p) {
    for (int32_t x = 0; x < width; ++x, p += 4) perPixel(p);
  });
}

// Every pixel as a word 0xAARRGGBB through `map`. In these passes `from` may be `image`.
template <typename Map>
void MapWords(const EngineImage& from, const EngineImage& image, Map map) {
  const int32_t width = image.width;
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* in = from.Row(y);
    uint8_t* out = image.Row(y);
#pragma GCC ivdep
    for (int32_t x = 0; x < width; ++x) {
      StorePixel(out + 4 * x, map(LoadPixel(in + 4 * x)));
    }
  }
}

// Each of B, G and R through its own table; alpha as in `from`.
void MapChannels(const EngineImage& from, const EngineImage& image, const uint8_t* blue, const uint8_t* green,
                 const uint8_t* red);

// B, G and R become three functions of the pixel's grey; alpha as in `from`.
void MapGray(const EngineImage& from, const EngineImage& image, const GrayWeights& weights, const Curve& blue,
             const Curve& green, const Curve& red);

#endif  // KVX_ENGINE_ENGINE_INTERNAL_H_
