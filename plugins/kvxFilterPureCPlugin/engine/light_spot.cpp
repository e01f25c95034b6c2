// Round light and round shade.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "engine/disc.h"
#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "framework/numeric.h"

namespace film {

// A soft light spot.
int32_t Sunshine(EngineRecord& record, const EngineImage& image) {
  constexpr int32_t kMost = 10000;  // far beyond use, and nothing overflows
  const int64_t level = ClampInt(record.level, -kMost, kMost);
  const int32_t size = std::min(image.width, image.height);
  const int32_t centreX = ClampInt(record.posX, 0, 100) * image.width / 100;
  const int32_t centreY = ClampInt(record.posY, 0, 100) * image.height / 100;
  const int32_t radius = ClampInt(record.radius, 0, kMost) * size / 200;
  const int64_t strength = (256 - int64_t{256} * radius / size) * level / 100;
  const int64_t radius2 = int64_t{radius} * radius;
  int shift = 1;
  if (radius2 > 1) {
    shift = 2;
    while (radius2 >> shift) ++shift;
  }
  ForEachInDisc(image, centreX, centreY, radius, [=](uint8_t* p, int64_t d2) {
    const auto light = static_cast<int32_t>(std::clamp<int64_t>(((radius2 - d2) * strength) >> shift, -255, 255));
    for (int c = 0; c < 3; ++c) p[c] = Clamp(p[c] + light);
  });
  return kEngineDone;
}

namespace {

// What is between two circles around the middle fades outward to nothing.
class Vignette {
 public:
  Vignette(const EngineImage& image, int32_t inner, int32_t outer)
      : image_(image),
        inner_(inner),
        outer_(outer),
        middleX_(image.width >> 1),
        factors_(static_cast<size_t>(std::min(outer, middleX_) + 1)) {}

  // The rows `first` to `last` - 1 above and below the middle.
  void Draw(int32_t first, int32_t last) {
    const int32_t middleY = image_.height >> 1;
    for (int32_t dy = first; dy < last; ++dy) {
      Measure(dy);
      Shade(middleY - dy);
      if (dy > 0 && middleY + dy < image_.height) Shade(middleY + dy);
    }
  }

 private:
  // The factors of the rows `dy` above and below the middle, which are the same to the left and to the right.
  void Measure(int64_t dy) {
    const int64_t dy2 = dy * dy;
    const int64_t outer2 = int64_t{outer_} * outer_;
    const int64_t inner2 = int64_t{inner_} * inner_;
    clear_ = outer2 >= dy2 ? std::min(RootBelow(outer2 - dy2), middleX_) + 1 : 0;
    keep_ = inner2 >= dy2 ? std::min(RootBelow(inner2 - dy2) + 1, clear_) : 0;
    for (int32_t dx = keep_; dx < clear_; ++dx) {
      const double distance = std::sqrt(static_cast<double>(dx) * dx + static_cast<double>(dy2));
      factors_[static_cast<size_t>(dx)] = (outer_ - distance) / (outer_ - inner_);
    }
  }

  void Shade(int32_t y) const {
    uint8_t* row = image_.Row(y);
    const int32_t left = std::max(middleX_ - clear_ + 1, 0);
    const int32_t right = std::min(middleX_ + clear_, image_.width);
    if (clear_ == 0) {
      std::memset(row, 0, 4 * static_cast<size_t>(image_.width));
      return;
    }
    std::memset(row, 0, 4 * static_cast<size_t>(left));
    std::memset(row + 4 * right, 0, 4 * static_cast<size_t>(image_.width - right));
    for (int32_t x = left; x <= middleX_ - keep_; ++x) Fade(row + 4 * x, middleX_ - x);
    for (int32_t x = middleX_ + std::max(keep_, 1); x < right; ++x) Fade(row + 4 * x, x - middleX_);
  }

  void Fade(uint8_t* p, int32_t dx) const {
    const double factor = factors_[static_cast<size_t>(dx)];
    for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(static_cast<int32_t>(p[c] * factor));
  }

  const EngineImage& image_;
  const int32_t inner_;
  const int32_t outer_;
  const int32_t middleX_;
  std::vector<double> factors_;  // by distance from the middle column
  int32_t keep_ = 0;             // the first distance that fades
  int32_t clear_ = 0;            // the first distance that is cleared, alpha too
};

}  // namespace

int32_t VignetteRadius(EngineRecord& record, const EngineImage& image) {
  const double f = record.level / 100.0;
  const int32_t half = std::max(image.width, image.height) >> 1;
  constexpr double kMost = 1 << 24;  // beyond every frame
  const int32_t outer = Trunc32(std::clamp(half * (0.1 * f + f + 0.1), 0.0, kMost));
  const int32_t inner = f > 0.3 ? Trunc32(std::min(half * (f - 0.3), kMost)) : 0;
  ForRowBands(int64_t{2} * image.width, 0, (image.height >> 1) + 1,
              [=, &image](int32_t first, int32_t last) { Vignette(image, inner, outer).Draw(first, last); });
  return kEngineDone;
}

}  // namespace film
