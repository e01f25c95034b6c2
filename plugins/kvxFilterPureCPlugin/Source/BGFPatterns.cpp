#include "Source/BGFPatterns.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "Source/PerspectiveTiles.h"
#include "Source/StackBlur.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/random.h"

void FillBlur(FrameView image, int32_t radius) {
  if (radius >= 1) StackBlur(image, std::min(radius, kMaxStackRadius));
}

namespace fill_pattern {
namespace {

constexpr int32_t kGrainSide = 100;
using Grain = std::array<int32_t, kGrainSide * kGrainSide>;

// A pitch cut from a formula; `fallback` where the formula gives none.
int32_t PitchOf(double pitch, int32_t fallback) {
  const int32_t cut = Trunc32(pitch);
  return cut < 1 ? fallback : cut;
}

// A packed copy of an image, to read from while it is painted.
class Copy {
 public:
  explicit Copy(FrameView image)
      : bytes_(static_cast<size_t>(image.width) * static_cast<size_t>(image.height) * 4),
        width_(image.width),
        height_(image.height) {
    for (int32_t y = 0; y < height_; ++y) {
      std::memcpy(View().Row(y), image.Row(y), static_cast<size_t>(width_) * 4);
    }
  }

  FrameView View() { return {bytes_.data(), width_, height_, width_ * 4}; }

 private:
  std::vector<uint8_t> bytes_;
  int32_t width_;
  int32_t height_;
};

void CopyColor(uint8_t* out, const uint8_t* in) {
  out[0] = in[0];
  out[1] = in[1];
  out[2] = in[2];
}

void SetGray(uint8_t* out, int32_t gray) {
  out[0] = out[1] = out[2] = static_cast<uint8_t>(gray);
}

void AddToColor(uint8_t* p, int32_t amount) {
  for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(std::clamp(p[c] + amount, 0, 255));
}

int32_t SumOfColor(const uint8_t* p) {
  return p[0] + p[1] + p[2];
}

// Cells of `pitch` by `pitch` pixels about anchors at its multiples: row by row, left to right. The first row and
// column of a cell lie `before` pixels ahead of its anchor. A cell's colour is that of its anchor, held within `lastX`
// and `lastY`, before the cell is painted. `paint(pixel, color, dx, dy)` gets distances from the anchor of at most one
// pitch.
template <typename Paint>
void ForEachCell(FrameView image, int32_t pitch, int32_t before, int32_t lastX, int32_t lastY, Paint paint) {
  const int64_t step = pitch;
  for (int64_t anchorY = 0; anchorY - before < image.height; anchorY += step) {
    const int32_t top = static_cast<int32_t>(std::max<int64_t>(anchorY - before, 0));
    const int32_t bottom = static_cast<int32_t>(std::min<int64_t>(anchorY - before + step, image.height));
    for (int64_t anchorX = 0; anchorX - before < image.width; anchorX += step) {
      const int32_t left = static_cast<int32_t>(std::max<int64_t>(anchorX - before, 0));
      const int32_t right = static_cast<int32_t>(std::min<int64_t>(anchorX - before + step, image.width));
      uint8_t color[3];
      CopyColor(color, image.Pixel(static_cast<int32_t>(std::clamp<int64_t>(anchorX, 0, std::max(lastX, 0))),
                                   static_cast<int32_t>(std::clamp<int64_t>(anchorY, 0, std::max(lastY, 0)))));
      for (int32_t y = top; y < bottom; ++y) {
        uint8_t* pixel = image.Pixel(left, y);
        for (int32_t x = left; x < right; ++x, pixel += 4) paint(pixel, color, x - anchorX, y - anchorY);
      }
    }
  }
}

// Discs of `pitch` across about the anchors; the picture stays between them.
void Discs(FrameView image, int32_t pitch, int32_t lastX, int32_t lastY) {
  const int64_t reach = int64_t{pitch} * pitch / 4;
  ForEachCell(image, pitch, pitch / 2, lastX, lastY, [=](uint8_t* p, const uint8_t* color, int64_t dx, int64_t dy) {
    if (dx * dx + dy * dy < reach) CopyColor(p, color);
  });
}

// Light that rises twice over each eighth of the height; `distance(dx, dy)` is taken from the middle.
template <typename Distance>
void Waves(FrameView image, int secondShift, Distance distance) {
  const int32_t pitch = std::max(image.height >> 3, 1);
  const int32_t half = image.height >> 4;
  std::vector<int32_t> light(static_cast<size_t>(pitch));
  for (int32_t d = 0; d < pitch; ++d) {
    light[static_cast<size_t>(d)] =
        d < half ? ((d << 8) / pitch << 7) >> 8 : (((d - half) << 8) / pitch) >> secondShift;
  }
  const int32_t centerX = image.width / 2;
  const int32_t centerY = image.height / 2;
  const int32_t* lights = light.data();
  ForFillRows(image, [=](int32_t y, uint8_t* p, int32_t width) {
    for (int32_t x = 0; x < width; ++x, p += 4) {
      AddToColor(p, lights[distance(x - centerX, y - centerY) % pitch]);
    }
  });
}

// One over a fast inverse square root: a guess from the bits and one Newton step. It comes out a little too great, so
// that whole distances stay whole.
int32_t FastDistance(int32_t dx, int32_t dy) {
  const float n = static_cast<float>(dx * dx + dy * dy);
  float inverse = std::bit_cast<float>(1597463007 - (std::bit_cast<int32_t>(n) >> 1));
  inverse = inverse * (1.5f - 0.5f * n * inverse * inverse);
  return static_cast<int32_t>(1.0f / inverse);
}

// The generator of the noise, shared by all of the process.
Grain DrawNoise(int64_t strength) {
  static std::mutex mutex;
  static uint32_t a = 123456789, b = 362436069, c = 521288629;
  const std::lock_guard<std::mutex> lock(mutex);
  Grain grain;
  for (int32_t& offset : grain) {
    uint32_t t = a ^ (a << 16);
    t ^= t >> 5;
    const uint32_t r = (t * 2 ^ t) ^ b ^ c;
    a = b;
    b = c;
    c = r;
    offset = static_cast<int32_t>(std::clamp<int64_t>((int64_t{r % 3} * 50 - 50) * strength / 256, -255, 255));
  }
  return grain;
}

// Shifts along a sine, in pixels, one for each of `count` rows or columns.
std::vector<int64_t> RippleShifts(int32_t count, int32_t height, float level) {
  const float amplitude = std::max(3.0f, (level * 0.8f + 0.01f) * static_cast<float>(height) / 10.0f);
  const float frequency = 60.0f / static_cast<float>(height);
  std::vector<int64_t> shifts(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) {
    shifts[static_cast<size_t>(i)] = Trunc32(std::sin(static_cast<float>(i) * frequency) * amplitude);
  }
  return shifts;
}

// A place beyond either end, mirrored into 0 .. size - 1.
int32_t Mirror(int64_t place, int32_t size) {
  if (place < 0) place = -place;
  if (place > size - 1) place = 2 * int64_t{size} - place - 2;
  return static_cast<int32_t>(std::clamp<int64_t>(place, 0, size - 1));
}

}  // namespace

void Gray(FrameView image, const FillInput&) {
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) SetGray(p, std::min(SumOfColor(p) >> 1, 255));
  }
}

