#include "platform/stretch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "workers/workers.h"

// The loops are plain and compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stretch.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef KVX_PLATFORM_STRETCH_PLACES
#define KVX_PLATFORM_STRETCH_PLACES
namespace stretch {

// The two source pixels that each target column lies between: bytes from the row's begin to the near one and from there
// to the far one, and weights in 1/2048 for each byte of a target row.
struct Columns {
  std::vector<int32_t> near;
  int32_t toFar;
  std::vector<int16_t> nearWeights, farWeights;
};

// A source pixel, or row, and what it counts in the mean of a target pixel or row.
struct Share {
  int32_t at;
  float weight;
};
// Shares first[i] to first[i + 1] are those of target pixel or row i.
struct Cells {
  std::vector<Share> shares;
  std::vector<size_t> first;
};

}  // namespace stretch
#endif

HWY_BEFORE_NAMESPACE();
namespace stretch {
namespace HWY_NAMESPACE {
namespace {

// Half goes to even. For values of bytes, a little beyond them included.
inline uint8_t Rounded(float v) {
  constexpr float kNoFraction = 1 << 23;  // from here on floats are whole numbers
  return static_cast<uint8_t>(static_cast<int32_t>(v + kNoFraction));
}

template <int32_t kChannels>
void Spread(const uint8_t* in, const Columns& columns, int16_t* out) {
  constexpr int32_t kRun = 64;  // pixels
  uint8_t near[kChannels * kRun], far[kChannels * kRun];
  const int32_t width = static_cast<int32_t>(columns.near.size());
  for (int32_t x = 0; x < width; x += kRun) {
    const int32_t run = std::min(kRun, width - x);
    for (int32_t i = 0; i < run; ++i) {
      const uint8_t* p = in + columns.near[static_cast<size_t>(x + i)];
      std::memcpy(near + kChannels * i, p, kChannels);
      std::memcpy(far + kChannels * i, p + columns.toFar, kChannels);
    }
    const int32_t begin = kChannels * x;
    const int16_t* a = columns.nearWeights.data() + begin;
    const int16_t* b = columns.farWeights.data() + begin;
    // (near * a + far * b) >> 4 in 16 bits: what is above those four bits, and what goes over from them.
    for (int32_t i = 0; i < kChannels * run; ++i) {
      const uint16_t high = static_cast<uint16_t>(near[i] * (a[i] >> 4) + far[i] * (b[i] >> 4));
      const uint16_t low = static_cast<uint16_t>(near[i] * (a[i] & 15) + far[i] * (b[i] & 15));
      out[begin + i] = static_cast<int16_t>(high + (low >> 4));
    }
  }
}

template <int32_t kChannels>
void Halve(const uint8_t* above, const uint8_t* below, uint8_t* out, int32_t width) {
  for (int32_t x = 0; x < width; ++x, above += 2 * kChannels, below += 2 * kChannels, out += kChannels) {
    for (int32_t c = 0; c < kChannels; ++c) {
      out[c] = static_cast<uint8_t>((above[c] + above[c + kChannels] + below[c] + below[c + kChannels] + 2) >> 2);
    }
  }
}

}  // namespace

// A source row with a pixel for each target column, in 1/128 of a byte.
void SpreadRow(const uint8_t* in, const Columns& columns, int16_t* out, int32_t channels) {
  return channels == 4 ? Spread<4>(in, columns, out) : Spread<1>(in, columns, out);
}

// A row between two that are spread.
void MixRows(const int16_t* near, const int16_t* far, int16_t a, int16_t b, uint8_t* out, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const int16_t sum = static_cast<int16_t>(((near[i] * a) >> 16) + ((far[i] * b) >> 16) + 2);
    out[i] = static_cast<uint8_t>(sum >> 2);
  }
}

// Means of two by two.
void HalveRow(const uint8_t* above, const uint8_t* below, uint8_t* out, int32_t width, int32_t channels) {
  return channels == 4 ? Halve<4>(above, below, out, width) : Halve<1>(above, below, out, width);
}

void AddRow(const uint8_t* row, uint32_t* sums, int32_t count) {
  for (int32_t i = 0; i < count; ++i) sums[i] += row[i];
}

// What the target columns cover of a source row.
void SumRow(const uint8_t* in, const Cells& columns, float* out, int32_t width) {
  for (int32_t x = 0; x < width; ++x, out += 4) {
    float sums[4] = {};
    for (size_t i = columns.first[static_cast<size_t>(x)]; i < columns.first[static_cast<size_t>(x) + 1]; ++i) {
      const Share& share = columns.shares[i];
      const uint8_t* p = in + 4 * static_cast<ptrdiff_t>(share.at);
      for (int32_t c = 0; c < 4; ++c) sums[c] += static_cast<float>(p[c]) * share.weight;
    }
    std::copy_n(sums, 4, out);
  }
}

void WeighRow(const float* row, float weight, float* sums, int32_t count) {
  for (int32_t i = 0; i < count; ++i) sums[i] += row[i] * weight;
}

void RoundRow(const float* sums, uint8_t* out, int32_t count) {
  for (int32_t i = 0; i < count; ++i) out[i] = Rounded(sums[i]);
}

}  // namespace HWY_NAMESPACE
}  // namespace stretch
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace stretch {
namespace {

HWY_EXPORT(SpreadRow);
HWY_EXPORT(MixRows);
HWY_EXPORT(HalveRow);
HWY_EXPORT(AddRow);
HWY_EXPORT(SumRow);
HWY_EXPORT(WeighRow);
HWY_EXPORT(RoundRow);

// Source pixels to a target pixel. The quotient of the quotient: where pixels lie hangs on its last bit.
double Ratio(int32_t from, int32_t onto) {
  return 1.0 / (static_cast<double>(onto) / static_cast<double>(from));
}

// The ratio where it is a whole number, 0 elsewhere.
int32_t WholeRatio(int32_t from, int32_t onto) {
  const double ratio = Ratio(from, onto), whole = std::nearbyint(ratio);
  return std::abs(ratio - whole) < std::numeric_limits<double>::epsilon() ? static_cast<int32_t>(whole) : 0;
}

// Where a target pixel, or row, lies: `part` of the way from one source pixel, or row, to the next.
struct Place {
  int32_t whole;
  float part;

  Place(int32_t at, double ratio) {
    const float centre = static_cast<float>((at + 0.5) * ratio - 0.5);
    whole = static_cast<int32_t>(std::floor(centre));
    part = centre - static_cast<float>(whole);
  }
};

int16_t WeightOf(float part) {
  return static_cast<int16_t>(std::lrint(part * 2048));
}

// Beyond the outermost centres a column takes the pixel at the rim and nothing else.
Columns ColumnsOf(int32_t from, int32_t onto, int32_t channels) {
  Columns columns;
  columns.toFar = from > 1 ? channels : 0;
  for (int32_t x = 0; x < onto; ++x) {
    const Place place(x, Ratio(from, onto));
    const float part = place.whole < 0 ? 0 : place.whole >= from - 1 ? 1 : place.part;
    columns.near.push_back(channels * std::clamp(place.whole, 0, std::max(from - 2, 0)));
    columns.nearWeights.insert(columns.nearWeights.end(), static_cast<size_t>(channels), WeightOf(1 - part));
    columns.farWeights.insert(columns.farWeights.end(), static_cast<size_t>(channels), WeightOf(part));
  }
  return columns;
}

// Slivers of up to a thousandth of a source pixel at the ends of a cell do not count.
Cells CellsOf(int32_t from, int32_t onto) {
  constexpr double kSliver = 1e-3;
  Cells cells;
  const double ratio = Ratio(from, onto);
  cells.shares.reserve(static_cast<size_t>(from) + 2 * static_cast<size_t>(onto));
  cells.first.reserve(static_cast<size_t>(onto) + 1);
  for (int32_t i = 0; i < onto; ++i) {
    const double begin = i * ratio, end = begin + ratio, length = std::min(ratio, from - begin);
    const int32_t last = std::min(static_cast<int32_t>(std::floor(end)), from - 1);
    const int32_t first = std::min(static_cast<int32_t>(std::ceil(begin)), last);
    const auto add = [&](int32_t at, double covered) {
      cells.shares.push_back({at, static_cast<float>(covered / length)});
    };
    cells.first.push_back(cells.shares.size());
    if (first - begin > kSliver) add(first - 1, first - begin);
    for (int32_t at = first; at < last; ++at) add(at, 1);
    if (end - last > kSliver) add(last, std::min({end - last, 1.0, length}));
  }
  cells.first.push_back(cells.shares.size());
  return cells;
}

const uint8_t* RowOf(const StretchSource& picture, int32_t y) {
  return picture.data + y * picture.step;
}
uint8_t* RowOf(const StretchTarget& picture, int32_t y) {
  return picture.data + y * picture.step;
}

// `rows(begin, end)` for the rows of `onto`, in stripes that are worth a thread.
template <typename Rows>
void ForStripes(const StretchTarget& onto, const Rows& rows) {
  constexpr double kStripePixels = 1 << 16;
  const cv::ParallelLoopBodyLambdaWrapper body([&](const cv::Range& range) { rows(range.start, range.end); });
  ParallelFor(cv::Range(0, onto.height), body, static_cast<double>(onto.width) * onto.height / kStripePixels);
}

void Interpolate(const StretchSource& from, const StretchTarget& onto, int32_t channels) {
  const Columns columns = ColumnsOf(from.width, onto.width, channels);
  const int32_t count = onto.width * channels;
  ForStripes(onto, [&](int32_t begin, int32_t end) {
    // The last two rows are kept: those above each other read the same ones.
    std::vector<int16_t> spread[2] = {std::vector<int16_t>(static_cast<size_t>(count)),
                                      std::vector<int16_t>(static_cast<size_t>(count))};
    int32_t held[2] = {-1, -1};
    const auto spreadOf = [&](int32_t y) {
      int16_t* out = spread[y % 2].data();
      if (held[y % 2] != y) HWY_DYNAMIC_DISPATCH(SpreadRow)(RowOf(from, y), columns, out, channels);
      held[y % 2] = y;
      return out;
    };
    for (int32_t y = begin; y < end; ++y) {
      const Place place(y, Ratio(from.height, onto.height));
      // Beyond the outermost centres the row at the rim counts as two: their products are cut one by one.
      const int16_t* near = spreadOf(std::clamp(place.whole, 0, from.height - 1));
      const int16_t* far = spreadOf(std::clamp(place.whole + 1, 0, from.height - 1));
      HWY_DYNAMIC_DISPATCH(MixRows)
      (near, far, WeightOf(1 - place.part), WeightOf(place.part), RowOf(onto, y), count);
    }
  });
}

void Halve(const StretchSource& from, const StretchTarget& onto, int32_t channels) {
  ForStripes(onto, [&](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      HWY_DYNAMIC_DISPATCH(HalveRow)(RowOf(from, 2 * y), RowOf(from, 2 * y + 1), RowOf(onto, y), onto.width, channels);
    }
  });
}

// Boxes of `across` by `down` pixels.
void MeanBoxes(const StretchSource& from, const StretchTarget& onto, int32_t across, int32_t down) {
  const float share = 1.0f / static_cast<float>(int64_t{across} * down);
  const int32_t inBytes = from.width * 4, outBytes = onto.width * 4;
  ForStripes(onto, [&](int32_t begin, int32_t end) {
    std::vector<uint32_t> columnSums(static_cast<size_t>(inBytes));
    std::vector<float> means(static_cast<size_t>(outBytes));
    for (int32_t y = begin; y < end; ++y) {
      std::fill(columnSums.begin(), columnSums.end(), 0);
      for (int32_t i = 0; i < down; ++i) {
        HWY_DYNAMIC_DISPATCH(AddRow)(RowOf(from, y * down + i), columnSums.data(), inBytes);
      }
      const uint32_t* in = columnSums.data();
      for (size_t j = 0; j < means.size(); j += 4) {
        int64_t sums[4] = {};
        for (int32_t i = 0; i < across; ++i, in += 4) {
          for (int c = 0; c < 4; ++c) sums[c] += in[c];
        }
        for (size_t c = 0; c < 4; ++c) means[j + c] = static_cast<float>(sums[c]) * share;
      }
      HWY_DYNAMIC_DISPATCH(RoundRow)(means.data(), RowOf(onto, y), outBytes);
    }
  });
}

void MeanCells(const StretchSource& from, const StretchTarget& onto) {
  const Cells columns = CellsOf(from.width, onto.width), rows = CellsOf(from.height, onto.height);
  const int32_t count = onto.width * 4;
  ForStripes(onto, [&](int32_t begin, int32_t end) {
    std::vector<float> row(static_cast<size_t>(count)), sums(static_cast<size_t>(count));
    int32_t held = -1;  // a cell begins in the row where the one above ends
    for (int32_t y = begin; y < end; ++y) {
      std::fill(sums.begin(), sums.end(), 0.0f);
      for (size_t i = rows.first[static_cast<size_t>(y)]; i < rows.first[static_cast<size_t>(y) + 1]; ++i) {
        const Share& share = rows.shares[i];
        if (share.at != held) {
          HWY_DYNAMIC_DISPATCH(SumRow)(RowOf(from, share.at), columns, row.data(), onto.width);
        }
        held = share.at;
        HWY_DYNAMIC_DISPATCH(WeighRow)(row.data(), share.weight, sums.data(), count);
      }
      HWY_DYNAMIC_DISPATCH(RoundRow)(sums.data(), RowOf(onto, y), count);
    }
  });
}

}  // namespace
}  // namespace stretch

void StretchLinear(const StretchSource& from, const StretchTarget& onto, int32_t channels) {
  const bool halves =
      stretch::WholeRatio(from.width, onto.width) == 2 && stretch::WholeRatio(from.height, onto.height) == 2;
  return halves ? stretch::Halve(from, onto, channels) : stretch::Interpolate(from, onto, channels);
}

void StretchAreas(const StretchSource& from, const StretchTarget& onto) {
  const int32_t across = stretch::WholeRatio(from.width, onto.width);
  const int32_t down = stretch::WholeRatio(from.height, onto.height);
  if (across == 2 && down == 2) return stretch::Halve(from, onto, 4);
  if (across && down) return stretch::MeanBoxes(from, onto, across, down);
  stretch::MeanCells(from, onto);
}

#endif  // HWY_ONCE
