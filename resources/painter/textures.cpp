// Surfaces: paper, canvas, film, print, glass of a tube.
#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

// Threads over and under each other, 0 (gap) to 1 (crest).
float Weave(float x, float y, float period) {
  const float cx = x / period, cy = y / period;
  const bool over = (static_cast<int>(std::floor(cx)) + static_cast<int>(std::floor(cy))) % 2 == 0;
  const float fx = Sin((cx - std::floor(cx)) * kPi), fy = Sin((cy - std::floor(cy)) * kPi);
  return over ? fy * (0.55f + 0.45f * fx) : fx * (0.55f + 0.45f * fy);
}

// For multiply: coarse linen, stained and dark towards its rim.
Canvas AncientCanvas(cv::Size size) {
  const Plane wobbleX = Noise(size, 60, 60, 11), wobbleY = Noise(size, 60, 60, 12);
  const Plane slub = Noise(size, 160, 6, 13), slubDown = Noise(size, 6, 160, 14), stain = Clouds(size, 420, 5, 15);
  return Shade(size, [&](const Spot& s) {
    const float x = static_cast<float>(s.x) + 5 * wobbleX(s.y, s.x),
                y = static_cast<float>(s.y) + 5 * wobbleY(s.y, s.x);
    const float thread = Weave(x, y, 6.5f) * (0.75f + 0.35f * slub(s.y, s.x)) * (0.75f + 0.35f * slubDown(s.y, s.x));
    const float old = Smooth(0.42f, 0.75f, stain(s.y, s.x)) * 0.34f + Smooth(0.55f, 1.40f, s.Oval()) * 0.75f;
    return Opaque(Mix(Rgb(0xFFF3DA), Rgb(0x7A5226), Clamp01(old)) * (0.66f + 0.40f * thread));
  });
}

// For multiply: sky filter above, warm filter below.
Canvas GraduatedFilter(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    const float line = s.v + 0.06f * s.u;
    Color c = Mix(Rgb(0x6FA3E6), Gray(1), Smooth(-1.05f, 0.05f, line));
    c = Mix(c, Rgb(0xF7B66A), Smooth(-0.02f, 1.10f, line));
    return Opaque(c * (1 - 0.30f * Smooth(0.75f, 1.45f, s.Oval())));
  });
}

// For multiply: a letter that was folded, stained and kept for a century.
Canvas OldPaper(cv::Size size) {
  const Plane stain = Clouds(size, 360, 6, 21), fibre = Noise(size, 14, 2.2f, 22), speck = Noise(size, 5, 5, 23);
  const Plane rough = Clouds(size, 70, 4, 24), bend = Noise(size, 240, 240, 25);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float edge = s.Edge() + 0.13f * (rough(s.y, s.x) - 0.5f);
    const float foxing = Smooth(0.50f, 0.72f, stain(s.y, s.x));
    Color c = Mix(Rgb(0xFBEFD0), Rgb(0xD9B47A), 0.75f * foxing);
    c = Mix(c, Rgb(0x6E4318), 0.85f * Smooth(0.30f, -0.04f, edge));
    c = Mix(c, Rgb(0x9A6A34), 0.50f * Smooth(0.93f, 1.02f, speck(s.y, s.x)) * Smooth(0.40f, 0.62f, stain(s.y, s.x)));
    float shade = 0.95f + 0.07f * (fibre(s.y, s.x) - 0.5f) + 0.10f * (rough(s.y, s.x) - 0.5f);
    const float wave = 0.012f * (bend(s.y, s.x) - 0.5f);
    for (const float fold : {s.u / s.aspect + 0.34f + wave, s.u / s.aspect - 0.33f + wave, s.v + 0.02f + wave}) {
      shade -=
          0.20f * Bell(fold + 0.0016f, 0.0022f) + 0.07f * Smooth(0.10f, 0.0f, std::abs(fold)) * (fold < 0 ? 1 : 0.2f);
      shade += 0.07f * Bell(fold - 0.0035f, 0.0025f);
    }
    return Opaque(c * shade);
  });
  return canvas;
}

