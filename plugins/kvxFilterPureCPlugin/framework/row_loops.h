// Loops over a row of pixels that are worth wide vectors. They are plain C++ and compiled once for each vector target,
// so that every target gives the same bytes. `out` lies apart from the rows that are read.
#ifndef KVX_FRAMEWORK_ROW_LOOPS_H_
#define KVX_FRAMEWORK_ROW_LOOPS_H_

#include <cstdint>

// |across| + |down| of the Sobel pair for bytes 0 to 2 of each of `count` pixels, limited to 255; byte 3 is that of the
// pixel itself. Reads one pixel more at either end of the three rows.
void SobelRow(const uint8_t* above, const uint8_t* row, const uint8_t* below, uint8_t* out, int32_t count);

// |in - neighbour + high| within low..255 for each of bytes 0 to 2; byte 3 copied. `low` and `high` from 0 to 255.
void ReliefRow(const uint8_t* in, const uint8_t* neighbour, uint8_t* out, int32_t count, int32_t low, int32_t high);

// p + k * (the difference of two pixels of a row to the two below them), cut to a whole number and limited to a byte,
// for bytes 0 to 2; byte 3 copied. Reads one pixel more of both rows. The amount of k is kMostSharpening or less, which
// keeps the whole numbers within 32 bits.
constexpr double kMostSharpening = 1e6;
void SharpenRow(const uint8_t* in, const uint8_t* below, uint8_t* out, int32_t count, double k);

// Bytes 0 to 2 become ((((back * multiplier) >> 8) * (255 - alpha)) + src * alpha) >> 8, byte 3 becomes
// ((back * (255 - alpha)) >> 8) + alpha, with alpha the source's byte 3. `multipliers` are three bytes, blue first.
void UnderlayRow(const uint8_t* src, const uint8_t* back, uint8_t* out, int32_t count, uint32_t multipliers);

// Whether byte 3 of all of `count` pixels is 255.
bool IsOpaque(const uint8_t* pixels, int32_t count);

// UnderlayRow where the source is opaque.
void UnderlayOpaque(const uint8_t* src, uint8_t* out, int32_t count);

// A grey relief in place: with s = byte0 + 2 byte1 + byte2, bytes 0 to 2 become ((s of the pixel - s of the pixel
// `distance` further on) >> 2) + 128, limited to a byte, and 128 where there is no such pixel. `distance` from 0 to
// `count`; `sums` is scratch for `count` numbers.
void GrayReliefRow(uint8_t* pixels, int32_t* sums, int32_t count, int32_t distance);

// Clusters of colours and places, for a row of pixels from some column on. The square of a pixel's distance to cluster
// i is (the sum of squared differences of bytes 0 to 2 to its colour) * colourShare + columns[i][x] + rows[i]; none is
// below 0, and all are far from the ends of a float's range.
struct ClusterSquares {
  static constexpr int32_t kMost = 40;
  int32_t count;
  float colors[kMost][3];
  float colorShare;
  const float* columns[kMost];
  float rows[kMost];
};
// The number of the cluster whose square is the least, or kDoubtful if that and the next are all but equal or 0, so
// that rounding may decide. `count` is kClusterPiece at most.
constexpr uint8_t kDoubtful = 255;
constexpr int32_t kClusterPiece = 256;
void NearestClusters(const ClusterSquares& squares, const uint8_t* pixels, uint8_t* nearest, int32_t count);

#endif  // KVX_FRAMEWORK_ROW_LOOPS_H_
