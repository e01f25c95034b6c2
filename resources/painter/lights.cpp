// Light: leaks, shines, flares, bokeh, bursts.
#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

// Noise over the angle around a centre: rays. `fine` is the number of rays around the circle.
class Rays {
 public:
  Rays(int fine, uint32_t seed) : values_(static_cast<size_t>(fine)) {
    Dice dice(seed);
    for (float& value : values_) value = dice.Next();
  }
  float At(float angle) const {
    const float turn = angle / (2 * kPi);
    const float place = (turn - std::floor(turn)) * static_cast<float>(values_.size());
    const size_t i = static_cast<size_t>(place) % values_.size();
    return Mix(values_[i], values_[(i + 1) % values_.size()], Smooth(0, 1, place - std::floor(place)));
  }

 private:
  std::vector<float> values_;
};

// Sunlight from beyond the top left corner.
Canvas CornerShine(cv::Size size) {
  const Rays broad(64, 11), fine(420, 12);
  const Plane haze = Clouds(size, 340, 4, 13);
  return Shade(size, [&](const Spot& s) {
    const float dx = s.u + s.aspect + 0.12f, dy = s.v + 1.18f;
    const float r = Hypot(dx, dy), angle = Atan2(dy, dx);
    const float ray = Pow(broad.At(angle), 1.5f) * 0.75f + fine.At(angle) * 0.25f;
    const float glow = Exp(-r * 1.7f);
    const float light = glow * 1.2f + ray * Exp(-r * 0.85f) * 0.75f * (0.6f + 0.8f * haze(s.y, s.x));
    return Opaque(Mix(Rgb(0xFF9A3C), Rgb(0xFFF1CF), Clamp01(light)) * (light * 0.95f));
  });
}

// A lens flare: glow, spikes, ring, and ghosts on the line through the middle.
Canvas LensFlare(cv::Size size) {
  struct Ghost {
    float place, radius;
    Color color;
    float strength;
    bool ring;
  };
  const Ghost ghosts[] = {
      {0.45f, 0.045f, Rgb(0xFFC27A), 0.30f, false}, {0.75f, 0.10f, Rgb(0x7FC8FF), 0.13f, true},
      {1.10f, 0.06f, Rgb(0x9CFFB0), 0.17f, false},  {1.35f, 0.17f, Rgb(0xFF9ACB), 0.11f, true},
      {1.62f, 0.05f, Rgb(0xFFF0A0), 0.26f, false},  {1.95f, 0.26f, Rgb(0x8CA8FF), 0.11f, true},
      {2.20f, 0.09f, Rgb(0xFFB080), 0.16f, false},
  };
  const Rays spikes(230, 22);
  const float aspect = static_cast<float>(size.width) / static_cast<float>(size.height);
  const float lightU = -0.52f * aspect, lightV = -0.50f;
  return Shade(size, [&](const Spot& s) {
    const float dx = s.u - lightU, dy = s.v - lightV, r = Hypot(dx, dy), angle = Atan2(dy, dx);
    Color light = Rgb(0xFFF6E4) * (1.15f * Bell(r, 0.075f) + 0.55f * Exp(-r * 5.0f));
    light += Rgb(0xFFC890) * (0.30f * Exp(-r * 1.9f));
    const float star = Pow(std::abs(Cos(angle * 3 + 0.4f)), 60.0f);
    light += Rgb(0xFFE9C8) * (0.55f * star * Exp(-r * 3.2f));
    light += Rgb(0xFFDDB0) * (0.22f * spikes.At(angle) * Exp(-r * 3.0f));
    light += Rgb(0x9CC4FF) * (0.30f * Bell(dy, 0.010f) * Exp(-std::abs(dx) * 1.1f));
    for (int c = 0; c < 3; ++c) light[c] += 0.13f * Bell(r - 0.50f - 0.022f * static_cast<float>(2 - c), 0.020f);
    for (const Ghost& ghost : ghosts) {
      const float gx = s.u - lightU * (1 - ghost.place), gy = s.v - lightV * (1 - ghost.place);
      const float d = Hypot(gx, gy) / ghost.radius;
      if (d > 1.1f) continue;
      const float body =
          (ghost.ring ? Mix(0.35f, 1, Smooth(0.5f, 0.98f, d)) : 1 - 0.4f * d) * (1 - Smooth(0.94f, 1.05f, d));
      light += ghost.color * (ghost.strength * body);
    }
    return Opaque(light);
  });
}