void Blacknet(FrameView image, const FillInput& input) {
  const int32_t pitch = std::max(Trunc32((double{input.level} * 8 + 1) * image.height / 81), 4);
  const int32_t open = pitch >> 1;
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const int32_t mean = SumOfColor(p) / 3;
      SetGray(p, x % pitch < open && y % pitch < open ? mean : mean / 2);
    }
  }
}

void Mosaic(FrameView image, const FillInput& input) {
  const int32_t pitch = PitchOf((double{input.level} * 4 + 1) * image.height / 40, 1);
  for (int32_t y = 0; y < image.height; ++y) {
    if (y % pitch == 0) continue;
    const uint8_t* above = image.Row(y - 1);
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x) CopyColor(p + 4 * x, above + 4 * x);
  }
}

void Brick(FrameView image, const FillInput& input) {
  const int32_t pitch = PitchOf((double{input.level} * 4 + 1) * image.height / 40, 3);
  const int64_t reach = int64_t{pitch} * pitch / 4;
  ForEachCell(image, pitch, pitch / 2, image.width - 1, image.height - 1,
              [=](uint8_t* p, const uint8_t* color, int64_t dx, int64_t dy) {
                if (2 * std::abs(dx) * std::abs(dy) < reach) {
                  CopyColor(p, color);
                } else {
                  for (int c = 0; c < 3; ++c) p[c] /= 2;
                }
              });
}

