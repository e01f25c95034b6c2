#include "framework/row_loops.h"

#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "row_loops.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace row_loops {
namespace HWY_NAMESPACE {

namespace {

uint32_t LoadPixel(const uint8_t* p) {
  uint32_t word;
  std::memcpy(&word, p, 4);
  return word;
}

void StorePixel(uint8_t* p, uint32_t word) {
  std::memcpy(p, &word, 4);
}

int16_t Abs(int16_t v) {
  return static_cast<int16_t>(v < 0 ? -v : v);
}

void CopyAlpha(const uint8_t* in, uint8_t* out, int32_t count) {
  for (int32_t x = 0; x < count; ++x) {
    StorePixel(out + 4 * x, (LoadPixel(in + 4 * x) & 0xFF000000u) | (LoadPixel(out + 4 * x) & 0x00FFFFFFu));
  }
}

}  // namespace

void SobelRow(const uint8_t* above, const uint8_t* row, const uint8_t* below, uint8_t* out, int32_t count) {
  for (int32_t i = 0; i < 4 * count; ++i) {
    const int16_t across =
        static_cast<int16_t>(2 * (row[i + 4] - row[i - 4]) - above[i - 4] - below[i - 4] + above[i + 4] + below[i + 4]);
    const int16_t down =
        static_cast<int16_t>(2 * (above[i] - below[i]) - below[i + 4] - below[i - 4] + above[i + 4] + above[i - 4]);
    const int16_t sum = static_cast<int16_t>(Abs(across) + Abs(down));
    out[i] = static_cast<uint8_t>(sum < 255 ? sum : 255);
  }
  CopyAlpha(row, out, count);
}

void ReliefRow(const uint8_t* in, const uint8_t* neighbour, uint8_t* out, int32_t count, int32_t low, int32_t high) {
  const int16_t least = static_cast<int16_t>(low);
  const int16_t light = static_cast<int16_t>(high);
  for (int32_t i = 0; i < 4 * count; ++i) {
    const int16_t relief = Abs(static_cast<int16_t>(in[i] - neighbour[i] + light));
    const int16_t limited = relief < 255 ? relief : int16_t{255};
    out[i] = static_cast<uint8_t>(limited > least ? limited : least);
  }
  CopyAlpha(in, out, count);
}

void SharpenRow(const uint8_t* in, const uint8_t* below, uint8_t* out, int32_t count, double k) {
  for (int32_t i = 0; i < 4 * count; ++i) {
    const int32_t v = static_cast<int32_t>(in[i] + k * (in[i] + in[i + 4] - below[i] - below[i + 4]));
    const int32_t positive = v > 0 ? v : 0;
    out[i] = static_cast<uint8_t>(positive < 255 ? positive : 255);
  }
  CopyAlpha(in, out, count);
}

void UnderlayRow(const uint8_t* src, const uint8_t* back, uint8_t* out, int32_t count, uint32_t multipliers) {
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t s = LoadPixel(src + 4 * x);
    const uint32_t b = LoadPixel(back + 4 * x);
    const uint32_t alpha = s >> 24;
    const uint32_t rest = 255 - alpha;
    uint32_t result = (((b >> 24) * rest >> 8) + alpha) << 24;
    for (int shift = 0; shift < 24; shift += 8) {
      const uint32_t ground = ((b >> shift & 255) * (multipliers >> shift & 255)) >> 8;
      result |= ((ground * rest + (s >> shift & 255) * alpha) >> 8) << shift;
    }
    StorePixel(out + 4 * x, result);
  }
}

void GrayReliefRow(uint8_t* pixels, int32_t* __restrict sums, int32_t count, int32_t distance) {
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(pixels + 4 * x);
    sums[x] = static_cast<int32_t>((pixel & 255) + 2 * (pixel >> 8 & 255) + (pixel >> 16 & 255));
  }
  const int32_t raised = count - distance;
  for (int32_t x = 0; x < raised; ++x) {
    const int32_t v = ((sums[x] - sums[x + distance]) >> 2) + 128;
    const int32_t positive = v > 0 ? v : 0;
    const uint32_t gray = static_cast<uint32_t>(positive < 255 ? positive : 255);
    StorePixel(pixels + 4 * x, (LoadPixel(pixels + 4 * x) & 0xFF000000u) | gray | gray << 8 | gray << 16);
  }
  for (int32_t x = raised; x < count; ++x) {
    StorePixel(pixels + 4 * x, (LoadPixel(pixels + 4 * x) & 0xFF000000u) | 0x808080u);
  }
}

