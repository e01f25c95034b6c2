#include "Source/FireFilter.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/random.h"

namespace {

constexpr int32_t kEffectId = 57;
constexpr ParamRow kParams[] = {{u"FireSourcePosX", 0, 0, 100},
                                {u"FireWidthArea", 0, 0, 100},
                                {u"FireSourcePosY", 0, 0, 100},
                                {u"FlameHeight", 0, 0, 60},
                                {u"FireAlpha", 0, 0, 255}};

constexpr int32_t kExtraRows = 3;  // heat rows beyond the frame's
constexpr size_t kReach = 2;       // a cell reads this far behind the last one, where it is cold
constexpr int32_t kSeedPercent = 20;
constexpr int32_t kSeedRun = 35;
constexpr uint8_t kSeedHeat = 254;
constexpr uint32_t kColdest = 60;  // less goes out

// Heat of the frame and three rows more. Row 0 is where the memory ends.
struct HeatField {
  uint8_t* data;
  int32_t width;
  int32_t rows;

  uint8_t* Row(int32_t k) const { return data + static_cast<ptrdiff_t>(rows - 1 - k) * width; }
};

// Columns of the fire. What is seeded, what spreads and what is put out differ at the rims.
struct Band {
  double start;       // seeds fall strictly right of it
  int32_t first;      // spreading starts here
  int32_t end;        // seeds and spreading end before this column
  int32_t coldUntil;  // columns before this one are put out
  int32_t coldFrom;   // and so are those from here on
};

Band BandOf(double position, double fraction, int32_t width) {
  Band band;
  band.start = width * position;
  band.first = std::max(Trunc32(band.start), 0);
  band.end = Trunc32(std::min(static_cast<double>(width), band.start + width * fraction));
  const double limit = (position + fraction) * width - 1;
  band.coldUntil = 0;
  while (band.coldUntil < width && band.start > band.coldUntil) ++band.coldUntil;
  band.coldFrom = 0;
  while (band.coldFrom < width && !(band.coldFrom >= limit)) ++band.coldFrom;
  return band;
}

using Palette = std::array<uint32_t, 256>;

// Black, red, yellow and white, 85 entries from one to the next. Then the first `flameHeight` entries go black and the
// way from black to red is painted anew from entry 85 - flameHeight on, as long as that leaves room: the flames' soft
// start.
Palette FirePalette(int32_t flameHeight) {
  constexpr int32_t kStops[4][3] = {{0, 0, 0}, {0, 0, 255}, {0, 255, 255}, {255, 255, 255}};  // blue, green, red
  constexpr int32_t kSegment = 85;
  constexpr int32_t kShades = 255;  // the largest difference of two neighbouring stops, for all three pairs
  const auto shade = [&](int32_t segment, int32_t i) {
    uint32_t pixel = 0;
    for (int c = 0; c < 3; ++c) {
      const int32_t from = kStops[segment][c];
      pixel |= static_cast<uint32_t>(from + i * (kStops[segment + 1][c] - from) / kShades) << (8 * c);
    }
    return pixel;
  };

  Palette palette{};
  for (int32_t segment = 0; segment < 3; ++segment) {
    constexpr float kStep = static_cast<float>(kSegment) / kShades;
    for (int32_t i = 0; i < kShades; ++i) {
      const int32_t entry = segment * kSegment + static_cast<int32_t>(static_cast<float>(i) * kStep);
      if (entry < 255) palette[static_cast<size_t>(entry)] = shade(segment, i);
    }
  }
  std::fill_n(palette.begin(), ClampInt(flameHeight, 0, 256), 0);
  const int64_t start = int64_t{kSegment} - flameHeight;
  for (int32_t i = 0; i < kShades; ++i) {
    const int64_t entry = start + i * start / kShades;
    if (entry >= 0 && entry < 256) palette[static_cast<size_t>(entry)] = shade(0, i);
  }
  return palette;
}

// Puts out the rows up to the source row, and the columns beside the band.
void PutOut(const HeatField& heat, int32_t sourceRow, const Band& band) {
  const size_t width = static_cast<size_t>(heat.width);
  for (int32_t k = 0; k <= std::min(sourceRow, heat.rows - 1); ++k) std::memset(heat.Row(k), 0, width);
  for (int32_t k = kExtraRows; k < heat.rows; ++k) {
    std::memset(heat.Row(k), 0, static_cast<size_t>(band.coldUntil));
    std::memset(heat.Row(k) + band.coldFrom, 0, static_cast<size_t>(heat.width - band.coldFrom));
  }
}

void Seed(const HeatField& heat, int32_t sourceRow, const Band& band) {
  uint8_t* row = sourceRow < heat.rows ? heat.Row(sourceRow) : nullptr;
  Rand rand;
  for (int32_t x = 0; x < heat.width; ++x) {
    if (rand.Next() % 101 >= kSeedPercent) continue;
    const int32_t length = rand.Next() % kSeedRun + 1;
    for (int32_t step = 0; step < length; ++step) {
      if (!(x > band.start && x < band.end)) continue;
      if (row) row[x] = kSeedHeat;
      ++x;
    }
  }
}

// A cell takes the mean of itself, the five cells around the one before it in its column, and the one before that.
// Cells spread column by column: those to the left have spread already, those to the right not yet, and a neighbour
// beyond the row's end is what lies there in memory. Row by row gives the same if the right neighbours are taken from a
// copy of the row as it was.
void Spread(const HeatField& heat, int32_t sourceRow, const Band& band) {
  const size_t width = static_cast<size_t>(heat.width);
  std::vector<uint8_t> before(width + kReach), after(width + kReach), nextBefore(width + kReach);
  if (sourceRow <= heat.rows - 4) std::memcpy(before.data(), heat.Row(sourceRow), width);
  for (int32_t k = sourceRow; k <= heat.rows - 4; ++k) {
    const uint8_t* row = heat.Row(k);
    const uint8_t* above = heat.Row(std::max(k - 1, 0));
    uint8_t* below = heat.Row(k + 1);
    std::memcpy(before.data() + width, row + width, kReach);
    std::memcpy(after.data(), row - kReach, width + kReach);
    std::memcpy(nextBefore.data(), below, width);
    for (int32_t x = band.first; x < band.end; ++x) {
      const uint32_t sum =
          uint32_t{above[x]} + after[x] + after[x + 1] + after[x + 2] + before[x + 1] + before[x + 2] + nextBefore[x];
      const uint32_t mean = sum / 7;
      below[x] = static_cast<uint8_t>(mean >= kColdest ? mean : 0);
    }
    std::swap(before, nextBefore);
  }
}

void Paint(const HeatField& heat, FrameView dst, const Palette& palette, int32_t alpha) {
  ForRowBands(dst.width, 0, dst.height, [=, &palette](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* hot = heat.Row(y + kExtraRows);
      uint8_t* out = dst.Row(y);
      for (int32_t x = 0; x < dst.width; ++x, out += 4) {
        const uint32_t color = palette[hot[x]];
        if (color == 0) continue;
        for (int c = 0; c < 3; ++c) {
          const int32_t d = out[c];
          const int32_t difference = static_cast<int32_t>(color >> (8 * c) & 255) - d;
          out[c] = static_cast<uint8_t>(WrapAdd(WrapMul(difference, alpha), d << 8) >> 8);
        }
      }
    }
  });
}

}  // namespace

void CFireFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {position_ * 100, fraction_ * 100, static_cast<double>(rowPercent_), static_cast<double>(flameHeight_),
                 static_cast<double>(alpha_)});
}

void CFireFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEffectId || width <= 0 || height <= 0) return;
  position_ = Param(params, 1) / 100;
  fraction_ = Param(params, 2) / 100;
  const int32_t rowPercent = Trunc32(std::max(1.0, Param(params, 3)));
  flameHeight_ = Trunc32(std::max(1.0, Param(params, 4)));
  alpha_ = Trunc32(Param(params, 5));
  if (rowPercent != rowPercent_) {
    rowPercent_ = rowPercent;
    heat_.Clear();
  }
  CopyRowsInBands({src, width, height, srcStep}, {dst, width, height, dstStep});
  const int32_t rows = height + kExtraRows;
  if (!heat_ && !heat_.Allocate(PixelCount(width, rows) + kReach)) return;

  const HeatField heat{heat_.Data(), width, rows};
  const Band band = BandOf(position_, fraction_, width);
  const int32_t sourceRow = std::max(Trunc32(rowPercent_ / 100.0 * height), 0);
  PutOut(heat, sourceRow, band);
  Seed(heat, sourceRow, band);
  Spread(heat, sourceRow, band);
  Paint(heat, PackedDest(dst, width, height), FirePalette(flameHeight_), alpha_);
}
