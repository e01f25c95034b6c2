#include "Cluster.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "frame.h"
#include "numeric.h"
#include "random.h"

namespace {

constexpr ParamRow kParams[] = {{u"Num", 0, 0, 40}, {u"Dist", 0, 0, 100}};
constexpr size_t kMostClusters = 40;

struct Cluster {
  int32_t x, y;
  uint8_t colour[3];  // bytes 0, 1, 2
};
using Clusters = std::array<Cluster, kMostClusters>;

// All are drawn, whatever the count.
Clusters DrawClusters(int32_t width, int32_t height) {
  Rand rand;
  Clusters clusters;
  for (Cluster& cluster : clusters) {
    cluster.x = rand.Next() % width;
    cluster.y = rand.Next() % height;
    for (uint8_t& byte : cluster.colour) byte = static_cast<uint8_t>(rand.Next() % 255);
  }
  return clusters;
}

// The distance that decides, as it is defined: with every rounding of the 32-bit floats.
struct Metric {
  float longest;     // the frame's diagonal
  float mostColour;  // from black to white
  double weight;

  float Of(const Cluster& cluster, const uint8_t* pixel, int32_t x, int32_t y) const {
    const int32_t d0 = pixel[0] - cluster.colour[0];
    const int32_t d1 = pixel[1] - cluster.colour[1];
    const int32_t d2 = pixel[2] - cluster.colour[2];
    const int32_t dx = x - cluster.x;
    const int32_t dy = y - cluster.y;
    const float dc = std::sqrt(static_cast<float>(d0 * d0 + d1 * d1 + d2 * d2)) / mostColour;
    const float ds = std::sqrt(static_cast<float>(dx * dx + dy * dy)) / longest;
    return std::sqrt(static_cast<float>(ds * weight * ds + dc * (1 - weight) * dc));
  }

  // The first of the nearest, 0 if none is nearer than the diagonal is long.
  size_t Nearest(const Clusters& clusters, size_t count, const uint8_t* pixel, int32_t x, int32_t y) const {
    float best = longest;
    size_t nearest = 0;
    for (size_t i = 0; i < count; ++i) {
      const float e = Of(clusters[i], pixel, x, y);
      if (e < best) {
        best = e;
        nearest = i;
      }
    }
    return nearest;
  }
};

// Finds nearest clusters for pieces of rows at once, by squares without roots. The squares order the clusters as the
// metric does, except where the two least are so close that rounding may decide; there the metric is asked.
class Search {
 public:
  Search(const Clusters& clusters, size_t count, const Metric& metric, int32_t width)
      : clusters_(clusters),
        count_(count),
        metric_(metric),
        columns_(count * static_cast<size_t>(width)),
        width_(width) {
    place_ = static_cast<float>(metric.weight / metric.longest / metric.longest);
    colour_ = static_cast<float>((1 - metric.weight) / metric.mostColour / metric.mostColour);
    float* column = columns_.data();
    for (size_t i = 0; i < count; ++i) {
      std::copy_n(clusters[i].colour, 3, colours_[i].begin());
      for (int32_t x = 0; x < width; ++x) *column++ = Place(x - clusters[i].x);
    }
  }

  void Row(const uint8_t* in, int32_t y, uint8_t* nearest) {
    for (int32_t x = 0; x < width_; x += kPiece) Piece(in, x, std::min(kPiece, width_ - x), y, nearest);
  }

 private:
  static constexpr int32_t kPiece = 256;
  // The lowest bits of a square hold its cluster's number, so that the least square tells whose it is.
  static constexpr uint32_t kNumberBits = 63;
  static_assert(kMostClusters <= kNumberBits);
  // What the squares and the metric may differ by, and the numbers take, is far below this share.
  static constexpr float kDoubt = 1.0f + 1.0f / 4096;
  static constexpr float kTiny = 1e-30f;

  float Place(int32_t d) const { return static_cast<float>(d) * static_cast<float>(d) * place_; }

