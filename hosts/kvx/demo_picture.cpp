#include "hosts/kvx/demo_picture.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

namespace kvx {

namespace {

constexpr double kPi = 3.14159265358979323846;

// Repeatable noise: a hash of the lattice point, 0 to 1.
float Lattice(int32_t x, int32_t y, uint32_t layer) {
  uint32_t h = static_cast<uint32_t>(x) * 374761393u + static_cast<uint32_t>(y) * 668265263u + layer * 2246822519u;
  h = (h ^ h >> 13) * 1274126177u;
  return static_cast<float>((h ^ h >> 16) & 0xFFFF) / 65535.0f;
}

float SmoothNoise(float x, float y, uint32_t layer) {
  const float fx = std::floor(x);
  const float fy = std::floor(y);
  const auto ix = static_cast<int32_t>(fx);
  const auto iy = static_cast<int32_t>(fy);
  const auto ease = [](float t) { return t * t * (3 - 2 * t); };
  const float wx = ease(x - fx);
  const float wy = ease(y - fy);
  const float top = std::lerp(Lattice(ix, iy, layer), Lattice(ix + 1, iy, layer), wx);
  const float bottom = std::lerp(Lattice(ix, iy + 1, layer), Lattice(ix + 1, iy + 1, layer), wx);
  return std::lerp(top, bottom, wy);
}

float Fractal(float x, float y, uint32_t layer, int octaves) {
  float sum = 0;
  float weight = 0.5f;
  for (int i = 0; i < octaves; ++i, x *= 2, y *= 2, weight /= 2) sum += weight * SmoothNoise(x, y, layer + i);
  return sum;
}

struct Color {
  float r, g, b;
};
Color operator*(Color c, float k) {
  return {c.r * k, c.g * k, c.b * k};
}
Color Mix(Color a, Color b, float t) {
  return {std::lerp(a.r, b.r, t), std::lerp(a.g, b.g, t), std::lerp(a.b, b.b, t)};
}
float Step(float from, float to, float x) {
  return std::clamp((x - from) / (to - from), 0.0f, 1.0f);
}

// Scene coordinates: u to the right from 0 to the frame's ratio, v down from 0 to 1.
constexpr float kHorizon = 0.56f;

struct Scene {
  float ratio;
  float time;  // seconds
  float sunU;
  float sunV;
};

Color Sky(const Scene& s, float u, float v) {
  Color c = Mix({52, 104, 178}, {246, 206, 160}, std::pow(v / kHorizon, 1.3f));
  const float cloud = Fractal(u * 3.2f + s.time * 0.12f, v * 7.5f, 1, 5);
  c = Mix(c, Mix({255, 250, 242}, {214, 180, 178}, v * 1.6f), 0.85f * Step(0.46f, 0.72f, cloud));
  const float distance = std::hypot(u - s.sunU, v - s.sunV);
  c = Mix(c, {255, 232, 176}, 0.85f * std::exp(-distance * distance * 28));
  return Mix({255, 252, 236}, c, Step(0.043f, 0.047f, distance));
}

float RidgeHeight(float u, int layer) {
  const auto k = static_cast<float>(layer);
  return kHorizon - 0.02f - (0.2f - 0.058f * k) * Fractal(u * (1.3f + 0.7f * k) + 13 * k, 3.0f * k, 40 + layer, 5);
}

// The hills' outlines, sampled once for each frame.
class Ridges {
 public:
  Ridges(float ratio, int columns) : scale_(static_cast<float>(columns) / ratio) {
    const int samples = columns + 2 * kMargin;
    for (int layer = 0; layer < 3; ++layer) {
      for (int i = 0; i < samples; ++i) {
        heights_[layer].push_back(RidgeHeight(static_cast<float>(i - kMargin) / scale_, layer));
      }
    }
  }
  float At(float u, int layer) const {
    const auto& heights = heights_[layer];
    const int at = cvFloor(u * scale_) + kMargin;
    return heights[static_cast<size_t>(std::clamp(at, 0, static_cast<int>(heights.size()) - 1))];
  }

