// Lenses that are a map: a source position for every pixel, built once and read on every frame.
#ifndef KVX_SOURCE_LENS_MAP_H_
#define KVX_SOURCE_LENS_MAP_H_

#include <cstdint>

#include "framework/frame.h"
#include "framework/zeroed_array.h"

// In pixels; whole numbers are pixel centres.
struct SourcePosition {
  float x;
  float y;
};
using LensMap = ZeroedArray<SourcePosition>;

// Null without memory.
LensMap AllocateLensMap(int32_t width, int32_t height);

// How a position between pixels is read. Every way gives the pixel itself at a whole position.
enum class Sampling : int32_t {
  kNearest,      // halves away from zero
  kBilinear,     // 2 by 2
  kCubicSmooth,  // 4 by 4, cubic convolution with slope -1/2
  kCubicSharp,   // 4 by 4, cubic convolution with slope -1
  kSpline16,     // 4 by 4, natural spline
  kSpline36,     // 6 by 6, natural spline
  kLanczos,      // 8 by 8, windowed sinc
};

// Fills `dst`, which has the size of `src` and of the map. A position whose nearest pixel lies outside takes `fill`;
// pixels outside that a wider sampling asks for are the nearest inside.
void RemapFrame(ConstFrameView src, FrameView dst, const SourcePosition* map, Sampling sampling, uint32_t fill);

#endif  // KVX_SOURCE_LENS_MAP_H_
