#include "painter/canvas.h"

#include <array>
#include <vector>

uint32_t Dice::Draw() {
  state_ = state_ * 747796405u + 2891336453u;
  const uint32_t word = ((state_ >> ((state_ >> 28) + 4)) ^ state_) * 277803737u;
  return (word >> 22) ^ word;
}

Color Hue(float hue, float saturation, float value) {
  const auto channel = [=](float offset) {
    float t = hue + offset;
    t -= std::floor(t);
    const float peak = Clamp01(std::abs(t * 6 - 3) - 1);
    return value * (1 - saturation * (1 - peak));
  };
  return {channel(1.0f / 3), channel(2.0f / 3), channel(0)};
}

namespace {

Plane RandomGrid(cv::Size size, uint32_t seed) {
  Plane grid(size);
  Dice dice(seed);
  for (float& value : grid) value = dice.Next();
  return grid;
}

// Where a picture's pixel lies on a grid: at (xx * x + xy * y + x0, yx * x + yy * y + y0).
struct Map {
  float xx, xy, x0, yx, yy, y0;
};

// Steps between two points of a grid, and cubic weights of the four points around each step. They are whole multiples
// of 2^-17 and so exact.
constexpr int kSteps = 32;
using Weights = std::array<std::array<float, 4>, kSteps>;
constexpr Weights CubicWeights() {
  constexpr float kSharp = -0.75f;
  const auto inner = [](float t) { return ((kSharp + 2) * t - (kSharp + 3)) * t * t + 1; };
  const auto outer = [](float t) { return ((kSharp * t - 5 * kSharp) * t + 8 * kSharp) * t - 4 * kSharp; };
  Weights weights{};
  for (int i = 0; i < kSteps; ++i) {
    const float t = static_cast<float>(i) / kSteps;
    weights[static_cast<size_t>(i)] = {outer(t + 1), inner(t), inner(1 - t), outer(2 - t)};
  }
  return weights;
}

// The grid's hills over a picture. Places are rounded to 1/1024 and then to steps. The grid must reach two points further
// than the picture.
Plane Hills(const Plane& grid, const Map& map, cv::Size size) {
  constexpr Weights kWeights = CubicWeights();
  constexpr int kPlace = 1024, kPlacesPerStep = kPlace / kSteps;
  const auto place = [](double v) { return static_cast<int>(std::lrint(v * kPlace)); };
  const auto toStep = [](int v) { return (v + kPlacesPerStep / 2) / kPlacesPerStep; };
  Plane out(size);
  for (int y = 0; y < size.height; ++y) {
    const int x0 = place(static_cast<double>(map.xy) * y + map.x0),
              y0 = place(static_cast<double>(map.yy) * y + map.y0);
    for (int x = 0; x < size.width; ++x) {
      const int stepX = toStep(x0 + place(static_cast<double>(map.xx) * x));
      const int stepY = toStep(y0 + place(static_cast<double>(map.yx) * x));
      const auto& across = kWeights[static_cast<size_t>(stepX % kSteps)];
      const auto& down = kWeights[static_cast<size_t>(stepY % kSteps)];
      float sum = 0;
      for (int i = 0; i < 4; ++i) {
        const float* p = grid[stepY / kSteps - 1 + i] + stepX / kSteps - 1;
        const float weight = down[static_cast<size_t>(i)];
        sum += p[0] * (weight * across[0]) + p[1] * (weight * across[1]) + p[2] * (weight * across[2]) +
               p[3] * (weight * across[3]);
      }
      out(y, x) = sum;
    }
  }
  return out;
}

// Hills on a turned grid: several of them over each other show no rows and columns.
Plane TurnedNoise(cv::Size size, float cell, float angle, uint32_t seed) {
  const float width = static_cast<float>(size.width), height = static_cast<float>(size.height);
  const float half = Hypot(width, height) / 2 / cell + 3;
  const int side = static_cast<int>(2 * half) + 2;
  const float c = Cos(angle) / cell, s = Sin(angle) / cell;
  const Map map{c, -s, half - (c * width - s * height) / 2, s, c, half - (s * width + c * height) / 2};
  return Hills(RandomGrid({side, side}, seed), map, size);
}

// Linear between the centres of pixels.
Plane Enlarged(const Plane& small, cv::Size size) {
  struct Place {
    int near, far;
    float part;  // of `far`
  };
  const auto places = [](int from, int onto) {
    std::vector<Place> all;
    for (int i = 0; i < onto; ++i) {
      const float at = static_cast<float>((i + 0.5) * from / onto - 0.5), whole = std::floor(at);
      const int near = static_cast<int>(whole);
      all.push_back({std::max(near, 0), std::min(near + 1, from - 1), at - whole});
    }
    return all;
  };
  const std::vector<Place> columns = places(small.cols, size.width), rows = places(small.rows, size.height);
  Plane out(size);
  for (int y = 0; y < size.height; ++y) {
    const Place& row = rows[static_cast<size_t>(y)];
    for (int x = 0; x < size.width; ++x) {
      const Place& column = columns[static_cast<size_t>(x)];
      const auto across = [&](const float* in) {
        return in[column.near] * (1 - column.part) + in[column.far] * column.part;
      };
      out(y, x) = across(small[row.near]) * (1 - row.part) + across(small[row.far]) * row.part;
    }
  }
  return out;
}

void AddTo(Plane& sum, const Plane& plane, float weight) {
  std::transform(sum.begin(), sum.end(), plane.begin(), sum.begin(), [=](float a, float b) { return a + weight * b; });
}

}  // namespace

