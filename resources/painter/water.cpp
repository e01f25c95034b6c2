// Water: drops on glass, rain, bubbles.
#include <vector>

#include "painter/materials.h"
#include "resources/material_names.h"

namespace {

struct Drop {
  float x, y, radius;
};

// Drops that do not touch, large ones first.
std::vector<Drop> Scatter(cv::Size size, int count, float minRadius, float maxRadius, float gap, uint32_t seed) {
  Dice dice(seed);
  std::vector<Drop> drops;
  for (int i = 0; i < count; ++i) {
    const float rank = static_cast<float>(i) / static_cast<float>(count);
    const float radius = Mix(maxRadius, minRadius, Pow(rank, 0.24f)) * dice.Between(0.8f, 1);
    for (int attempt = 0; attempt < 30; ++attempt) {
      const Drop drop{dice.Next() * static_cast<float>(size.width), dice.Next() * static_cast<float>(size.height),
                      radius};
      const bool free = std::none_of(drops.begin(), drops.end(), [&](const Drop& d) {
        return Hypot(d.x - drop.x, d.y - drop.y) < (d.radius + drop.radius) * gap;
      });
      if (!free) continue;
      drops.push_back(drop);
      break;
    }
  }
  return drops;
}

// For multiply: a misted pane. What must look bright is white, the mist is a shade darker.
Canvas DropsOnGlass(cv::Size size) {
  const Plane mist = Clouds(size, 330, 5, 11), fine = Noise(size, 3, 3, 12), bend = Noise(size, 34, 34, 13);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    return Opaque(Rgb(0xC6D4DC) * (0.97f + 0.16f * (mist(s.y, s.x) - 0.5f) + 0.05f * (fine(s.y, s.x) - 0.5f)));
  });
  Dice dice(14);
  for (const Drop& drop : Scatter(size, 520, 4, 74, 1.10f, 15)) {
    const float tall = dice.Between(1.0f, 1.22f);
    // Shadow below, then the drop: dark at its top, light gathered at its bottom, a highlight.
    StampAt(canvas, drop.x + drop.radius * 0.06f, drop.y + drop.radius * 0.16f, drop.radius * 1.35f,
            [&](Pixel& p, float dx, float dy) {
              const float d = Hypot(dx * tall, dy) * 1.35f;
              p *= 1 - 0.30f * (1 - Smooth(0.75f, 1.3f, d));
              p[3] = 1;
            });
    StampAt(canvas, drop.x, drop.y, drop.radius * 1.15f, [&](Pixel& p, float dx, float dy) {
      const float wobble = 0.22f * (bend(static_cast<int>(drop.y + dy * drop.radius) & 511,
                                         static_cast<int>(drop.x + dx * drop.radius) & 1023) -
                                    0.5f);
      const float x = dx * tall * 1.15f, y = dy * 1.15f, d = Hypot(x, y) + wobble * 0.35f;
      if (d > 1.02f) return;
      const float height = std::sqrt(std::max(0.0f, 1 - d * d));
      float v = 0.62f + 0.36f * Smooth(-0.8f, 0.75f, y) - 0.42f * Smooth(0.70f, 1.0f, d) * Smooth(0.9f, -0.4f, y);
      v += 0.22f * Bell(Hypot(x + 0.05f, y - 0.55f), 0.34f);
      v = std::max(v, Smooth(0.28f, 0.16f, Hypot((x + 0.34f) * 1.25f, y + 0.40f)) * 1.0f);
      Cover(p, Mix(Rgb(0xB9D2E2), Gray(1), 0.55f + 0.3f * height) * v, 1 - Smooth(0.95f, 1.02f, d));
    });
  }
  return canvas;
}

