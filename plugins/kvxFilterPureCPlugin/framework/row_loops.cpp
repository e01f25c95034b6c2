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

// In 16 bits: for byte 3 the ground is taken whole, and 256 stands for the source.
void UnderlayRow(const uint8_t* src, const uint8_t* back, uint8_t* out, int32_t count, uint32_t multipliers) {
  constexpr int32_t kRun = 64;
  uint16_t weights[4 * kRun], whole[4 * kRun];
  uint8_t colors[4 * kRun], alphas[4 * kRun];
  for (int32_t i = 0; i < 4 * kRun; ++i) {
    const bool color = i % 4 < 3;
    weights[i] = static_cast<uint16_t>(color ? multipliers >> 8 * (i % 4) & 255 : 256);
    whole[i] = color ? 0 : 256;
    colors[i] = color ? 255 : 0;
  }
  for (int32_t x = 0; x < count; x += kRun, src += 4 * kRun, back += 4 * kRun, out += 4 * kRun) {
    const int32_t n = count - x < kRun ? count - x : kRun;
    for (int32_t i = 0; i < n; ++i) StorePixel(alphas + 4 * i, (LoadPixel(src + 4 * i) >> 24) * 0x01010101u);
#pragma GCC ivdep
    for (int32_t i = 0; i < 4 * n; ++i) {
      const uint16_t ground = static_cast<uint16_t>(static_cast<uint16_t>(back[i] * weights[i]) >> 8);
      const uint16_t top = static_cast<uint16_t>((src[i] & colors[i]) | whole[i]);
      const uint16_t sum = static_cast<uint16_t>(ground * (255 - alphas[i]) + top * alphas[i]);
      out[i] = static_cast<uint8_t>(sum >> 8);
    }
  }
}

bool IsOpaque(const uint8_t* pixels, int32_t count) {
  uint32_t all = 0xFF000000u;
  for (int32_t x = 0; x < count; ++x) all &= LoadPixel(pixels + 4 * x);
  return all == 0xFF000000u;
}

// c * 255 >> 8 is c - 1, and 0 for 0.
void UnderlayOpaque(const uint8_t* src, uint8_t* out, int32_t count) {
#pragma GCC ivdep
  for (int32_t i = 0; i < 4 * count; ++i) out[i] = static_cast<uint8_t>(src[i] - (src[i] > 0 ? 1 : 0));
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) StorePixel(out + 4 * x, LoadPixel(out + 4 * x) | 0xFF000000u);
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
HWY_EXPORT(IsOpaque);
HWY_EXPORT(UnderlayOpaque);
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

bool IsOpaque(const uint8_t* pixels, int32_t count) {
  using namespace row_loops;
  return HWY_DYNAMIC_DISPATCH(IsOpaque)(pixels, count);
}

void UnderlayOpaque(const uint8_t* src, uint8_t* out, int32_t count) {
  using namespace row_loops;
  HWY_DYNAMIC_DISPATCH(UnderlayOpaque)(src, out, count);
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