Plane Noise(cv::Size size, float cellX, float cellY, uint32_t seed) {
  constexpr int kRim = 2;
  const auto cells = [](int length, float cell) {
    return static_cast<int>(static_cast<float>(length) / cell) + 2 * kRim + 2;
  };
  const cv::Size gridSize(cells(size.width, cellX), cells(size.height, cellY));
  return Hills(RandomGrid(gridSize, seed), {1 / cellX, 0, kRim, 0, 1 / cellY, kRim}, size);
}

Plane Clouds(cv::Size size, float cell, int octaves, uint32_t seed) {
  constexpr int kShrink = 4;  // wide hills are painted small and enlarged
  const cv::Size smallSize((size.width + kShrink - 1) / kShrink, (size.height + kShrink - 1) / kShrink);
  Plane wide(smallSize, 0.0f), fine(size, 0.0f);
  float weight = 0.5f, total = 0;
  for (int i = 0; i < octaves; ++i) {
    const float angle = 0.6f + 1.1f * static_cast<float>(i);
    const uint32_t octaveSeed = seed + static_cast<uint32_t>(i) * 7919u;
    if (cell >= 6 * kShrink) {
      AddTo(wide, TurnedNoise(smallSize, cell / kShrink, angle, octaveSeed), weight);
    } else {
      AddTo(fine, TurnedNoise(size, cell, angle, octaveSeed), weight);
    }
    total += weight;
    weight /= 2;
    cell /= 2;
  }
  Plane sum = Enlarged(wide, size);
  AddTo(sum, fine, 1);
  const float share = static_cast<float>(1.0 / static_cast<double>(total));
  for (float& value : sum) value *= share;
  return sum;
}

Plane Grain(cv::Size size, uint32_t seed) {
  return RandomGrid(size, seed);
}

float Spot::Panel(float inset, float corner) const {
  const float dx = std::abs(u) - (aspect - inset - corner), dy = std::abs(v) - (1 - inset - corner);
  const float outX = std::max(dx, 0.0f), outY = std::max(dy, 0.0f);
  return std::sqrt(outX * outX + outY * outY) + std::min(std::max(dx, dy), 0.0f) - corner;
}

void CoverMask(Canvas& canvas, const Mask& mask, const Color& color, float strength) {
  for (int y = 0; y < canvas.rows; ++y) {
    Pixel* row = canvas[y];
    const uint8_t* m = mask[y];
    for (int x = 0; x < canvas.cols; ++x) {
      if (m[x]) Cover(row[x], color, strength * static_cast<float>(m[x]) / 255);
    }
  }
}

Mask Soft(const Mask& mask, float radius) {
  Mask out;
  cv::GaussianBlur(mask, out, cv::Size(), radius);
  return out;
}

Mask Strokes(cv::Size size, int count, float angle, float spread, float minLength, float maxLength, int thickness,
             uint32_t seed) {
  Mask mask(size, uint8_t{0});
  Dice dice(seed);
  constexpr int kShift = 4;
  const auto fixed = [](float v) { return static_cast<int>(std::lround(v * (1 << kShift))); };
  for (int i = 0; i < count; ++i) {
    const float x = dice.Next() * static_cast<float>(size.width), y = dice.Next() * static_cast<float>(size.height);
    const float a = angle + spread * (dice.Next() - 0.5f);
    const float half = dice.Between(minLength, maxLength) / 2;
    const float dx = Cos(a) * half, dy = Sin(a) * half;
    cv::line(mask, {fixed(x - dx), fixed(y - dy)}, {fixed(x + dx), fixed(y + dy)}, cv::Scalar(dice.Between(90, 255)),
             thickness, cv::LINE_AA, kShift);
  }
  return mask;
}