// For addition, on black: streaks of rain and beads on the lens.
Canvas Rain(cv::Size size) {
  Canvas canvas = Plain(size, Opaque(Gray(0)));
  const float angle = kPi / 2 + 0.16f;
  CoverMask(canvas, Soft(Strokes(size, 240, angle, 0.03f, 60, 190, 1, 21), 1.1f), Rgb(0x9FB6C8), 0.75f);
  CoverMask(canvas, Soft(Strokes(size, 120, angle, 0.03f, 140, 360, 2, 22), 1.6f), Rgb(0xC4D8E6), 0.55f);
  for (const Drop& drop : Scatter(size, 250, 3.5f, 34, 1.3f, 23)) {
    StampAt(canvas, drop.x, drop.y, drop.radius * 1.05f, [](Pixel& p, float dx, float dy) {
      const float d = Hypot(dx, dy) * 1.05f;
      if (d > 1) return;
      const float rim = Smooth(0.62f, 0.93f, d) * (1 - Smooth(0.95f, 1, d));
      const float gathered = rim * Smooth(-0.5f, 0.9f, dy) * 0.75f + 0.16f * Smooth(-0.2f, 0.9f, dy) * (1 - d);
      const float spark = Smooth(0.30f, 0.10f, Hypot(dx + 0.36f, dy + 0.40f));
      const float light = 0.05f + gathered + 0.14f * rim + spark * 0.95f;
      const float cover = 1 - Smooth(0.93f, 1, d);
      for (int c = 0; c < 3; ++c) p[c] = Mix(p[c], p[c] * 0.3f + light * Rgb(0xDDEBF5)[c], cover);
    });
  }
  return canvas;
}

void Glint(Canvas& canvas, float x, float y, float radius, const Color& color, float power) {
  StampAt(canvas, x, y, radius, [&](Pixel& p, float dx, float dy) {
    const float across = Bell(dy, 0.030f) * Exp(-std::abs(dx) * 3.4f),
                down = Bell(dx, 0.030f) * Exp(-std::abs(dy) * 3.4f);
    const float fade = 1 - Smooth(0.75f, 1, std::max(std::abs(dx), std::abs(dy)));
    Add(p, color,
        power * fade * (across + down + 0.8f * Bell(Hypot(dx, dy), 0.10f) + 0.18f * Bell(Hypot(dx, dy), 0.42f)));
  });
}

// For overlay, on neutral grey: soap bubbles and stars.
Canvas BubblesAndStars(cv::Size size) {
  const Plane haze = Clouds(size, 460, 3, 31);
  Canvas canvas = Shade(size, [&](const Spot& s) {
    return Opaque(Mix(Rgb(0x7C7A84), Rgb(0x9A8AA8), Smooth(0.35f, 0.70f, haze(s.y, s.x))));
  });
  Dice dice(32);
  for (const Drop& bubble : Scatter(size, 46, 26, 150, 1.06f, 33)) {
    const float turn = dice.Next();
    StampAt(canvas, bubble.x, bubble.y, bubble.radius * 1.04f, [&](Pixel& p, float dx, float dy) {
      const float d = Hypot(dx, dy) * 1.04f;
      if (d > 1) return;
      const float cover = 1 - Smooth(0.975f, 1, d), film = Pow(d, 5.0f);
      const Color color = Hue(turn + 0.45f * Atan2(dy, dx) / kPi + 0.3f * d, 0.42f);
      Add(p, Mix(Gray(1), color, 0.75f), cover * (0.05f + 0.36f * film));
      Add(p, Gray(1), cover * 0.55f * Smooth(0.26f, 0.08f, Hypot((dx + 0.42f) * 0.8f, dy + 0.48f)));
      Add(p, Gray(1), cover * 0.22f * Smooth(0.20f, 0.05f, Hypot(dx - 0.46f, dy - 0.52f)));
    });
  }
  for (int i = 0; i < 90; ++i) {
    const float x = dice.Next() * static_cast<float>(size.width), y = dice.Next() * static_cast<float>(size.height);
    const float radius = 14 + 130 * Pow(dice.Next(), 3.5f), power = dice.Between(0.4f, 0.9f);
    Glint(canvas, x, y, radius, Mix(Gray(1), Hue(dice.Next(), 0.5f), 0.4f), power);
  }
  return canvas;
}

constexpr Material kWater[] = {
    {material::kWaterDrop3, Mount::kBottomFirst, DropsOnGlass},
    {material::kRaindrop, Mount::kBottomFirst, Rain},
    {material::kBubble, Mount::kBottomFirst, BubblesAndStars},
};

}  // namespace

std::span<const Material> Water() {
  return kWater;
}
