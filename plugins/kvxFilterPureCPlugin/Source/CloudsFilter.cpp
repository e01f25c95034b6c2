#include "Source/CloudsFilter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/random.h"

namespace {

constexpr int32_t kEffectId = 58;
constexpr ParamRow kParams[] = {
    {u"Density", 0, 0, 10}, {u"InterActive", 1, 0, 1}, {u"Speed", 0, 0, 10}, {u"CloudsIsColor", 1, 0, 1}};

constexpr int32_t kMapSize = 256;
using FractalMap = uint8_t[kMapSize][kMapSize];

// Midpoint displacement on a map whose ends meet. Rows are [y][x].
void GrowFractal(FractalMap& map, int32_t density) {
  std::memset(map, 0, sizeof map);
  Rand rand;
  for (int32_t step = kMapSize; step >= 2; step /= 2) {
    const int32_t h = step / 2;
    const int32_t range = Trunc32(2.0 * density * step + 0.5);
    const int32_t half = range / 2;
    const auto displaced = [&](int32_t mean) {
      const int64_t noise = int64_t{Trunc32((rand.Next() % 1000) / 1000.0 * range)} - half;
      return static_cast<uint8_t>(std::clamp<int64_t>(noise + mean, 0, 255));
    };
    for (int32_t y = 0; y < kMapSize; y += step) {
      const int32_t y2 = (y + step) % kMapSize;
      for (int32_t x = 0; x < kMapSize; x += step) {
        const int32_t x2 = (x + step) % kMapSize;
        const int32_t a = map[y][x];
        const int32_t b = map[y2][x];
        const int32_t c = map[y][x2];
        const int32_t d = map[y2][x2];
        map[y + h][x + h] = displaced((a + b + c + d) / 4);
        // The two seams are tested crosswise, and meant so: the clouds' shapes follow from it.
        if (y == 0) map[y + h][x] = displaced((a + b) / 2);
        if (x == 0) map[y][x + h] = displaced((a + c) / 2);
        map[y + h][x2] = displaced((c + d) / 2);
        map[y2][x + h] = displaced((b + d) / 2);
      }
    }
  }
}

// The map stretched over the frame, its columns along the rows.
void Generate(ZeroedArray<uint8_t>& layer, int32_t density, int32_t width, int32_t height) {
  const auto map = std::make_unique<FractalMap[]>(1);
  GrowFractal(map[0], density);
  if (!layer && !layer.Allocate(PixelCount(width, height))) return;
  uint8_t* out = layer.Data();
  for (int32_t y = 0; y < height; ++y) {
    const int64_t column = int64_t{y} * kMapSize / height;
    for (int32_t x = 0; x < width; ++x) *out++ = map[0][int64_t{x} * kMapSize / width][column];
  }
}

ByteTable CloudTable(bool interactive) {
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) {
    int32_t v = i;
    if (!interactive) {
      const double u = std::max(0.0, i / 256.0 - 0.525);
      v = Trunc32(std::pow(std::sin(u / 0.475 * 3.14159265359 * 0.5), 0.7391304347826089) * 255);
    }
    table[static_cast<size_t>(i)] = static_cast<uint8_t>(v < 100 ? 0 : v);
  }
  return table;
}

int32_t Wrapped(int64_t at, int32_t size) {
  const int64_t remainder = at % size;
  return static_cast<int32_t>(remainder < 0 ? remainder + size : remainder);
}

// Pixels by the sum of three thicknesses; 0 where the picture shows.
using CloudPixels = std::array<uint32_t, 3 * 255 + 1>;

CloudPixels PixelsOf(const ByteTable& table, bool color) {
  CloudPixels pixels;
  for (uint32_t sum = 0; sum < pixels.size(); ++sum) {
    const uint32_t m = table[sum / 3];
    const uint32_t gray = std::min(m + 50, 255u);
    const uint32_t cloud = color ? 0xFF0000FF | m << 16 | m << 8 : 0xFF000000 | gray << 16 | gray << 8 | gray;
    pixels[sum] = m != 0 ? cloud : 0;
  }
  return pixels;
}

void PaintClouds(const std::array<CCloudsFilter::Layer, 3>& layers, FrameView dst, const CloudPixels& pixels) {
  const size_t width = static_cast<size_t>(dst.width);
  ForRowBands(dst.width, 0, dst.height, [=, &layers, &pixels](int32_t begin, int32_t end) {
    std::vector<uint8_t> drifted[3];
    for (auto& row : drifted) row.resize(width);
    for (int32_t y = begin; y < end; ++y) {
      for (size_t i = 0; i < 3; ++i) {
        const CCloudsFilter::Layer& layer = layers[i];
        const uint8_t* row = layer.values.Data() + static_cast<size_t>((y + layer.y) % dst.height) * width;
        const size_t x = static_cast<size_t>(layer.x);
        std::memcpy(drifted[i].data(), row + x, width - x);
        std::memcpy(drifted[i].data() + (width - x), row, x);
      }
      uint8_t* out = dst.Row(y);
      for (int32_t x = 0; x < dst.width; ++x) {
        const size_t i = static_cast<size_t>(x);
        const uint32_t pixel = pixels[size_t{drifted[0][i]} + drifted[1][i] + drifted[2][i]];
        if (pixel != 0) StorePixel(out, x, pixel);
      }
    }
  });
}

}  // namespace

CCloudsFilter::CCloudsFilter(int32_t frameWidth, int32_t frameHeight)
    : CBaseFilterProc(frameWidth, frameHeight), table_(CloudTable(false)) {}

void CCloudsFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(
      desc, index, kParams,
      {static_cast<double>(density_), interactive_ ? 1.0 : 0.0, static_cast<double>(speed_), color_ ? 1.0 : 0.0});
}

// The third layer drifts from where the second one is, not from its own place.
void CCloudsFilter::Drift() {
  const auto move = [this](Layer& layer, const Layer& from, int32_t by) {
    layer.x = Wrapped(int64_t{from.x} + by + width, width);
    layer.y = Wrapped(int64_t{from.y} + by + height, height);
  };
  move(layers_[0], layers_[0], speed_);
  move(layers_[1], layers_[1], speed_ / 2);
  move(layers_[2], layers_[1], speed_ / 3);
}

void CCloudsFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                            const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEffectId || width <= 0 || height <= 0) return;
  const int32_t density = Trunc32(Param(params, 1));
  const bool interactive = Param(params, 2) != 0;
  speed_ = Trunc32(Param(params, 3));
  color_ = Trunc32(Param(params, 4)) != 0;
  const bool densityChanged = density != density_;
  density_ = density;
  CopyRowsInBands({src, width, height, srcStep}, {dst, width, height, dstStep});

  for (Layer& layer : layers_) {
    if (!layer.values) Generate(layer.values, density_, width, height);
  }
  if (interactive != interactive_) {
    interactive_ = interactive;
    table_ = CloudTable(interactive);
  }
  if (densityChanged) {  // on a first frame, too: the random numbers go on from there
    for (Layer& layer : layers_) Generate(layer.values, density_, width, height);
  }
  for (const Layer& layer : layers_) {
    if (!layer.values) return;
  }
  Drift();
  PaintClouds(layers_, PackedDest(dst, width, height), PixelsOf(table_, color_));
}
