// Scenery between viewer and frame: stage, blinds, cloth, poster. Alpha says how much of the frame is covered.
#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

void DrawCrowd(Mask& mask, float base, float scale, uint32_t seed) {
  Dice dice(seed);
  const float height = static_cast<float>(mask.rows);
  const cv::Scalar ink(255);
  const auto point = [](float x, float y) { return cv::Point(static_cast<int>(x), static_cast<int>(y)); };
  for (float x = -20; x < static_cast<float>(mask.cols) + 20; x += scale * dice.Between(1.5f, 2.3f)) {
    const float y = base * height + scale * dice.Between(-0.7f, 0.7f), head = scale * dice.Between(0.62f, 0.78f);
    cv::ellipse(mask, point(x, y), cv::Size(static_cast<int>(head * 0.80f), static_cast<int>(head)),
                dice.Between(-9, 9), 0, 360, ink, -1, cv::LINE_AA);
    cv::ellipse(mask, point(x, y + head * 3.0f), cv::Size(static_cast<int>(head * 2.0f), static_cast<int>(head * 2.1f)),
                0, 180, 360, ink, -1, cv::LINE_AA);
    cv::rectangle(mask, point(x - head * 2.0f, y + head * 2.9f), point(x + head * 2.0f, height), ink, -1);
    for (const float side : {-1.0f, 1.0f}) {  // raised arms
      if (dice.Next() > 0.36f) continue;
      const float shoulderX = x + side * head * 1.5f, shoulderY = y + head * 1.9f;
      const float elbowX = shoulderX + side * head * dice.Between(0.2f, 1.0f),
                  elbowY = shoulderY - head * dice.Between(1.2f, 1.8f);
      const float handX = elbowX + side * head * dice.Between(-0.7f, 0.4f),
                  handY = elbowY - head * dice.Between(1.3f, 2.0f);
      const int arm = std::max(3, static_cast<int>(head * 0.52f));
      cv::line(mask, point(shoulderX, shoulderY), point(elbowX, elbowY), ink, arm, cv::LINE_AA);
      cv::line(mask, point(elbowX, elbowY), point(handX, handY), ink, static_cast<int>(static_cast<float>(arm) * 0.85f),
               cv::LINE_AA);
      cv::circle(mask, point(handX, handY), static_cast<int>(head * 0.36f), ink, -1, cv::LINE_AA);
    }
  }
}

Canvas Concert(cv::Size size) {
  struct Beam {
    float place, tilt, width;
    Color color;
  };
  const Beam beams[] = {
      {-0.86f, 0.62f, 0.085f, Rgb(0xFF2E8A)},  {-0.60f, 0.20f, 0.060f, Rgb(0x3C7BFF)},
      {-0.36f, -0.30f, 0.070f, Rgb(0xFFB020)}, {-0.12f, 0.30f, 0.055f, Rgb(0x22E0D0)},
      {0.12f, -0.30f, 0.055f, Rgb(0x22E0D0)},  {0.36f, 0.30f, 0.070f, Rgb(0xFFB020)},
      {0.60f, -0.20f, 0.060f, Rgb(0x3C7BFF)},  {0.86f, -0.62f, 0.085f, Rgb(0xFF2E8A)},
  };
  const Plane smoke = Clouds(size, 300, 5, 11);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    Color light = Gray(0);
    float sum = 0;
    const float haze = 0.45f + 1.1f * smoke(s.y, s.x);
    for (const Beam& beam : beams) {
      const float dx = s.u - beam.place * s.aspect, dy = s.v + 1.04f;
      const float r = Hypot(dx, dy), off = Atan2(dx, dy) - beam.tilt;
      if (std::abs(off) > 0.7f && r > 0.15f) continue;
      const float power =
          (Bell(off, beam.width) + 0.30f * Bell(off, beam.width * 2.4f)) * Exp(-r * 0.62f) * haze * 0.95f +
          1.6f * Bell(r, 0.050f);
      light += beam.color * power + Gray(1) * (0.9f * Bell(r, 0.030f) + 0.18f * power * power);
      sum += power;
    }
    const float glow = 0.34f * Smooth(0.15f, 0.95f, s.v) * haze;
    light += Rgb(0x6A28C8) * glow;
    sum += glow;
    const float shade = 0.22f;  // the hall is dark
    const float alpha = 1 - Exp(-0.85f * sum);
    const float all = alpha + shade * (1 - alpha);
    const float top = std::max({light[0], light[1], light[2], 1e-4f});
    return WithAlpha(light * (std::min(1.0f, 0.35f + top) / top * alpha / all), all);
  });
  Mask back(size, uint8_t{0}), front(size, uint8_t{0});
  DrawCrowd(back, 0.83f, 30, 12);
  DrawCrowd(front, 0.92f, 50, 13);
  CoverMask(canvas, back, Rgb(0x140A22), 0.88f);
  CoverMask(canvas, front, Rgb(0x06040A), 1);
  return canvas;
}