void DiamondBlur(FrameView image, const FillInput& input) {
  const int32_t pitch = PitchOf((double{input.level} * 4 + 1) * image.height / 24, 4);
  const int64_t half = pitch / 2;
  ForEachCell(image, pitch, 0, image.width - 1, image.height - 1,
              [=](uint8_t* p, const uint8_t* color, int64_t dx, int64_t dy) {
                if (std::abs(dx - half) + std::abs(dy - half) <= half) CopyColor(p, color);
              });
}

void Oyster(FrameView image, const FillInput& input) {
  const int32_t pitch = PitchOf((double{input.level} * 4 + 1) * image.height / 20, 2);
  Discs(image, pitch, image.width - 3, image.height - 3);
}

void Hola(FrameView image, const FillInput&) {
  Discs(image, std::max(image.height / 6, 1), image.width - 3, image.height - 4);
}

void DiamondWave(FrameView image, const FillInput&) {
  Waves(image, 1, [](int32_t dx, int32_t dy) { return std::abs(dx) + std::abs(dy); });
}

void Wave(FrameView image, const FillInput&) {
  Waves(image, 3, FastDistance);
}

void Frosted(FrameView image, const FillInput& input) {
  const int32_t cell = std::max(image.height / 200, 1);
  const int32_t reach = std::max(Trunc32((image.height >> 6) * (double{input.level} * 4 + 1)), 3);
  Grain grain;
  {
    Rand rand;
    rand.Seed(static_cast<uint32_t>(input.currentFrame));  // a frame number always gives the same grain
    for (int32_t& distance : grain) distance = (rand.Next() % 123455 + 1) % reach;
  }
  Copy copy(image);
  const FrameView from = copy.View();
  const int32_t* grains = grain.data();
  ForFillRows(image, [=](int32_t y, uint8_t* out, int32_t width) {
    const int32_t* distances = grains + y / cell % kGrainSide * kGrainSide;
    for (int32_t x = 0; x < width; ++x) {
      const int32_t d = distances[x / cell % kGrainSide];
      CopyColor(out + 4 * x, from.Pixel(std::min(x + d, width - 1), std::min(y + d, from.height - 1)));
    }
  });
}

void Noise(FrameView image, const FillInput& input) {
  const int32_t cell = std::max(image.height / 150, 1);
  const Grain grain = DrawNoise(Trunc32(double{input.level} * 256));
  const int32_t* grains = grain.data();
  ForFillRows(image, [=](int32_t y, uint8_t* p, int32_t width) {
    const int32_t* offsets = grains + y / cell % kGrainSide * kGrainSide;
    for (int32_t x = 0; x < width; ++x) AddToColor(p + 4 * x, offsets[x / cell % kGrainSide]);
  });
}

void RippleH(FrameView image, const FillInput& input) {
  const std::vector<int64_t> shifts = RippleShifts(image.height, image.height, input.level);
  Copy copy(image);
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* in = copy.View().Row(y);
    uint8_t* out = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x) {
      CopyColor(out + 4 * x, in + 4 * Mirror(x + shifts[static_cast<size_t>(y)], image.width));
    }
  }
}

void RippleV(FrameView image, const FillInput& input) {
  const std::vector<int64_t> shifts = RippleShifts(image.width, image.height, input.level);
  Copy copy(image);
  const FrameView from = copy.View();
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* out = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x) {
      CopyColor(out + 4 * x, from.Pixel(x, Mirror(y + shifts[static_cast<size_t>(x)], image.height)));
    }
  }
}

void ThreeD(FrameView image, const FillInput& input) {
  const int32_t pitch = image.height < 20 ? 1 : image.height / 10;
  const int32_t pane = Trunc32(pitch * 0.92);
  Copy copy(image);
  FillBlur(image, Trunc32(std::min(image.width, image.height) * (double{input.level} * 0.7 + 0.3) / 8.8));
  const FrameView from = copy.View();
  ForFillRows(image, [=](int32_t y, uint8_t* out, int32_t width) {
    const uint8_t* sharp = from.Row(y);
    const bool bar = y % pitch > pane;
    for (int32_t x = 0; x < width; ++x) {
      if (bar || x % pitch > pane) CopyColor(out + 4 * x, sharp + 4 * x);
    }
  });
}

void Perspect(FrameView image, const FillInput&) {
  Copy copy(image);
  const FrameView from = copy.View();
  const ConstFrameView doubled{from.data, from.width, from.height, from.step};
  ParallelFor(cv::Range(0, image.height), parallelPerspectInvoker(doubled, image));
}

}  // namespace fill_pattern