void Bokeh(Canvas& canvas, int count, float minRadius, float maxRadius, float strength, std::span<const Color> colors,
           uint32_t seed) {
  Dice dice(seed);
  for (int i = 0; i < count; ++i) {
    const float x = dice.Next() * static_cast<float>(canvas.cols), y = dice.Next() * static_cast<float>(canvas.rows);
    const float radius = Mix(minRadius, maxRadius, Pow(dice.Next(), 1.6f));
    const Color& color = colors[static_cast<size_t>(dice.Below(static_cast<int>(colors.size())))];
    const float power = strength * dice.Between(0.35f, 1);
    StampAt(canvas, x, y, radius * 1.05f, [&](Pixel& p, float dx, float dy) {
      const float d = Hypot(dx, dy) * 1.05f;
      Add(p, color, power * (0.62f + 0.38f * Smooth(0.55f, 0.97f, d)) * (1 - Smooth(0.96f, 1.03f, d)));
    });
  }
}

// For dodge: lights out of focus. Never near white, which would burn every colour out.
Canvas PartyLights(cv::Size size) {
  const Plane haze = Clouds(size, 480, 3, 31);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float lower = Smooth(-0.6f, 1.1f, s.v);
    return Opaque(Mix(Rgb(0x0C0A14), Rgb(0x4A2A12), lower * haze(s.y, s.x) * 1.3f));
  });
  const Color colors[] = {Rgb(0xFFC36B), Rgb(0xFF8F4A), Rgb(0xFFE3B0), Rgb(0xFF6A7A), Rgb(0x8FB8FF)};
  Bokeh(canvas, 60, 26, 105, 0.42f, colors, 32);
  return cv::min(canvas, 0.80);
}

// For screen: film that saw daylight.
Canvas LightLeak(cv::Size size) {
  const Plane wave = Clouds(size, 420, 3, 41), fine = Clouds(size, 300, 2, 42);
  return Shade(size, [&](const Spot& s) {
    const float bend = 0.9f * (wave(s.y, s.x) - 0.5f);
    const float right = Smooth(0.80f, -0.10f, s.aspect - s.u + bend * 0.6f);
    const float left = Smooth(0.95f, -0.05f, s.u + s.aspect + 0.35f * (s.v + 0.2f) + bend);
    const float streak = Bell(s.u - 0.45f - 0.25f * s.v + bend * 0.15f, 0.42f);
    Color c = Mix(Rgb(0xE03A0C), Rgb(0xFFE08A), Smooth(0.35f, 1, right)) * (right * 0.96f);
    c += Mix(Rgb(0xB01A58), Rgb(0xFF9A6A), Smooth(0.4f, 1, left)) * (left * 0.78f);
    c += Rgb(0xFF7A30) * (streak * 0.20f * (0.5f + fine(s.y, s.x)));
    c += Rgb(0x183A4A) * (0.35f * Smooth(0.1f, -1, s.v) * wave(s.y, s.x));
    return Opaque(c);
  });
}

// For soft light: a low sun through a window and leaves, around neutral grey.
Canvas WindowLight(cv::Size size) {
  const Plane leaves = Clouds(size, 105, 2, 51);
  return Shade(size, [&](const Spot& s) {
    const float across = s.u * 0.86f + s.v * 0.50f, along = -s.u * 0.34f + s.v * 0.94f;
    const auto pane = [](float x, float period, float bar) {
      const float t = std::abs(x / period - std::floor(x / period) - 0.5f) * 2;
      return 1 - Smooth(1 - bar - 0.10f, 1 - bar + 0.06f, t);
    };
    const float inside = Smooth(1.15f, 0.95f, std::abs(across + 0.12f)) * Smooth(0.95f, 0.80f, std::abs(along));
    const float leaf = Smooth(0.34f, 0.60f, leaves(s.y, s.x) + 0.14f * along);
    const float light =
        inside * pane(across + 0.12f, 0.766f, 0.10f) * pane(along + 0.45f, 0.90f, 0.09f) * Mix(0.50f, 1, leaf);
    return Opaque(Mix(Rgb(0x5A6278), Rgb(0xFFE2A8), light));
  });
}

// For linear light, around neutral grey: a flame of stray light on a worn print.
Canvas GlowingPrint(cv::Size size) {
  const Plane wave = Clouds(size, 520, 4, 61), grain = Clouds(size, 5, 2, 62);
  return Shade(size, [&](const Spot& s) {
    const float bend = 0.8f * (wave(s.y, s.x) - 0.5f);
    const float leak = Bell(s.u - 0.75f * s.aspect + 0.4f * s.v + bend, 0.42f);
    Color c = Gray(0.50f - 0.14f * Smooth(0.5f, 1.4f, s.Oval()) + 0.045f * (grain(s.y, s.x) - 0.5f));
    c += Rgb(0xFF7A1E) * (0.27f * leak);
    c += Rgb(0x1E4A8A) * (0.16f * Smooth(0.1f, -1.0f, s.u / s.aspect + bend));
    return Opaque(c);
  });
}