// For multiply with the frame in grey: a tube of the fifties.
Canvas OldTube(cv::Size size) {
  const Plane snow = Grain(size, 31), band = Noise(size, 4000, 90, 32), line = Noise(size, 4000, 2, 33);
  return Shade(size, [&](const Spot& s) {
    const float x = s.u / s.aspect, barrel = Pow(std::abs(x / 0.955f), 4.5f) + Pow(std::abs(s.v / 0.935f), 4.5f);
    const float scan = 0.87f + 0.13f * Cos(static_cast<float>(s.y) * 2 * kPi / 4);
    const float dirt = 0.94f + 0.12f * (snow(s.y, s.x) - 0.5f) + 0.10f * (line(s.y, s.x) - 0.5f);
    const float glow = 1.20f - 0.42f * Smooth(0.25f, 1.35f, s.Oval()) + 0.16f * (band(s.y, s.x) - 0.5f);
    const Color phosphor = Rgb(0xDEF4FF) * (scan * dirt * glow);
    const Color bezel = Mix(Rgb(0x1A1612), Rgb(0x453C32), Bell(barrel - 1.22f, 0.10f));
    return Opaque(Mix(phosphor, bezel, Smooth(0.985f, 1.03f, barrel)));
  });
}

// For a stencilled poster: halftone towards the rim, worn print, paint beyond the stencil's edge.
Canvas Poster(cv::Size size, const Color& ink, uint32_t seed) {
  const Plane worn = Clouds(size, 60, 5, seed), rough = Clouds(size, 34, 4, seed + 1),
              paper = Noise(size, 3, 3, seed + 2);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float x = static_cast<float>(s.x), y = static_cast<float>(s.y);
    constexpr float kPitch = 15;
    const float a = (x + y) * 0.70711f / kPitch, b = (x - y) * 0.70711f / kPitch;
    const float screen = 0.5f + 0.25f * (Cos(a * 2 * kPi) + Cos(b * 2 * kPi));
    const float tone = Smooth(0.45f, 1.35f, s.Oval());
    const float dot = Smooth(1 - tone - 0.07f, 1 - tone + 0.07f, screen) * (tone > 0.02f ? 1.0f : 0.0f);
    Color c = Mix(Gray(1), Rgb(0xFFF8EA), 0.7f) * (0.965f + 0.07f * (paper(s.y, s.x) - 0.5f));
    c = Mix(c, ink, 0.72f * dot);
    const float border = s.Panel(0.075f, 0.02f) + 0.05f * (rough(s.y, s.x) - 0.5f);
    c = Mix(c, ink * 0.45f, 0.95f * Smooth(-0.004f, 0.004f, border));
    return Opaque(Mix(c, Rgb(0xFFF8EA), 0.5f * Smooth(0.64f, 0.74f, worn(s.y, s.x))));
  });
  Dice dice(seed + 3);
  for (int i = 0; i < 170; ++i) {  // spray
    const float x = dice.Next() * static_cast<float>(size.width), y = dice.Next() * static_cast<float>(size.height);
    const float radius = 1.5f + 9 * Pow(dice.Next(), 5.0f), strength = dice.Between(0.5f, 0.9f);
    StampAt(canvas, x, y, radius, [&](Pixel& p, float dx, float dy) {
      Cover(p, ink * 0.6f, strength * (1 - Smooth(0.75f, 1, Hypot(dx, dy))));
    });
  }
  return canvas;
}
Canvas RedPoster(cv::Size size) {
  return Poster(size, Rgb(0xE13724), 41);
}
Canvas GreenPoster(cv::Size size) {
  return Poster(size, Rgb(0x1F9A3C), 42 * 7);
}
Canvas BluePoster(cv::Size size) {
  return Poster(size, Rgb(0x2846EB), 43 * 9);
}