  void Piece(const uint8_t* in, int32_t left, int32_t n, int32_t y, uint8_t* nearest) {
    const uint8_t* pixels = in + static_cast<ptrdiff_t>(left) * 4;
    for (int32_t k = 0; k < n; ++k) {
      byte0_[k] = pixels[4 * k];
      byte1_[k] = pixels[4 * k + 1];
      byte2_[k] = pixels[4 * k + 2];
      first_[k] = second_[k] = 1e30f;
    }
    for (size_t i = 0; i < count_; ++i) {
      const auto [c0, c1, c2] = colours_[i];
      const float row = Place(y - clusters_[i].y);
      const float* column = columns_.data() + i * static_cast<size_t>(width_) + left;
      const uint32_t number = static_cast<uint32_t>(i);
      for (int32_t k = 0; k < n; ++k) {
        const float d0 = byte0_[k] - c0, d1 = byte1_[k] - c1, d2 = byte2_[k] - c2;
        const float square = (d0 * d0 + d1 * d1 + d2 * d2) * colour_ + (column[k] + row);
        const float v = std::bit_cast<float>((std::bit_cast<uint32_t>(square) & ~kNumberBits) | number);
        const float first = first_[k];
        const float loser = first < v ? v : first;
        second_[k] = loser < second_[k] ? loser : second_[k];
        first_[k] = v < first ? v : first;
      }
    }
    for (int32_t k = 0; k < n; ++k) {
      const bool sure = second_[k] > kTiny && first_[k] * kDoubt < second_[k];
      const int32_t x = left + k;
      nearest[x] = static_cast<uint8_t>(sure ? std::bit_cast<uint32_t>(first_[k]) & kNumberBits
                                             : metric_.Nearest(clusters_, count_, pixels + 4 * k, x, y));
    }
  }

  const Clusters& clusters_;
  size_t count_;
  Metric metric_;
  float place_, colour_;  // what a squared distance counts
  std::array<std::array<float, 3>, kMostClusters> colours_;
  std::vector<float> columns_;  // the part of a square that x decides, for each cluster
  int32_t width_;
  float byte0_[kPiece], byte1_[kPiece], byte2_[kPiece], first_[kPiece], second_[kPiece];
};

// Bytes 0 to 2 in the nearest cluster's colour; byte 3 of the destination stays as it is.
void Paint(ConstFrameView src, FrameView dst, const Clusters& clusters, size_t count, const Metric& metric) {
  const bool weightIsShare = metric.weight >= 0 && metric.weight <= 1;
  Search search(clusters, weightIsShare ? count : 0, metric, dst.width);
  std::vector<uint8_t> nearest(static_cast<size_t>(dst.width));
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    if (weightIsShare) {
      search.Row(in, y, nearest.data());
    } else {
      for (int32_t x = 0; x < dst.width; ++x) {
        nearest[static_cast<size_t>(x)] = static_cast<uint8_t>(metric.Nearest(clusters, count, in + 4 * x, x, y));
      }
    }
    for (int32_t x = 0; x < dst.width; ++x)
      std::memcpy(out + 4 * x, clusters[nearest[static_cast<size_t>(x)]].colour, 3);
  }
}

}  // namespace

void CCluster::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {count_, weight_ * 100});
}

void CCluster::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  count_ = Param(params, 1);
  weight_ = Param(params, 2) / 100;
  if (width <= 0 || height <= 0) return;
  const Clusters clusters = DrawClusters(width, height);
  const Metric metric{std::sqrt(static_cast<float>(width * width + height * height)), std::sqrt(195075.0f), weight_};
  // Numbers below the count, of which a fraction takes one more; NaN takes none.
  const size_t count = count_ > 0 ? static_cast<size_t>(std::ceil(std::min(count_, double{kMostClusters}))) : 0;
  Paint(PackedSource(src, width, height), PackedDest(dst, width, height), clusters, count, metric);
}
