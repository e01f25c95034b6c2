// What the material painter paints with: float pictures, noise, shading by pixel, soft stamps.
#ifndef KVX_PAINTER_CANVAS_H_
#define KVX_PAINTER_CANVAS_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <string>

#include "painter/functions.h"

using Plane = cv::Mat1f;
using Mask = cv::Mat1b;
using Color = cv::Vec3f;  // blue, green, red, 0 to 1
using Pixel = cv::Vec4f;  // and alpha
using Canvas = cv::Mat4f;

inline constexpr float kPi = 3.14159265f;

constexpr float Mix(float a, float b, float t) {
  return a + (b - a) * t;
}
inline Color Mix(const Color& a, const Color& b, float t) {
  return a + (b - a) * t;
}
constexpr float Clamp01(float x) {
  return x < 0 ? 0 : x > 1 ? 1 : x;
}
// 0 below a, 1 above b, smooth between.
constexpr float Smooth(float a, float b, float x) {
  const float t = Clamp01((x - a) / (b - a));
  return t * t * (3 - 2 * t);
}
inline float Bell(float x, float width) {
  return Exp(-x * x / (width * width));
}
inline Color Rgb(uint32_t hex) {
  return {static_cast<float>(hex & 255) / 255, static_cast<float>(hex >> 8 & 255) / 255,
          static_cast<float>(hex >> 16 & 255) / 255};
}
// Hue in turns.
Color Hue(float hue, float saturation = 1, float value = 1);
inline Color Gray(float v) {
  return {v, v, v};
}
inline Pixel Opaque(const Color& c) {
  return {c[0], c[1], c[2], 1};
}
inline Pixel WithAlpha(const Color& c, float a) {
  return {c[0], c[1], c[2], a};
}

// Repeatable random numbers.
class Dice {
 public:
  explicit Dice(uint32_t seed) : state_(seed * 2654435769u + 1013904223u) {}
  float Next() { return static_cast<float>(Draw() >> 8) / 16777216.0f; }
  float Between(float a, float b) { return a + (b - a) * Next(); }
  int Below(int n) { return static_cast<int>(Next() * static_cast<float>(n)); }

 private:
  uint32_t Draw();
  uint32_t state_;
};

// Smooth random hills, 0 to 1 around 0.5; `cellX` and `cellY` are their size in pixels.
Plane Noise(cv::Size size, float cellX, float cellY, uint32_t seed);
// The same with finer and weaker hills on top.
Plane Clouds(cv::Size size, float cell, int octaves, uint32_t seed);
// Every pixel by itself.
Plane Grain(cv::Size size, uint32_t seed);

// Where a pixel lies: u from -aspect to aspect, v from -1 (top) to 1.
struct Spot {
  int x, y;
  float u, v, aspect;
  float Round() const { return std::sqrt(u * u + v * v); }
  float Oval() const { return std::sqrt(u * u / (aspect * aspect) + v * v); }
  float Angle() const { return Atan2(v, u); }
  // Distance from the nearest side of the picture.
  float Edge() const { return std::min(aspect - std::abs(u), 1 - std::abs(v)); }
  // Signed distance from a rectangle of rounded corners that lies `inset` inside the picture; below 0 inside it.
  float Panel(float inset, float corner) const;
};

inline Spot SpotAt(cv::Size size, int x, int y) {
  const float half = static_cast<float>(size.height) / 2;
  const float aspect = static_cast<float>(size.width) / static_cast<float>(size.height);
  return {x, y, (static_cast<float>(x) + 0.5f) / half - aspect, (static_cast<float>(y) + 0.5f) / half - 1, aspect};
}

// A picture from a function of the spot that gives a Pixel.
template <typename Shader>
Canvas Shade(cv::Size size, Shader shader) {
  Canvas canvas(size);
  for (int y = 0; y < size.height; ++y) {
    Pixel* row = canvas[y];
    for (int x = 0; x < size.width; ++x) row[x] = shader(SpotAt(size, x, y));
  }
  return canvas;
}

inline Canvas Plain(cv::Size size, const Pixel& pixel) {
  return Canvas(size, pixel);
}

// Lets `stamp(pixel, dx, dy)` change the pixels of a box around a centre in pixels. dx and dy run from -1 to 1 over the
// radius and a little beyond.
template <typename Stamp>
void StampAt(Canvas& canvas, float cx, float cy, float radius, Stamp stamp) {
  const int top = std::max(0, static_cast<int>(cy - radius)), left = std::max(0, static_cast<int>(cx - radius));
  const int bottom = std::min(canvas.rows - 1, static_cast<int>(cy + radius) + 1);
  const int right = std::min(canvas.cols - 1, static_cast<int>(cx + radius) + 1);
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) {
      stamp(canvas(y, x), (static_cast<float>(x) - cx) / radius, (static_cast<float>(y) - cy) / radius);
    }
  }
}

inline void Add(Pixel& p, const Color& c, float amount) {
  for (int i = 0; i < 3; ++i) p[i] += c[i] * amount;
}
// Lays a colour over the pixel, alpha included.
inline void Cover(Pixel& p, const Color& c, float amount) {
  const float alpha = amount + p[3] * (1 - amount);
  if (alpha <= 0) return;
  for (int i = 0; i < 3; ++i) p[i] = (c[i] * amount + p[i] * p[3] * (1 - amount)) / alpha;
  p[3] = alpha;
}
void CoverMask(Canvas& canvas, const Mask& mask, const Color& color, float strength = 1);
// The mask as soft as `radius` pixels.
Mask Soft(const Mask& mask, float radius);

// Straight strokes of random place, such as hatching or film scratches, on a black mask.
Mask Strokes(cv::Size size, int count, float angle, float spread, float minLength, float maxLength, int thickness,
             uint32_t seed);

#endif  // KVX_PAINTER_CANVAS_H_
