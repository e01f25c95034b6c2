#include "Source/OrnerFilter.h"

#include "framework/host_log.h"

#include <algorithm>
#include <cmath>

namespace {

// Patch coordinates that stand for none; far outside the picture, so that nothing has to ask for them.
constexpr double kNoRealRoot = 1000.0;
constexpr double kNoEquation = 1001.0;

struct Vector {
  double x;
  double y;
};

Vector operator-(Vector a, Vector b) {
  return {a.x - b.x, a.y - b.y};
}
Vector operator+(Vector a, Vector b) {
  return {a.x + b.x, a.y + b.y};
}
Vector operator*(double k, Vector a) {
  return {k * a.x, k * a.y};
}
double Dot(Vector a, Vector b) {
  return a.x * b.x + a.y * b.y;
}
double Cross(Vector a, Vector b) {
  return a.x * b.y - a.y * b.x;
}

// The roots of a t^2 + b t + c, without cancellation where a is small.
std::array<double, 2> SolveQuadratic(double a, double b, double c) {
  const double discriminant = b * b - 4 * a * c;
  if (discriminant < 0) return {kNoRealRoot, kNoRealRoot};
  const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
  return {q != 0 ? c / q : kNoEquation, a != 0 ? q / a : kNoEquation};
}

struct PatchPoint {
  double s = kNoEquation;
  double t = kNoEquation;

  double DistanceFromPatch() const { return std::max({0.0, -s, s - 1, -t, t - 1}); }
};

// The bilinear patch p(s, t) = A + s B + t C + s t D with A the top left corner, B and C its edges to the right and
// down, and D what bends it. For a point at q = p - A: q - t C is s (B + t D), so their cross product is 0:
//   t^2 (D x C) + t (q x D - C x B) + q x B = 0,
// and s is the length of q - t C along B + t D. Of two solutions the one nearer to the patch counts.
class Patch {
 public:
  Patch(Vector topLeft, Vector topRight, Vector bottomLeft, Vector bottomRight)
      : a_(topLeft),
        b_(topRight - topLeft),
        c_(bottomLeft - topLeft),
        d_((topLeft - topRight) + (bottomRight - bottomLeft)) {}

  PatchPoint Invert(Vector p) const {
    const Vector q = p - a_;
    PatchPoint nearest;
    for (const double t : SolveQuadratic(Cross(d_, c_), Cross(q, d_) - Cross(c_, b_), Cross(q, b_))) {
      const Vector edge = b_ + t * d_;
      const double square = Dot(edge, edge);
      const PatchPoint point{square > 0 ? Dot(q - t * c_, edge) / square : kNoEquation, t};
      if (point.DistanceFromPatch() < nearest.DistanceFromPatch()) nearest = point;
    }
    return nearest;
  }

 private:
  Vector a_, b_, c_, d_;
};

}  // namespace

// A corner value v lies (v - 1/3) / (1/3) frames from the left or top. Corners and pixels both sit at + 0.5, so corners
// on those of the frame give every pixel its own position.
void BuildCornerMap(SourcePosition* map, int32_t width, int32_t height, const CornerValues& values) {
  const auto corner = [&](size_t k) {
    constexpr double kThird = 1.0 / 3;
    return Vector{(values[2 * k] - kThird) / kThird * width + 0.5,
                  (values[2 * k + 1] - kThird) / kThird * height + 0.5};
  };
  const Patch patch(corner(0), corner(1), corner(2), corner(3));
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const PatchPoint point = patch.Invert({x + 0.5, y + 0.5});
      *map++ = {static_cast<float>(point.s * width), static_cast<float>(point.t * height)};
    }
  }
}

void COrnerFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  if (!src || !dst || width <= 0 || height <= 0) return;
  if (!map_) {
    map_ = AllocateLensMap(width, height);
    if (!map_) {
      KVX_LOG_ALLOCATION_FAILURE("OrnerFilter");
      return;
    }
    BuildCornerMap(map_.Data(), width, height, corners_);
  }
  RemapFrame(PackedSource(src, width, height), PackedDest(dst, width, height), map_.Data(), Sampling::kNearest,
             0xFF000000);
}
