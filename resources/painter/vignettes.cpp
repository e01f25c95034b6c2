// Pictures whose work lies at the rim: vignettes, masks, lens and tone circles.
#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

Canvas SoftOval(cv::Size size) {
  return Shade(size, [](const Spot& s) { return Opaque(Gray(1 - 0.82f * Smooth(0.55f, 1.42f, s.Oval()))); });
}

Canvas TightCircle(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    const float r = Hypot(s.u * 0.80f, s.v);
    return Opaque(Mix(Gray(1), Rgb(0x0A0A10), 0.97f * Smooth(0.58f, 1.45f, r)));
  });
}

Canvas SoftPanel(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    return Opaque(Mix(Gray(1), Rgb(0x15120E), 0.92f * Smooth(-0.20f, 0.18f, s.Panel(0.13f, 0.35f))));
  });
}

Canvas WarmRim(cv::Size size) {
  const Plane cloud = Clouds(size, 420, 3, 41);
  return Shade(size, [&](const Spot& s) {
    const float r = s.Oval() + 0.22f * (cloud(s.y, s.x) - 0.5f);
    const Color warm = Mix(Rgb(0xFFE9C4), Rgb(0x5A2C0C), Smooth(0.75f, 1.35f, r));
    return Opaque(Mix(Gray(1), warm, Smooth(0.35f, 0.95f, r)));
  });
}

Canvas ColdNight(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    const float r = Hypot(s.u / s.aspect + 0.08f, s.v + 0.14f);
    const Color cold = Mix(Rgb(0xC9DEFF), Rgb(0x081430), Smooth(0.7f, 1.35f, r));
    return Opaque(Mix(Gray(1), cold, Smooth(0.3f, 0.9f, r)));
  });
}

// The gate of an old camera: a rough black frame, rounded corners, lint on its edge.
Canvas FilmGate(cv::Size size) {
  const Plane ragged = Clouds(size, 46, 4, 61), slow = Clouds(size, 300, 2, 62);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    const float d = s.Panel(0.055f, 0.09f) + 0.022f * (ragged(s.y, s.x) - 0.5f) + 0.03f * (slow(s.y, s.x) - 0.5f);
    const float light = 1 - 0.50f * Smooth(0.45f, 1.45f, s.Oval());
    return Opaque(Mix(Mix(Gray(1), Rgb(0xF2E6D2), 0.6f) * light, Rgb(0x060504), Smooth(-0.006f, 0.006f, d)));
  });
  Mask lint(size, uint8_t{0});
  Dice dice(63);
  for (int i = 0; i < 38; ++i) {
    const bool onSide = dice.Next() < 0.4f;
    const float along = dice.Next();
    const bool far = dice.Next() < 0.5f;
    const float inset = dice.Between(0.018f, 0.034f);
    const cv::Point2f at = onSide
                               ? cv::Point2f(static_cast<float>(size.width) * (far ? 1 - inset * 0.8f : inset * 0.8f),
                                             static_cast<float>(size.height) * along)
                               : cv::Point2f(static_cast<float>(size.width) * along,
                                             static_cast<float>(size.height) * (far ? 1 - inset : inset));
    // One by one: a compiler may draw a call's arguments in any order.
    const int thickness = 1 + dice.Below(2);
    const float end = dice.Between(120, 300), begin = dice.Between(0, 90), turn = dice.Between(0, 360);
    const int height = 2 + dice.Below(14), width = 2 + dice.Below(22);
    cv::ellipse(lint, at, cv::Size(width, height), turn, begin, end, cv::Scalar(255), thickness, cv::LINE_AA);
  }
  CoverMask(canvas, lint, Rgb(0x060504), 0.9f);
  return canvas;
}

// For minimum: the frame stays where this is bright, and cannot be brighter than dusk at the rim.
Canvas Dusk(cv::Size size) {
  const Plane cloud = Clouds(size, 460, 3, 71);
  return Shade(size, [&](const Spot& s) {
    const float r = s.Oval() + 0.24f * (cloud(s.y, s.x) - 0.5f) + 0.10f * std::max(-s.v, 0.0f);
    return Opaque(
        Mix(Mix(Rgb(0xE9EDF2), Rgb(0x5B6E9A), Smooth(0.40f, 1.0f, r)), Rgb(0x0B1126), Smooth(0.85f, 1.40f, r)));
  });
}

Canvas WhiteRim(cv::Size size) {
  const Plane cloud = Clouds(size, 520, 2, 81);
  return Shade(size, [&](const Spot& s) {
    const float r = s.Oval() + 0.16f * (cloud(s.y, s.x) - 0.5f);
    return Opaque(Gray(Smooth(0.60f, 1.30f, r)));
  });
}

// A light heart and darker rim: multiplied it rounds the picture, overlaid it lifts the middle.
Canvas LightCircle(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    const float r = Hypot(s.u * 0.62f, s.v * 0.86f);
    return Opaque(Mix(Rgb(0xDEDAD2), Rgb(0x4A464C), Smooth(0.25f, 1.25f, r)));
  });
}

// Around the neutral grey of an overlay: a little light in the middle, a little shade outside.
Canvas NeutralCircle(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    const float r = Hypot(s.u * 0.62f, s.v * 0.86f);
    return Opaque(Mix(Rgb(0x9C9894), Rgb(0x4C4A52), Smooth(0.20f, 1.30f, r)));
  });
}

Canvas DarkCorners(cv::Size size) {
  return Shade(size, [](const Spot& s) {
    const float corner = Pow(std::abs(s.u) / s.aspect, 2.4f) + Pow(std::abs(s.v), 2.4f);
    return Opaque(Gray(1 - 0.90f * Smooth(0.30f, 1.75f, corner)));
  });
}

// Colour stays where this is white.
Canvas FocusSpot(cv::Size size) {
  return Shade(size, [](const Spot& s) { return Opaque(Gray(1 - Smooth(0.42f, 0.78f, s.Round()))); });
}

constexpr Material kVignettes[] = {
    {material::kVignette1, Mount::kBottomFirst, SoftOval},
    {material::kVignette2, Mount::kBottomFirst, TightCircle},
    {material::kVignette3, Mount::kBottomFirst, SoftPanel},
    {material::kVignette4, Mount::kBottomFirst, WarmRim},
    {material::kVignette5, Mount::kBottomFirst, ColdNight},
    {material::kVignette6, Mount::kBottomFirst, FilmGate},
    {material::kDark, Mount::kBottomFirst, Dusk},
    {material::kVignetteWhite, Mount::kBottomFirst, WhiteRim},
    {material::kColorTuneCircle00, Mount::kBottomFirst, LightCircle},
    {material::kColorTuneCircle01, Mount::kBottomFirst, NeutralCircle},
    {material::kDarkCorners, Mount::kBottomFirst, DarkCorners},
    {material::kFocusColor, Mount::kBottomFirst, FocusSpot},
};

}  // namespace

std::span<const Material> Vignettes() {
  return kVignettes;
}