void AddScratches(Canvas& canvas, float strength, uint32_t seed) {
  const cv::Size size = canvas.size();
  const Mask bright = Strokes(size, 26, kPi / 2, 0.03f, 200, 1500, 1, seed);
  const Mask dark = Strokes(size, 16, kPi / 2, 0.02f, 300, 2200, 1, seed + 1);
  const Mask nicks = Strokes(size, 70, 0.6f, 3.0f, 6, 46, 1, seed + 2);
  CoverMask(canvas, dark, Rgb(0x1A120A), 0.55f * strength);
  CoverMask(canvas, bright, Rgb(0xFFF6E0), 0.75f * strength);
  CoverMask(canvas, nicks, Rgb(0xFFF6E0), 0.55f * strength);
  Dice dice(seed + 3);
  for (int i = 0; i < 240; ++i) {  // dust
    const float x = dice.Next() * static_cast<float>(size.width), y = dice.Next() * static_cast<float>(size.height);
    const float radius = 1.2f + 5 * Pow(dice.Next(), 4.0f);
    const Color color = dice.Next() < 0.5f ? Rgb(0xFFF6E0) : Rgb(0x1A120A);
    const float power = strength * dice.Between(0.3f, 0.8f);
    StampAt(canvas, x, y, radius,
            [&](Pixel& p, float dx, float dy) { Cover(p, color, power * (1 - Smooth(0.6f, 1, Hypot(dx, dy)))); });
  }
}

// For hard light, around neutral grey: sepia film that ran a thousand times.
Canvas WornFilm(cv::Size size) {
  const Plane grain = Clouds(size, 3, 2, 51), blotch = Clouds(size, 300, 4, 52), streak = Noise(size, 3, 4000, 53);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    float v = 0.98f + 0.16f * (blotch(s.y, s.x) - 0.5f) + 0.14f * (grain(s.y, s.x) - 0.5f) +
              0.07f * (streak(s.y, s.x) - 0.5f);
    v *= 1 - 0.72f * Smooth(0.55f, 1.42f, s.Oval());
    return Opaque(Rgb(0x9C7E54) * v);
  });
  AddScratches(canvas, 0.8f, 54);
  return canvas;
}

// For linear burn, hence near white: a print that yellowed.
Canvas FadedPrint(cv::Size size) {
  const Plane wash = Clouds(size, 520, 4, 61), grain = Noise(size, 3, 3, 62);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    Color c = Mix(Rgb(0xFFF4DC), Rgb(0xE9CFE0), Smooth(0.30f, 0.70f, wash(s.y, s.x)));
    c = Mix(c, Rgb(0xA9805C), 0.85f * Smooth(0.60f, 1.45f, s.Oval() + 0.2f * (wash(s.y, s.x) - 0.5f)));
    return Opaque(c * (0.98f + 0.05f * (grain(s.y, s.x) - 0.5f)));
  });
  return canvas;
}

// For linear burn with a colour: watercolour paper, washes that dried with an edge.
Canvas DriedWash(cv::Size size) {
  const Plane wash = Clouds(size, 620, 5, 71), paper = Clouds(size, 7, 2, 72);
  return Shade(size, [&](const Spot& s) {
    const float w = wash(s.y, s.x) + 0.20f * Smooth(0.3f, 1.35f, s.Oval());
    float v = 0.98f;
    for (const float level : {0.46f, 0.56f, 0.66f})
      v -=
          0.055f * Smooth(level - 0.09f, level, w) * Smooth(level + 0.16f, level, w) + 0.035f * Bell(w - level, 0.007f);
    v -= 0.30f * Smooth(0.80f, 1.50f, s.Oval());
    return Opaque(Mix(Gray(1), Rgb(0xFFF2E2), 0.6f) * (v + 0.07f * (paper(s.y, s.x) - 0.5f)));
  });
}

// For the burnt paper blend: light sepia burns to brown and to nothing at a ragged edge.
Canvas BurntPaper(cv::Size size) {
  const Plane rough = Clouds(size, 190, 6, 81), stain = Clouds(size, 300, 5, 82), fibre = Noise(size, 16, 2.5f, 83);
  return Shade(size, [&](const Spot& s) {
    const float edge = s.Edge() + 0.36f * (rough(s.y, s.x) - 0.5f) + 0.01f;
    Color c = Mix(Rgb(0xFFF2D8), Rgb(0xF0D9AE), Smooth(0.40f, 0.72f, stain(s.y, s.x)));
    c = c * (0.97f + 0.07f * (fibre(s.y, s.x) - 0.5f));
    c = Mix(c, Rgb(0xC08A48), Smooth(0.26f, 0.10f, edge));
    c = Mix(c, Rgb(0x4A2A10), Smooth(0.15f, 0.06f, edge));
    return Opaque(Mix(c, Gray(0), Smooth(0.07f, 0.035f, edge)));
  });
}