Canvas WindowShades(cv::Size size) {
  constexpr float kSlats = 13;
  const Plane wood = Noise(size, 320, 4, 21);
  return Shade(size, [&](const Spot& s) {
    const float place = (s.v + 1) / 2 * kSlats, t = place - std::floor(place);
    const float cord = std::min(std::abs(std::abs(s.u) - 0.62f * s.aspect), std::abs(s.u));
    const float slat = Smooth(0.0f, 0.025f, t) * (1 - Smooth(0.575f, 0.60f, t));
    const float round = 0.62f + 0.38f * Sin(Clamp01(t / 0.6f) * kPi) - 0.30f * Smooth(0.35f, 0.60f, t);
    const Color timber = Mix(Rgb(0xC89A62), Rgb(0xA87844), wood(s.y, s.x)) * round;
    const float shadow = 0.45f * Smooth(0.85f, 0.55f, t) * (1 - slat);
    Pixel p = WithAlpha(timber, slat * 0.96f);
    if (slat < 1) Cover(p, Gray(0), shadow * (1 - slat));
    Cover(p, Rgb(0xE9DCC4) * (0.65f + 0.35f * Sin(place * 40)), 0.92f * (1 - Smooth(0.0035f, 0.0060f, cord)));
    return p;
  });
}

// Strong in contrast, because only a fifth of it shows.
Canvas Woven(cv::Size size) {
  const Plane slub = Noise(size, 220, 8, 31), slubDown = Noise(size, 8, 220, 32), tone = Clouds(size, 300, 3, 33);
  return Shade(size, [&](const Spot& s) {
    constexpr float kPeriod = 26;
    const float cx = static_cast<float>(s.x) / kPeriod, cy = static_cast<float>(s.y) / kPeriod;
    const float fx = cx - std::floor(cx), fy = cy - std::floor(cy);
    const bool weft = (static_cast<int>(cx) + static_cast<int>(cy)) % 2 == 0;
    const float along = weft ? fx : fy, across = weft ? fy : fx;
    const float fibres = 0.85f + 0.15f * Sin((across + 0.15f * along) * 22);
    const float crest = Pow(Sin(across * kPi), 0.55f) * (0.45f + 0.55f * Sin(along * kPi)) * fibres;
    const float yarn = 0.70f + 0.6f * (weft ? slub : slubDown)(s.y, s.x) * 0.8f;
    const Color dyed = weft ? Rgb(0xF2DDB8) : Rgb(0xB88A5C);
    return Opaque(dyed * (crest * yarn * (0.80f + 0.4f * tone(s.y, s.x))));
  });
}

// Stands alone at half strength, hence bright.
Canvas GrungeRays(cv::Size size) {
  const Plane worn = Clouds(size, 150, 6, 41), speck = Clouds(size, 9, 3, 42), fold = Noise(size, 300, 300, 43);
  constexpr float kRays = 22;
  return Shade(size, [&](const Spot& s) {
    const float du = s.u, dv = s.v - 0.35f, r = Hypot(du, dv), angle = Atan2(dv, du);
    const float turn = angle / (2 * kPi) * kRays, t = turn - std::floor(turn);
    const float soft = 0.004f * kRays / (r + 0.05f);
    const float ray = Smooth(0, soft, t) * (1 - Smooth(0.5f, 0.5f + soft, t));
    Color c = Mix(Rgb(0xFFF2C8), Rgb(0x2AA6A0), ray);
    c = Mix(Rgb(0xFFF6C8), c, Smooth(0.02f, 0.85f, r + 0.2f * (fold(s.y, s.x) - 0.5f)));
    c = Mix(c, Rgb(0xF7B23C), 0.55f * Smooth(0.9f, 1.9f, r) * (1 - ray));
    c = Mix(c, Rgb(0xFFFFFF), 0.85f * Smooth(0.58f, 0.66f, worn(s.y, s.x)) * Smooth(0.42f, 0.56f, speck(s.y, s.x)));
    c = Mix(c, Rgb(0x4A2614), 0.75f * Smooth(0.40f, 0.33f, worn(s.y, s.x)) * Smooth(0.40f, 0.60f, speck(s.y, s.x)));
    return Opaque(c * (1 - 0.55f * Smooth(0.75f, 1.45f, s.Oval() + 0.3f * (worn(s.y, s.x) - 0.5f))));
  });
}

constexpr Material kStages[] = {
    {material::kConcertWide, Mount::kTopFirst, Concert},
    {material::kConcertNarrow, Mount::kTopFirst, Concert},
    {material::kWindowShadesWide, Mount::kTopFirst, WindowShades},
    {material::kWindowShadesNarrow, Mount::kTopFirst, WindowShades},
    {material::kWovenWide, Mount::kTopFirst, Woven},
    {material::kWovenNarrow, Mount::kTopFirst, Woven},
    {material::kGrungeRays, Mount::kTopFirst, GrungeRays},
};

}  // namespace

std::span<const Material> Stages() {
  return kStages;
}
