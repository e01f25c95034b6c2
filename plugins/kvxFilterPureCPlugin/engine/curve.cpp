#include "engine/curve.h"

#include <algorithm>
#include <cmath>
#include <vector>

Curve MakeCurve(std::span<const CurvePoint> points) {
  const size_t last = points.size() - 1;
  std::vector<double> chord(last);
  std::vector<double> slope(points.size());
  for (size_t i = 0; i < last; ++i) {
    chord[i] = static_cast<double>(points[i + 1].y - points[i].y) / (points[i + 1].x - points[i].x);
  }
  slope[0] = chord[0];
  slope[last] = chord[last - 1];
  for (size_t i = 1; i < last; ++i) slope[i] = chord[i - 1] * chord[i] <= 0 ? 0 : (chord[i - 1] + chord[i]) / 2;
  for (size_t i = 0; i < last; ++i) {
    if (chord[i] == 0) {
      slope[i] = slope[i + 1] = 0;
      continue;
    }
    const double a = slope[i] / chord[i];
    const double b = slope[i + 1] / chord[i];
    if (a * a + b * b > 9) {
      const double limit = 3 / std::sqrt(a * a + b * b);
      slope[i] = limit * a * chord[i];
      slope[i + 1] = limit * b * chord[i];
    }
  }
  Curve curve{};
  for (size_t i = 0; i < last; ++i) {
    const double width = points[i + 1].x - points[i].x;
    for (int32_t x = points[i].x; x <= points[i + 1].x; ++x) {
      const double t = (x - points[i].x) / width;
      const double value = points[i].y * (1 + 2 * t) * (1 - t) * (1 - t) + slope[i] * width * t * (1 - t) * (1 - t) +
                           points[i + 1].y * t * t * (3 - 2 * t) + slope[i + 1] * width * t * t * (t - 1);
      curve[static_cast<size_t>(x)] = static_cast<uint8_t>(std::clamp(std::lround(value), 0L, 255L));
    }
  }
  return curve;
}

Curve MakeCurve(const CurveKnots& knots) {
  const CurvePoint points[] = {{0, knots[0]}, {64, knots[1]}, {128, knots[2]}, {192, knots[3]}, {255, knots[4]}};
  return MakeCurve(points);
}