// By alpha: rim, dust and scratches of an old photograph.
Canvas OldPhoto(cv::Size size) {
  const Plane rough = Clouds(size, 120, 5, 91), stain = Clouds(size, 380, 4, 92);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float d = s.Panel(0.045f, 0.015f) + 0.010f * (rough(s.y, s.x) - 0.5f);
    const float paper = Smooth(-0.003f, 0.003f, d);
    const float burn = 0.62f * Smooth(0.62f, 1.42f, s.Oval() + 0.25f * (stain(s.y, s.x) - 0.5f));
    const float fog = 0.20f * Smooth(0.52f, 0.75f, stain(s.y, s.x));
    const Color inside = Mix(Rgb(0xC9A26A), Rgb(0x38200C), Smooth(0.05f, 0.45f, burn));
    const Color outside = Rgb(0xE9DDC2) * (0.96f + 0.12f * (rough(s.y, s.x) - 0.5f));
    return WithAlpha(Mix(inside, outside, paper), std::max(Clamp01(burn + fog + 0.10f), paper));
  });
  AddScratches(canvas, 0.75f, 93);
  return canvas;
}

// By alpha: a picture frame with its mat.
Canvas PictureFrame(cv::Size size) {
  const Plane fibre = Clouds(size, 4, 2, 101), woodAcross = Noise(size, 260, 3, 102),
              woodDown = Noise(size, 3, 260, 103);
  return Shade(size, [&](const Spot& s) {
    const float d = s.Panel(0.215f, 0.012f), rim = s.Panel(0.075f, 0.0f);
    if (d < 0) {  // the picture, in the mat's shadow
      const Spot shifted{s.x, s.y, s.u - 0.014f, s.v - 0.020f, s.aspect};
      return WithAlpha(Gray(0), 0.42f * Smooth(-0.045f, 0.012f, shifted.Panel(0.215f, 0.012f)) + 0.06f);
    }
    if (rim < 0) {
      const bool topLeft = s.aspect - std::abs(s.u) - 0.215f < 1 - std::abs(s.v) - 0.215f ? s.u < 0 : s.v < 0;
      const float bevel = 1 - Smooth(0.013f, 0.016f, d);
      const Color mat = Rgb(0xF5F0E6) * (0.985f + 0.05f * (fibre(s.y, s.x) - 0.5f));
      const float shadow = 0.30f * Smooth(-0.030f, 0.0f, rim);
      return Opaque(Mix(mat, topLeft ? Rgb(0xCFC8BA) : Rgb(0xFFFFFF), bevel) * (1 - shadow));
    }
    const bool across = s.aspect - std::abs(s.u) > 1 - std::abs(s.v);
    const float grain = across ? woodAcross(s.y, s.x) : woodDown(s.y, s.x);
    const float profile = Sin(Clamp01((0.075f - s.Edge()) / 0.075f) * kPi);
    return Opaque(Mix(Rgb(0x3A2212), Rgb(0x8A5A32), 0.30f + 0.45f * (grain - 0.3f)) * (0.55f + 0.75f * profile));
  });
}

constexpr Material kTextures[] = {
    {material::kAncientCanvas, Mount::kBottomFirst, AncientCanvas},
    {material::kFilter1, Mount::kBottomFirst, GraduatedFilter},
    {material::kOldPaper, Mount::kBottomFirst, OldPaper},
    {material::kOldTV, Mount::kBottomFirst, OldTube},
    {material::kStencilPosterRed, Mount::kBottomFirst, RedPoster},
    {material::kStencilPosterGreen, Mount::kBottomFirst, GreenPoster},
    {material::kStencilPosterBlue, Mount::kBottomFirst, BluePoster},
    {material::kOverlay, Mount::kBottomFirst, WornFilm},
    {material::kMergeLinear, Mount::kBottomFirst, FadedPrint},
    {material::kLinearBurn, Mount::kBottomFirst, DriedWash},
    {material::kBurntPaper, Mount::kBottomFirst, BurntPaper},
    {material::kOldTime, Mount::kBottomFirst, OldPhoto},
    {material::kMergeImage, Mount::kBottomFirst, PictureFrame},
};

}  // namespace

std::span<const Material> Textures() {
  return kTextures;
}
