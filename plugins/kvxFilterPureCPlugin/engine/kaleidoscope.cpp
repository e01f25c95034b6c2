// A triangle of the picture, repeated all around itself: every triangle beside it is turned into it about a shared
// corner, the one below its base is mirrored into it.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/engine_internal.h"
#include "engine/pane_looks.h"
#include "framework/numeric.h"

namespace {

constexpr double kDegrees60 = 1.0471975511965976;
constexpr double kDegrees120 = 2.0943951023931953;
constexpr double kDegrees180 = 3.141592653589793;

// Rows count from the bottom here, as angles want them.
struct Point {
  double x;
  double y;
};

// Direction of a vector, up to four degrees off between the axes and diagonals: the pattern lives with these angles.
double FastAngle(const Point& v) {
  constexpr double kQuarterPi = 0.7853981633974483;
  constexpr double kThreeQuarterPi = 2.356194490192345;
  const double y = std::fabs(v.y);
  if (v.x == 0 && y == 0) return 0;
  const double angle = v.x >= 0 ? kQuarterPi - kQuarterPi * ((v.x - y) / (v.x + y))
                                : kThreeQuarterPi - kQuarterPi * ((v.x + y) / (y - v.x));
  return v.y < 0 ? -angle : angle;
}

class TriangleMap {
 public:
  TriangleMap(int32_t width, int32_t height) {
    static const double kTangent = std::tan(0.5235987755982988);  // 30 degrees
    const int32_t center = Trunc32(0.5 * width);
    base_ = Trunc32(0.08333 * height);
    const int32_t top = Trunc32(0.88333 * height);
    const double half = (top - base_) * kTangent;
    apex_ = {static_cast<double>(center), static_cast<double>(top)};
    left_ = {center - half, static_cast<double>(base_)};
    right_ = {center + half, static_cast<double>(base_)};
  }

  // The place whose pixel a place shows.
  void Find(int32_t x, int32_t y, int32_t& fromX, int32_t& fromY) const {
    const double apexAngle = AngleFrom(apex_, x, y);
    if (y >= base_) {
      const double downward = apexAngle < 0 ? apexAngle + 2 * kDegrees180 : apexAngle;
      if (downward >= 4.1887902047863905 && downward <= 5.235987755982989) {  // between 240 and 300 degrees
        fromX = x;
        fromY = y;
      } else if (apexAngle >= 0) {  // above the apex
        const double offset = apexAngle <= kDegrees60    ? -kDegrees120
                              : apexAngle <= kDegrees120 ? kDegrees180
                                                         : kDegrees120;
        Turn(apex_, x, y, apexAngle, offset, fromX, fromY);
      } else if (x < apex_.x) {  // left of the triangle
        const double leftAngle = AngleFrom(left_, x, y);
        if (leftAngle <= kDegrees120) {
          Turn(apex_, x, y, apexAngle, kDegrees60, fromX, fromY);
        } else {
          Turn(left_, x, y, leftAngle, -kDegrees120, fromX, fromY);
        }
      } else {  // right of it
        const double rightAngle = AngleFrom(right_, x, y);
        if (rightAngle >= kDegrees60) {
          Turn(apex_, x, y, apexAngle, -kDegrees60, fromX, fromY);
        } else {
          Turn(right_, x, y, rightAngle, kDegrees120, fromX, fromY);
        }
      }
      return;
    }
    const double leftAngle = AngleFrom(left_, x, y);
    const double rightAngle = AngleFrom(right_, x, y);
    if (x < apex_.x && leftAngle < -kDegrees60) {
      Turn(left_, x, y, leftAngle, leftAngle < -kDegrees120 ? kDegrees180 : kDegrees120, fromX, fromY);
    } else if (x >= apex_.x && rightAngle > -kDegrees120) {
      Turn(right_, x, y, rightAngle, rightAngle > -kDegrees60 ? kDegrees180 : -kDegrees120, fromX, fromY);
    } else {  // below the base
      fromX = x;
      fromY = 2 * base_ - y;
    }
  }

 private:
  static double AngleFrom(const Point& corner, int32_t x, int32_t y) { return FastAngle({x - corner.x, y - corner.y}); }

  static void Turn(const Point& corner, int32_t x, int32_t y, double angle, double offset, int32_t& fromX,
                   int32_t& fromY) {
    const double dx = x - corner.x;
    const double dy = y - corner.y;
    const double radius = std::sqrt(dx * dx + dy * dy);
    fromX = Trunc32(corner.x + radius * std::cos(angle + offset));
    fromY = Trunc32(corner.y + radius * std::sin(angle + offset));
  }

  int32_t base_;
  Point apex_;
  Point left_;
  Point right_;
};

}  // namespace

// Where each pixel comes from depends on the frame's size alone, so that it is worked out once.
int32_t Kaleidoscope(EngineRecord& record, const EngineImage& image) {
  const int32_t width = image.width;
  const int32_t height = image.height;
  uint8_t* source = EnsureWorkCopy(record, width * height * 4);
  auto* map = reinterpret_cast<int32_t*>(EnsureTable(record, width * height * 4, kDirtyTables));
  if (!source || !map) return kEngineNoScratch;
  if (record.dirtyFlags & (kDirtyTables | kDirtyParticles)) {
    const TriangleMap triangles(width, height);
    for (int32_t row = 0; row < height; ++row) {
      for (int32_t x = 0; x < width; ++x) {
        int32_t fromX, fromY;
        triangles.Find(x, height - 1 - row, fromX, fromY);
        map[row * width + x] = std::clamp(height - fromY - 1, 0, height - 1) * width + std::clamp(fromX, 0, width - 1);
      }
    }
    record.dirtyFlags &= ~(kDirtyTables | kDirtyParticles);
  }
  const size_t rowBytes = 4 * static_cast<size_t>(width);
  ForEachRow(image, [=](int32_t row, const uint8_t* p) {
    std::memcpy(source + static_cast<size_t>(row) * rowBytes, p, rowBytes);
  });
  ForEachRow(image, [=](int32_t row, uint8_t* p) {
    const int32_t* from = map + static_cast<ptrdiff_t>(row) * width;
    for (int32_t x = 0; x < width; ++x) std::memcpy(p + 4 * x, source + 4 * static_cast<size_t>(from[x]), 4);
  });
  return kEngineDone;
}