 private:
  static constexpr int kMargin = 64;
  float scale_;
  std::vector<float> heights_[3];
};

Color Land(const Scene& s, const Ridges& ridges, float u, float v) {
  static constexpr Color kFar[] = {{128, 142, 170}, {88, 116, 104}, {58, 88, 48}};
  for (int layer = 2; layer >= 0; --layer) {
    const float ridge = ridges.At(u, layer);
    if (v < ridge) continue;
    const float light = 0.72f + 0.55f * Fractal(u * 26, v * 26, 60 + layer, 4);
    return Mix(kFar[layer], {214, 196, 170}, 0.3f * (1 - Step(0, 0.09f, v - ridge))) * light;
  }
  return Sky(s, u, std::min(v, kHorizon));
}

Color Water(const Scene& s, const Ridges& ridges, float u, float v) {
  const float depth = (v - kHorizon) / (1 - kHorizon);
  const float wave = std::sin((u * 6 + s.time * 1.1f) + 9 / (depth + 0.12f)) +
                     0.6f * std::sin(u * 23 - s.time * 1.9f + 26 / (depth + 0.16f));
  const float mirror = kHorizon - (v - kHorizon) * 0.9f + 0.006f * wave * (0.4f + depth);
  Color c =
      Mix(Land(s, ridges, u + 0.004f * wave, std::clamp(mirror, 0.0f, kHorizon)), {18, 58, 82}, 0.35f + 0.4f * depth);
  const float glitter = std::exp(-std::pow((u - s.sunU) * 9, 2.0f)) * std::max(0.0f, wave - 0.7f);
  return Mix(c, {255, 236, 190}, std::min(0.8f, glitter));
}

void PaintGround(cv::Mat& image, const Scene& scene) {
  const Ridges ridges(scene.ratio, image.cols);
  cv::parallel_for_(cv::Range(0, image.rows), [&](const cv::Range& rows) {
    for (int y = rows.start; y < rows.end; ++y) {
      auto* row = image.ptr<cv::Vec4b>(y);
      const float v = (static_cast<float>(y) + 0.5f) / static_cast<float>(image.rows);
      for (int x = 0; x < image.cols; ++x) {
        const float u = (static_cast<float>(x) + 0.5f) / static_cast<float>(image.rows);
        Color c = v < kHorizon ? Land(scene, ridges, u, v) : Water(scene, ridges, u, v);
        c = c * (0.985f + 0.03f * Lattice(x, y, 99));  // the grain of a camera
        row[x] = {cv::saturate_cast<uint8_t>(c.b), cv::saturate_cast<uint8_t>(c.g), cv::saturate_cast<uint8_t>(c.r),
                  255};
      }
    }
  });
}

// Shapes in scene coordinates, anti-aliased.
class Brush {
 public:
  explicit Brush(cv::Mat& image) : image_(image), scale_(static_cast<float>(image.rows)) {}

  void Ellipse(float u, float v, float ru, float rv, Color c, float degrees = 0) {
    constexpr int kShift = 4;
    const auto fixed = [&](float x) { return cvRound(std::clamp(x * scale_, -4.0e4f, 4.0e4f) * (1 << kShift)); };
    cv::ellipse(image_, {fixed(u), fixed(v)}, {std::max(1, fixed(ru)), std::max(1, fixed(rv))}, degrees, 0, 360, Bgr(c),
                cv::FILLED, cv::LINE_AA, kShift);
  }
  void Rectangle(float u, float v, float width, float height, Color c) {
    Polygon({{u, v}, {u + width, v}, {u + width, v + height}, {u, v + height}}, c);
  }
  void Polygon(const std::vector<cv::Point2f>& corners, Color c) {
    constexpr int kShift = 4;
    std::vector<cv::Point> points;
    for (const cv::Point2f& p : corners) points.emplace_back(cvRound(p.x * scale_ * 16), cvRound(p.y * scale_ * 16));
    cv::fillConvexPoly(image_, points, Bgr(c), cv::LINE_AA, kShift);
  }
  void Line(float u0, float v0, float u1, float v1, float width, Color c) {
    const auto at = [&](float u, float v) { return cv::Point(cvRound(u * scale_), cvRound(v * scale_)); };
    cv::line(image_, at(u0, v0), at(u1, v1), Bgr(c), std::clamp(cvRound(width * scale_), 1, 200), cv::LINE_AA);
  }
  void Text(const std::string& text, float u, float v, float height, Color c, int weight) {
    const double size = height * scale_ / 22.0;
    cv::putText(image_, text, {cvRound(u * scale_), cvRound(v * scale_)}, cv::FONT_HERSHEY_DUPLEX, size, Bgr(c),
                std::max(1, cvRound(size * weight)), cv::LINE_AA);
  }

