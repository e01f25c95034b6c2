// What a viewer sees through a device: gun sight, night glass, camera finder. Alpha says how much of it hides the
// frame.
#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

// Lines and letters in the picture's own units: u and v as a spot has them.
class Pen {
 public:
  explicit Pen(cv::Size size) : mask_(size, uint8_t{0}), half_(static_cast<float>(size.height) / 2) {
    aspect_ = static_cast<float>(size.width) / static_cast<float>(size.height);
  }
  const Mask& Drawn() const { return mask_; }
  float Aspect() const { return aspect_; }

  void Line(float u0, float v0, float u1, float v1, int thickness) {
    cv::line(mask_, At(u0, v0), At(u1, v1), cv::Scalar(255), thickness, cv::LINE_AA, kShift);
  }
  void Circle(float u, float v, float radius, int thickness) {
    cv::circle(mask_, At(u, v), Fixed(radius * half_), cv::Scalar(255), thickness, cv::LINE_AA, kShift);
  }
  void Arc(float radius, float from, float to, int thickness) {
    cv::ellipse(mask_, At(0, 0), cv::Size(Fixed(radius * half_), Fixed(radius * half_)), 0, from, to, cv::Scalar(255),
                thickness, cv::LINE_AA, kShift);
  }
  void Box(float u0, float v0, float u1, float v1, int thickness) {
    cv::rectangle(mask_, At(u0, v0), At(u1, v1), cv::Scalar(255), thickness, cv::LINE_AA, kShift);
  }
  // `v` is the letters' base line, `height` that of a capital.
  void Text(const std::string& text, float u, float v, float height, int thickness, bool fromRight = false) {
    constexpr int kFace = cv::FONT_HERSHEY_SIMPLEX;
    const double scale = height * half_ / 21.0;  // a capital of this face is 21 high
    const int width = cv::getTextSize(text, kFace, scale, thickness, nullptr).width;
    const cv::Point at(static_cast<int>((u + aspect_) * half_) - (fromRight ? width : 0),
                       static_cast<int>((v + 1) * half_));
    cv::putText(mask_, text, at, kFace, scale, cv::Scalar(255), thickness, cv::LINE_AA);
  }

 private:
  static constexpr int kShift = 4;
  static int Fixed(float pixels) { return static_cast<int>(std::lround(pixels * (1 << kShift))); }
  cv::Point At(float u, float v) const { return {Fixed((u + aspect_) * half_), Fixed((v + 1) * half_)}; }

  Mask mask_;
  float half_;
  float aspect_;
};

// Ink on a soft shadow, so that it can be read on any picture.
void Engrave(Canvas& canvas, const Pen& pen, const Color& ink, float strength) {
  CoverMask(canvas, Soft(pen.Drawn(), 3.0f), Gray(0), 0.75f * strength);
  CoverMask(canvas, pen.Drawn(), ink, strength);
}

Canvas Sight(cv::Size size) {
  constexpr float kTube = 0.92f;
  const Plane smudge = Clouds(size, 300, 4, 11);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float r = s.Round();
    const float tube = Smooth(kTube - 0.004f, kTube + 0.004f, r);
    const float shade = 0.75f * Smooth(kTube - 0.30f, kTube, r) + 0.05f * smudge(s.y, s.x);
    const Color rim = Mix(Rgb(0x050607), Rgb(0x2A2E32), Bell(r - kTube - 0.022f, 0.014f) * (0.5f - 0.5f * s.v));
    return WithAlpha(Mix(Gray(0), rim, tube), std::max(shade, tube));
  });
  Pen hairs(size);
  for (const float side : {-1.0f, 1.0f}) {
    hairs.Line(side * 0.030f, 0, side * 0.42f, 0, 2);
    hairs.Line(0, side * 0.030f, 0, side * 0.42f, 2);
    hairs.Line(side * 0.42f, 0, side * kTube, 0, 9);
    hairs.Line(0, side * 0.42f, 0, side * kTube, 9);
    for (int i = 1; i <= 7; ++i) {
      const float at = side * 0.055f * static_cast<float>(i), tick = i % 2 ? 0.010f : 0.018f;
      hairs.Line(at, -tick, at, tick, 2);
      hairs.Line(-tick, at, tick, at, 2);
    }
  }
  for (int i = 1; i <= 4; ++i) {  // holdover marks
    const float half = 0.070f - 0.012f * static_cast<float>(i), v = 0.42f + 0.075f * static_cast<float>(i);
    hairs.Line(-half, v, half, v, 2);
    hairs.Text(std::to_string(2 * i), half + 0.02f, v + 0.012f, 0.026f, 1);
  }
  hairs.Arc(0.30f, 20, 70, 2);
  hairs.Arc(0.30f, 110, 160, 2);
  hairs.Arc(0.30f, 200, 250, 2);
  hairs.Arc(0.30f, 290, 340, 2);
  CoverMask(canvas, hairs.Drawn(), Rgb(0x0A0C0E), 0.92f);
  Pen dot(size);
  dot.Circle(0, 0, 0.008f, -1);
  CoverMask(canvas, Soft(dot.Drawn(), 5), Rgb(0xFF2010), 0.8f);
  CoverMask(canvas, dot.Drawn(), Rgb(0xFF3B26), 1);
  return canvas;
}

