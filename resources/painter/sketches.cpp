// Drawing grounds: crayon on black, pencil on paper.
#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

// 0 in the middle, 1 where the drawing is unfinished, with the edge of broad brush strokes.
Plane Unfinished(cv::Size size, uint32_t seed) {
  const Plane brush = Noise(size, 220, 5, seed), rough = Clouds(size, 240, 4, seed + 1);
  Plane out(size);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const Spot s = SpotAt(size, x, y);
      out(y, x) = Smooth(0.16f, 0.02f, s.Edge() + 0.20f * (brush(y, x) - 0.5f) + 0.16f * (rough(y, x) - 0.5f) - 0.02f);
    }
  }
  return out;
}

// For addition and screen: black is clean, white is paper that no crayon reached.
Canvas CrayonOnBlack(cv::Size size) {
  const Plane open = Unfinished(size, 11), tooth = Clouds(size, 4, 2, 13), patch = Clouds(size, 260, 3, 14);
  const Mask right = Soft(Strokes(size, 2600, -0.85f, 0.10f, 60, 260, 1, 15), 0.7f);
  const Mask left = Soft(Strokes(size, 900, 0.75f, 0.10f, 50, 200, 1, 16), 0.7f);
  return Shade(size, [&](const Spot& s) {
    const float hatch = std::max(static_cast<float>(right(s.y, s.x)), 0.8f * static_cast<float>(left(s.y, s.x))) / 255;
    const float broken =
        Smooth(0.38f, 0.62f, tooth(s.y, s.x)) * Smooth(0.30f, 0.66f, patch(s.y, s.x) + 0.10f * s.Oval());
    const float paper = 0.26f * Smooth(0.56f, 0.74f, tooth(s.y, s.x));
    return Opaque(Gray(std::max(open(s.y, s.x), 0.50f * hatch * broken + 0.5f * paper)));
  });
}

// A pencil ground: graphite hatching in the middle, bare paper around it.
Canvas PencilOnPaper(cv::Size size) {
  const Plane open = Unfinished(size, 21), tooth = Clouds(size, 4, 2, 23), patch = Clouds(size, 340, 3, 24);
  const Mask right = Soft(Strokes(size, 5200, -0.80f, 0.10f, 60, 240, 2, 25), 0.8f);
  const Mask left = Soft(Strokes(size, 2200, 0.65f, 0.12f, 50, 180, 2, 26), 0.8f);
  return Shade(size, [&](const Spot& s) {
    const float hatch = std::max(static_cast<float>(right(s.y, s.x)), 0.9f * static_cast<float>(left(s.y, s.x))) / 255;
    const float pressed = 0.55f + 0.7f * Smooth(0.30f, 0.70f, patch(s.y, s.x));
    float v = 0.46f - 0.26f * hatch * pressed + 0.16f * (tooth(s.y, s.x) - 0.5f);
    v = Mix(v, 0.95f + 0.06f * (tooth(s.y, s.x) - 0.5f), open(s.y, s.x));
    return Opaque(Mix(Gray(1), Rgb(0xFFFAF0), 0.8f) * v);
  });
}

constexpr Material kSketches[] = {
    {material::kSketchBlack, Mount::kBottomFirst, CrayonOnBlack},
    {material::kSketch, Mount::kBottomFirst, PencilOnPaper},
};

}  // namespace

std::span<const Material> Sketches() {
  return kSketches;
}
