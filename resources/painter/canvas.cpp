#include "painter/canvas.h"

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

Plane Noise(cv::Size size, float cellX, float cellY, uint32_t seed) {
  constexpr int kRim = 2;
  const auto cells = [](int length, float cell) {
    return static_cast<int>(static_cast<float>(length) / cell) + 2 * kRim + 2;
  };
  Plane grid(cells(size.height, cellY), cells(size.width, cellX));
  Dice dice(seed);
  for (float& value : grid) value = dice.Next();
  const cv::Matx23f map(1 / cellX, 0, kRim, 0, 1 / cellY, kRim);
  Plane out;
  cv::warpAffine(grid, out, map, size, cv::INTER_CUBIC | cv::WARP_INVERSE_MAP, cv::BORDER_REPLICATE);
  return out;
}

// Hills on a turned grid: several of them over each other show no rows and columns.
static Plane TurnedNoise(cv::Size size, float cell, float angle, uint32_t seed) {
  const float width = static_cast<float>(size.width), height = static_cast<float>(size.height);
  const float half = std::hypot(width, height) / 2 / cell + 3;
  const int side = static_cast<int>(2 * half) + 2;
  Plane grid(side, side);
  Dice dice(seed);
  for (float& value : grid) value = dice.Next();
  const float c = std::cos(angle) / cell, s = std::sin(angle) / cell;
  const cv::Matx23f map(c, -s, half - (c * width - s * height) / 2, s, c, half - (s * width + c * height) / 2);
  Plane out;
  cv::warpAffine(grid, out, map, size, cv::INTER_CUBIC | cv::WARP_INVERSE_MAP, cv::BORDER_REPLICATE);
  return out;
}

Plane Clouds(cv::Size size, float cell, int octaves, uint32_t seed) {
  constexpr int kShrink = 4;  // wide hills are painted small and enlarged
  const cv::Size smallSize((size.width + kShrink - 1) / kShrink, (size.height + kShrink - 1) / kShrink);
  Plane wide(smallSize, 0.0f), fine;
  float weight = 0.5f, total = 0;
  for (int i = 0; i < octaves; ++i) {
    const float angle = 0.6f + 1.1f * static_cast<float>(i);
    const uint32_t octaveSeed = seed + static_cast<uint32_t>(i) * 7919u;
    if (cell >= 6 * kShrink) {
      wide += weight * TurnedNoise(smallSize, cell / kShrink, angle, octaveSeed);
    } else {
      if (fine.empty()) fine = Plane(size, 0.0f);
      fine += weight * TurnedNoise(size, cell, angle, octaveSeed);
    }
    total += weight;
    weight /= 2;
    cell /= 2;
  }
  Plane sum;
  cv::resize(wide, sum, size, 0, 0, cv::INTER_LINEAR);
  if (!fine.empty()) sum += fine;
  return sum / total;
}

Plane Grain(cv::Size size, uint32_t seed) {
  Plane out(size);
  Dice dice(seed);
  for (float& value : out) value = dice.Next();
  return out;
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
    const float dx = std::cos(a) * half, dy = std::sin(a) * half;
    cv::line(mask, {fixed(x - dx), fixed(y - dy)}, {fixed(x + dx), fixed(y + dy)}, cv::Scalar(dice.Between(90, 255)),
             thickness, cv::LINE_AA, kShift);
  }
  return mask;
}