namespace {

// Pixels in hand and the two least squares of each. The lowest bits of a square hold its cluster's number, so that the
// least square tells whose it is. As bits, floats that are not below 0 are in their order.
struct ClusterPiece {
  float byte0[kClusterPiece], byte1[kClusterPiece], byte2[kClusterPiece];
  int32_t first[kClusterPiece], second[kClusterPiece];
};
constexpr int32_t kNumberBits = 63;
static_assert(ClusterSquares::kMost <= kNumberBits);

// Not inlined: within the loop over clusters GCC would interleave two of them and give up vectors.
HWY_NOINLINE void AddCluster(const ClusterSquares& squares, int32_t number, ClusterPiece& piece, int32_t count) {
  const float* color = squares.colors[number];
  const float* column = squares.columns[number];
  const float c0 = color[0], c1 = color[1], c2 = color[2];
  const float share = squares.colorShare;
  const float row = squares.rows[number];
  for (int32_t x = 0; x < count; ++x) {
    const float d0 = piece.byte0[x] - c0, d1 = piece.byte1[x] - c1, d2 = piece.byte2[x] - c2;
    const float square = (d0 * d0 + d1 * d1 + d2 * d2) * share + (column[x] + row);
    const int32_t v = (std::bit_cast<int32_t>(square) & ~kNumberBits) | number;
    const int32_t first = piece.first[x], second = piece.second[x];
    const int32_t loser = first < v ? v : first;
    piece.second[x] = loser < second ? loser : second;
    piece.first[x] = v < first ? v : first;
  }
}

}  // namespace

void NearestClusters(const ClusterSquares& squares, const uint8_t* pixels, uint8_t* nearest, int32_t count) {
  // What rounding changes, and the numbers take, is far below this share.
  constexpr float kDoubt = 1.0f + 1.0f / 4096;
  constexpr float kTiny = 1e-30f;
  ClusterPiece piece;
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(pixels + 4 * x);
    piece.byte0[x] = static_cast<float>(static_cast<int32_t>(pixel & 255));
    piece.byte1[x] = static_cast<float>(static_cast<int32_t>(pixel >> 8 & 255));
    piece.byte2[x] = static_cast<float>(static_cast<int32_t>(pixel >> 16 & 255));
    piece.first[x] = piece.second[x] = std::bit_cast<int32_t>(1e30f);
  }
  for (int32_t i = 0; i < squares.count; ++i) AddCluster(squares, i, piece, count);
  for (int32_t x = 0; x < count; ++x) {
    const float first = std::bit_cast<float>(piece.first[x]);
    const float second = std::bit_cast<float>(piece.second[x]);
    const int32_t doubt = (second > kTiny ? 0 : 255) | (first * kDoubt < second ? 0 : 255);
    nearest[x] = static_cast<uint8_t>((piece.first[x] & kNumberBits) | doubt);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace row_loops
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace row_loops {
HWY_EXPORT(SobelRow);
HWY_EXPORT(ReliefRow);
HWY_EXPORT(SharpenRow);
HWY_EXPORT(UnderlayRow);
HWY_EXPORT(GrayReliefRow);
HWY_EXPORT(NearestClusters);
}  // namespace row_loops

void SobelRow(const uint8_t* above, const uint8_t* row, const uint8_t* below, uint8_t* out, int32_t count) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(SobelRow)(above, row, below, out, count);
}

void ReliefRow(const uint8_t* in, const uint8_t* neighbour, uint8_t* out, int32_t count, int32_t low, int32_t high) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(ReliefRow)(in, neighbour, out, count, low, high);
}

void SharpenRow(const uint8_t* in, const uint8_t* below, uint8_t* out, int32_t count, double k) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(SharpenRow)(in, below, out, count, k);
}

void UnderlayRow(const uint8_t* src, const uint8_t* back, uint8_t* out, int32_t count, uint32_t multipliers) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(UnderlayRow)(src, back, out, count, multipliers);
}

void GrayReliefRow(uint8_t* pixels, int32_t* sums, int32_t count, int32_t distance) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(GrayReliefRow)(pixels, sums, count, distance);
}

void NearestClusters(const ClusterSquares& squares, const uint8_t* pixels, uint8_t* nearest, int32_t count) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(NearestClusters)(squares, pixels, nearest, count);
}

#endif  // HWY_ONCE