 private:
  static cv::Scalar Bgr(Color c) { return {c.b, c.g, c.r, 255}; }
  cv::Mat& image_;
  float scale_;
};

void DrawBoat(Brush& brush, const Scene& s) {
  const float u = std::fmod(0.2f * s.ratio + s.time * 0.05f, s.ratio + 0.3f) - 0.1f;
  const float v = 0.645f + 0.004f * std::sin(s.time * 2.2f);
  brush.Polygon({{u + 0.005f, v - 0.15f}, {u + 0.005f, v - 0.012f}, {u + 0.085f, v - 0.012f}}, {248, 244, 232});
  brush.Polygon({{u - 0.005f, v - 0.13f}, {u - 0.005f, v - 0.012f}, {u - 0.05f, v - 0.012f}}, {214, 60, 48});
  brush.Polygon({{u - 0.07f, v - 0.008f}, {u + 0.1f, v - 0.008f}, {u + 0.07f, v + 0.02f}, {u - 0.045f, v + 0.02f}},
                {112, 62, 34});
}

// Trunk and a few hundred leaves that sway.
void DrawTree(Brush& brush, const Scene& s, float root) {
  brush.Polygon({{root - 0.026f, 1.0f}, {root + 0.03f, 1.0f}, {root + 0.012f, 0.42f}, {root - 0.008f, 0.42f}},
                {62, 42, 30});
  for (int i = 0; i < 420; ++i) {
    const float angle = 2 * static_cast<float>(kPi) * Lattice(i, 1, 7);
    const float radius = std::sqrt(Lattice(i, 2, 7));
    const float sway = 0.006f * std::sin(s.time * 1.7f + static_cast<float>(i));
    const float u = root + 0.2f * radius * std::cos(angle) + sway;
    const float v = 0.34f + 0.25f * radius * std::sin(angle) + 0.5f * sway;
    const float light = 0.35f + 0.75f * Lattice(i, 3, 7) * Step(0.62f, 0.1f, v);
    const Color leaf = Mix({70, 120, 34}, {196, 176, 52}, Lattice(i, 4, 7));
    brush.Ellipse(u, v, 0.006f + 0.014f * Lattice(i, 5, 7), 0.007f, leaf * light, 360 * Lattice(i, 6, 7));
  }
}

// A house in deep shadow with one lit window.
void DrawHouse(Brush& brush, float u, float v) {
  brush.Polygon({{u - 0.015f, v}, {u + 0.24f, v}, {u + 0.112f, v - 0.11f}}, {58, 26, 22});
  brush.Rectangle(u, v, 0.225f, 0.2f, {26, 22, 26});
  for (int i = 0; i < 7; ++i) brush.Line(u, v + 0.028f * i, u + 0.225f, v + 0.028f * i, 0.002f, {18, 15, 18});
  brush.Rectangle(u + 0.035f, v + 0.05f, 0.05f, 0.06f, {255, 206, 104});
  brush.Line(u + 0.06f, v + 0.05f, u + 0.06f, v + 0.11f, 0.004f, {30, 22, 16});
  brush.Rectangle(u + 0.14f, v + 0.07f, 0.055f, 0.13f, {8, 6, 8});
}

void DrawPortrait(Brush& brush, const Scene& s, float u, float v) {
  const float nod = 0.004f * std::sin(s.time * 1.3f);
  brush.Ellipse(u, v + 0.3f, 0.19f, 0.15f, {44, 74, 128});
  brush.Rectangle(u - 0.032f, v + 0.1f, 0.064f, 0.09f, {196, 140, 112});
  v += nod;
  brush.Ellipse(u, v - 0.03f, 0.118f, 0.138f, {54, 32, 22});
  for (int i = 12; i >= 0; --i) {  // shading by nested ellipses, lit from the left
    const float k = static_cast<float>(i) / 12;
    brush.Ellipse(u - 0.018f * (1 - k), v - 0.008f * (1 - k), 0.088f * (0.35f + 0.65f * k),
                  0.118f * (0.35f + 0.65f * k), Mix({250, 214, 186}, {198, 138, 108}, k));
  }
  brush.Ellipse(u - 0.004f, v - 0.092f, 0.094f, 0.048f, {54, 32, 22}, -8);
  for (const float side : {-1.0f, 1.0f}) {
    const float eye = u + side * 0.036f - 0.004f;
    brush.Ellipse(eye, v - 0.012f, 0.017f, 0.009f, {250, 248, 244});
    brush.Ellipse(eye + 0.004f * std::sin(s.time), v - 0.012f, 0.008f, 0.008f, {52, 96, 62});
    brush.Ellipse(eye + 0.004f * std::sin(s.time), v - 0.012f, 0.004f, 0.004f, {10, 10, 12});
    brush.Line(eye - 0.018f, v - 0.032f, eye + 0.018f, v - 0.034f, 0.005f, {58, 34, 24});
  }
  brush.Line(u - 0.004f, v - 0.005f, u - 0.012f, v + 0.03f, 0.003f, {190, 132, 104});
  brush.Ellipse(u - 0.004f, v + 0.06f, 0.03f, 0.009f, {188, 74, 76});
  brush.Line(u - 0.033f, v + 0.06f, u + 0.025f, v + 0.06f, 0.002f, {130, 44, 50});
}

void DrawChart(Brush& brush, float u, float v) {
  static constexpr Color kPatches[] = {
      {115, 82, 68},   {194, 150, 130}, {98, 122, 157},  {87, 108, 67},   {133, 128, 177}, {103, 189, 170},
      {214, 126, 44},  {80, 91, 166},   {193, 90, 99},   {94, 60, 108},   {157, 188, 64},  {224, 163, 46},
      {255, 0, 0},     {0, 255, 0},     {0, 0, 255},     {0, 255, 255},   {255, 0, 255},   {255, 255, 0},
      {255, 255, 255}, {204, 204, 204}, {153, 153, 153}, {102, 102, 102}, {51, 51, 51},    {0, 0, 0}};
  constexpr float kCell = 0.034f;
  brush.Rectangle(u - 0.008f, v - 0.008f, 6 * kCell + 0.016f, 4 * kCell + 0.016f, {20, 20, 20});
  for (int i = 0; i < 24; ++i) {
    brush.Rectangle(u + kCell * static_cast<float>(i % 6) + 0.002f, v + kCell * static_cast<float>(i / 6) + 0.002f,
                    kCell - 0.004f, kCell - 0.004f, kPatches[i]);
  }
}

}  // namespace

Picture DrawDemoPicture(int32_t width, int32_t height, int64_t frame) {
  Picture picture(width, height);
  cv::Mat image(height, width, CV_8UC4, picture.pixels.data());
  const float ratio = static_cast<float>(width) / static_cast<float>(height);
  const float time = static_cast<float>(frame) / 25.0f;
  const Scene scene{ratio, time, 0.64f * ratio + 0.01f * time, 0.25f + 0.004f * time};
  PaintGround(image, scene);
  Brush brush(image);
  DrawBoat(brush, scene);
  DrawHouse(brush, 0.4f * ratio, 0.6f);
  DrawTree(brush, scene, 0.1f * ratio);
  DrawPortrait(brush, scene, 0.84f * ratio, 0.62f);
  DrawChart(brush, 0.27f * ratio, 0.82f);
  brush.Text("kvx", 0.03f * ratio, 0.96f, 0.07f, {255, 255, 255}, 2);
  brush.Text("frame " + std::to_string(frame), 0.53f * ratio, 0.97f, 0.03f, {255, 240, 200}, 1);
  return picture;
}

}  // namespace kvx