Canvas NightGlass(cv::Size size) {
  const float aspect = static_cast<float>(size.width) / static_cast<float>(size.height);
  const float offset = 0.36f * aspect, radius = std::min(0.90f, aspect - offset - 0.06f);
  const Plane snow = Grain(size, 21), cloud = Clouds(size, 200, 4, 22);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float d = std::min(Hypot(s.u - offset, s.v), Hypot(s.u + offset, s.v)) - radius;
    const float mask = Smooth(-0.012f, 0.010f, d);
    const float scan = s.y % 3 == 0 ? 0.20f : 0.0f;
    const float noise = 0.16f * snow(s.y, s.x) * (0.6f + 0.8f * cloud(s.y, s.x));
    const float shade = 0.72f * Smooth(-0.42f, 0.0f, d);
    const float covered = Clamp01(scan + noise + shade * 0.9f);
    const Color inside = Mix(Rgb(0x2E8A34), Rgb(0x021004), Clamp01((shade + scan) / (covered + 0.01f)));
    const Color rubber = Mix(Gray(0), Rgb(0x0E1A10), Bell(d - 0.030f, 0.020f));
    return WithAlpha(Mix(inside, rubber, mask), std::max(covered, mask));
  });
  Pen marks(size);
  for (const float side : {-1.0f, 1.0f}) {
    marks.Line(side * 0.05f, 0, side * 0.40f, 0, 2);
    marks.Line(0, side * 0.05f, 0, side * 0.24f, 2);
    for (int i = 1; i <= 6; ++i) {
      const float tick = i % 2 ? 0.012f : 0.024f;
      marks.Line(side * 0.0633f * static_cast<float>(i), -tick, side * 0.0633f * static_cast<float>(i), tick, 2);
    }
  }
  marks.Circle(0, 0, 0.012f, 2);
  marks.Text("NV-2  GAIN HI", -0.50f * aspect, 0.62f, 0.036f, 2);
  marks.Text("RNG 0840 M", 0.50f * aspect, 0.62f, 0.036f, 2, true);
  CoverMask(canvas, Soft(marks.Drawn(), 5), Rgb(0x7CFF8A), 0.40f);
  CoverMask(canvas, marks.Drawn(), Rgb(0xC4FFC8), 0.85f);
  return canvas;
}

Canvas Camcorder(cv::Size size, bool recording) {
  Canvas canvas = Shade(size, [](const Spot& s) {
    return WithAlpha(Gray(0), 0.42f * Smooth(0.85f, 1.50f, s.Oval()) + (s.y % 4 == 0 ? 0.10f : 0.0f));
  });
  Pen pen(size);
  const float right = pen.Aspect() - 0.10f, bottom = 0.88f, arm = 0.16f;
  for (const float x : {-1.0f, 1.0f}) {
    for (const float y : {-1.0f, 1.0f}) {
      pen.Line(x * right, y * bottom, x * (right - arm), y * bottom, 4);
      pen.Line(x * right, y * bottom, x * right, y * (bottom - arm), 4);
      pen.Line(x * 0.34f, y * 0.24f, x * 0.26f, y * 0.24f, 2);
      pen.Line(x * 0.34f, y * 0.24f, x * 0.34f, y * 0.17f, 2);
    }
    pen.Line(x * 0.030f, 0, x * 0.075f, 0, 2);
    pen.Line(0, x * 0.030f, 0, x * 0.075f, 2);
  }
  pen.Text("REC", -right + 0.150f, -0.745f, 0.060f, 4);
  // Battery
  pen.Box(right - 0.24f, -0.815f, right - 0.07f, -0.735f, 3);
  pen.Box(right - 0.070f, -0.790f, right - 0.058f, -0.760f, -1);
  for (int i = 0; i < 3; ++i) {
    const float u = right - 0.228f + 0.049f * static_cast<float>(i);
    pen.Box(u, -0.800f, u + 0.037f, -0.750f, -1);
  }
  pen.Text("HD 1080", right - 0.05f, -0.64f, 0.042f, 2, true);
  pen.Text("00:07:24:16", -right + 0.06f, 0.815f, 0.050f, 3);
  pen.Text("AF  ISO 400  F2.8  1/50", right - 0.06f, 0.815f, 0.042f, 2, true);
  // Exposure scale
  for (int i = -6; i <= 6; ++i) {
    const float u = 0.033f * static_cast<float>(i);
    pen.Line(u, 0.815f, u, i % 3 ? 0.800f : 0.775f, 2);
  }
  pen.Line(0.033f, 0.835f, 0.020f, 0.858f, 3);
  pen.Line(0.033f, 0.835f, 0.046f, 0.858f, 3);
  Engrave(canvas, pen, Rgb(0xF4F7F8), 0.92f);
  if (recording) {
    Pen dot(size);
    dot.Circle(-right + 0.090f, -0.775f, 0.034f, -1);
    CoverMask(canvas, Soft(dot.Drawn(), 12), Rgb(0xFF2418), 0.55f);
    CoverMask(canvas, dot.Drawn(), Rgb(0xFF3024), 1);
  }
  return canvas;
}
Canvas CamcorderOn(cv::Size size) {
  return Camcorder(size, true);
}
Canvas CamcorderOff(cv::Size size) {
  return Camcorder(size, false);
}

constexpr Material kFinders[] = {
    {material::kSightWide, Mount::kTopFirst, Sight},
    {material::kSightNarrow, Mount::kTopFirst, Sight},
    {material::kNightGlassViewWide, Mount::kTopFirst, NightGlass},
    {material::kNightGlassViewNarrow, Mount::kTopFirst, NightGlass},
    {material::kCamcorderOnWide, Mount::kTopFirst, CamcorderOn},
    {material::kCamcorderOnNarrow, Mount::kTopFirst, CamcorderOn},
    {material::kCamcorderOffWide, Mount::kTopFirst, CamcorderOff},
    {material::kCamcorderOffNarrow, Mount::kTopFirst, CamcorderOff},
};

}  // namespace

std::span<const Material> Finders() {
  return kFinders;
}
