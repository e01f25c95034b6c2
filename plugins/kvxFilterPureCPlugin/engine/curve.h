// Tone curves given by some of their points.
#ifndef KVX_ENGINE_CURVE_H_
#define KVX_ENGINE_CURVE_H_

#include <array>
#include <cstdint>
#include <span>

#include "engine/engine_internal.h"

struct CurvePoint {
  int32_t x;
  int32_t y;
};

// Monotone cubic interpolation after Fritsch and Carlson, rounded. Hits every point exactly. Points stand in order of
// x, from 0 to 255.
Curve MakeCurve(std::span<const CurvePoint> points);

// Points at 0, 64, 128, 192 and 255.
using CurveKnots = std::array<uint8_t, 5>;
Curve MakeCurve(const CurveKnots& knots);

// The curves of one look.
struct CurveSet {
  Curve blue;
  Curve green;
  Curve red;
};

#endif  // KVX_ENGINE_CURVE_H_