// Coloured powder thrown at the viewer, around neutral grey.
Canvas PowderBurst(cv::Size size) {
  const Plane cloud = Clouds(size, 300, 6, 71), swirl = Clouds(size, 420, 3, 72), dust = Clouds(size, 14, 2, 73);
  const Rays rays(180, 74), broad(26, 75);
  return Shade(size, [&](const Spot& s) {
    const float r = s.Round(), angle = s.Angle() + 0.30f * (swirl(s.y, s.x) - 0.5f);
    const float hue = angle / (2 * kPi) + 0.85f * (swirl(s.y, s.x) - 0.5f);
    const float plume = 0.25f + 0.75f * broad.At(angle);
    const float reach =
        Smooth(1.75f, 0.25f, r - 0.9f * (plume - 0.5f)) * Smooth(0.24f, 0.62f, cloud(s.y, s.x) + 0.16f * plume);
    const float streak = 0.7f + 0.5f * rays.At(angle) * Smooth(0.1f, 0.8f, r) + 0.35f * (dust(s.y, s.x) - 0.5f);
    const Color powder = Hue(hue, 0.90f, 1) * streak;
    Color c = Mix(Rgb(0x6E6A72), powder, 0.92f * reach);
    c = Mix(c, Gray(1), 0.75f * Bell(r, 0.22f));
    return Opaque(c);
  });
}

Canvas BlueBurst(cv::Size size) {
  const Plane cloud = Clouds(size, 240, 5, 81);
  const Rays rays(340, 82), broad(46, 83);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float r = s.Round(), angle = s.Angle();
    const float ray = 0.55f * Pow(broad.At(angle + 0.12f * cloud(s.y, s.x)), 1.6f) + 0.45f * rays.At(angle);
    const float light = 0.95f * Exp(-r * 2.6f) + ray * Smooth(0.02f, 0.35f, r) * Exp(-r * 0.75f) * 0.95f;
    Color c = Mix(Rgb(0x10204E), Rgb(0x2E6CD8), Smooth(0.02f, 0.40f, light));
    c = Mix(c, Rgb(0x9FE4FF), Smooth(0.35f, 0.72f, light));
    return Opaque(Mix(c, Gray(1), Smooth(0.68f, 1.0f, light)));
  });
  Dice dice(84);
  for (int i = 0; i < 260; ++i) {  // sparks
    const float angle = dice.Next() * 2 * kPi, r = 0.12f + 1.5f * Pow(dice.Next(), 0.8f);
    const float half = static_cast<float>(size.height) / 2;
    const float x = static_cast<float>(size.width) / 2 + r * half * Cos(angle), y = half + r * half * Sin(angle);
    const float radius = dice.Between(2.0f, 5.5f), power = dice.Between(0.2f, 0.8f);
    StampAt(canvas, x, y, radius,
            [&](Pixel& p, float dx, float dy) { Add(p, Rgb(0xBFEAFF), power * Bell(Hypot(dx, dy), 0.5f)); });
  }
  return canvas;
}

// Zoom lines around neutral grey: strong outside, quiet in the middle.
Canvas ZoomRays(cv::Size size) {
  const Rays fine(620, 91), broad(88, 92);
  const Plane worn = Clouds(size, 90, 4, 93);
  return Shade(size, [&](const Spot& s) {
    const float r = s.Oval(), angle = s.Angle();
    const float line = (fine.At(angle) - 0.5f) * 0.55f + (broad.At(angle) - 0.5f) * 0.55f;
    const float v = 0.5f + line * Smooth(0.25f, 1.15f, r) * (0.55f + 0.9f * worn(s.y, s.x)) + 0.16f * Bell(r, 0.40f) -
                    0.16f * Smooth(0.8f, 1.45f, r);
    return Opaque(Mix(Gray(v), Rgb(0xFFD9A0) * v * 1.1f, 0.35f));
  });
}

constexpr Material kLights[] = {
    {material::kLinearDodge, Mount::kBottomFirst, CornerShine},
    {material::kShine, Mount::kBottomFirst, LensFlare},
    {material::kMergeLight, Mount::kBottomFirst, PartyLights},
    {material::kScreen, Mount::kBottomFirst, LightLeak},
    {material::kSoftLight, Mount::kBottomFirst, WindowLight},
    {material::kLinearLight, Mount::kBottomFirst, GlowingPrint},
    {material::kHardLight, Mount::kBottomFirst, PowderBurst},
    {material::kColorExplosion, Mount::kBottomFirst, BlueBurst},
    {material::kRadial, Mount::kBottomFirst, ZoomRays},
};

}  // namespace

std::span<const Material> Lights() {
  return kLights;
}
