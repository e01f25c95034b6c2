#include "Source/Cluster.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/random.h"
#include "framework/row_loops.h"

namespace {

constexpr ParamRow kParams[] = {{u"Num", 0, 0, 40}, {u"Dist", 0, 0, 100}};
constexpr size_t kMostClusters = ClusterSquares::kMost;

struct Cluster {
  int32_t x, y;
  uint8_t color[3];  // bytes 0, 1, 2
};
using Clusters = std::array<Cluster, kMostClusters>;

// All are drawn, whatever the count.
Clusters DrawClusters(int32_t width, int32_t height) {
  Rand rand;
  Clusters clusters;
  for (Cluster& cluster : clusters) {
    cluster.x = rand.Next() % width;
    cluster.y = rand.Next() % height;
    for (uint8_t& byte : cluster.color) byte = static_cast<uint8_t>(rand.Next() % 255);
  }
  return clusters;
}

// A side may be so long that 32 bits do not hold its square.
int64_t SumOfSquares(int32_t a, int32_t b) {
  return static_cast<int64_t>(a) * a + static_cast<int64_t>(b) * b;
}

// The distance that decides, as it is defined: with every rounding of the 32-bit floats.
struct Metric {
  float longest;    // the frame's diagonal
  float mostColor;  // from black to white
  double weight;

  float Of(const Cluster& cluster, const uint8_t* pixel, int32_t x, int32_t y) const {
    const int32_t d0 = pixel[0] - cluster.color[0];
    const int32_t d1 = pixel[1] - cluster.color[1];
    const int32_t d2 = pixel[2] - cluster.color[2];
    const int32_t dx = x - cluster.x;
    const int32_t dy = y - cluster.y;
    const float dc = std::sqrt(static_cast<float>(d0 * d0 + d1 * d1 + d2 * d2)) / mostColor;
    const float ds = std::sqrt(static_cast<float>(SumOfSquares(dx, dy))) / longest;
    return std::sqrt(static_cast<float>(ds * weight * ds + dc * (1 - weight) * dc));
  }

  // The first of the nearest, 0 if none is nearer than the diagonal is long.
  uint8_t Nearest(const Clusters& clusters, size_t count, const uint8_t* pixel, int32_t x, int32_t y) const {
    float best = longest;
    size_t nearest = 0;
    for (size_t i = 0; i < count; ++i) {
      const float e = Of(clusters[i], pixel, x, y);
      if (e < best) {
        best = e;
        nearest = i;
      }
    }
    return static_cast<uint8_t>(nearest);
  }
};

// Finds nearest clusters by squares without roots. The squares order the clusters as the metric does, except where the
// two least are so close that rounding may decide; there the metric is asked.
class Search {
 public:
  Search(const Clusters& clusters, size_t count, const Metric& metric, int32_t width)
      : clusters_(clusters), metric_(metric), columns_(count * static_cast<size_t>(width)), width_(width) {
    place_ = static_cast<float>(metric.weight / metric.longest / metric.longest);
    squares_.colorShare = static_cast<float>((1 - metric.weight) / metric.mostColor / metric.mostColor);
    squares_.count = static_cast<int32_t>(count);
    float* column = columns_.data();
    for (size_t i = 0; i < count; ++i) {
      std::copy_n(clusters[i].color, 3, squares_.colors[i]);
      for (int32_t x = 0; x < width; ++x) *column++ = Place(x - clusters[i].x);
    }
  }

  void Row(const uint8_t* in, int32_t y, uint8_t* nearest) const {
    ClusterSquares squares = squares_;
    const auto count = static_cast<size_t>(squares.count);
    for (size_t i = 0; i < count; ++i) squares.rows[i] = Place(y - clusters_[i].y);
    for (int32_t left = 0; left < width_; left += kClusterPiece) {
      for (size_t i = 0; i < count; ++i) squares.columns[i] = &columns_[i * static_cast<size_t>(width_)] + left;
      NearestClusters(squares, in + 4 * left, nearest + left, std::min(kClusterPiece, width_ - left));
    }
    for (int32_t x = 0; x < width_; ++x) {
      if (nearest[x] == kDoubtful) nearest[x] = metric_.Nearest(clusters_, count, in + 4 * x, x, y);
    }
  }

 private:
  float Place(int32_t d) const { return static_cast<float>(d) * static_cast<float>(d) * place_; }

  const Clusters& clusters_;
  Metric metric_;
  float place_;  // what a squared distance counts
  ClusterSquares squares_;
  std::vector<float> columns_;  // the part of a square that x decides, for each cluster
  int32_t width_;
};

// Bytes 0 to 2 in the nearest cluster's colour; byte 3 of the destination stays as it is.
void Paint(ConstFrameView src, FrameView dst, const Clusters& clusters, size_t count, const Metric& metric) {
  const bool weightIsShare = metric.weight >= 0 && metric.weight <= 1;
  const Search search(clusters, weightIsShare ? count : 0, metric, dst.width);
  ForRowBands(dst.width, 0, dst.height, [=, &search, &clusters](int32_t begin, int32_t end) {
    std::vector<uint8_t> nearest(static_cast<size_t>(dst.width));
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* in = src.Row(y);
      uint8_t* out = dst.Row(y);
      if (weightIsShare) {
        search.Row(in, y, nearest.data());
      } else {
        for (int32_t x = 0; x < dst.width; ++x) {
          nearest[static_cast<size_t>(x)] = metric.Nearest(clusters, count, in + 4 * x, x, y);
        }
      }
      for (int32_t x = 0; x < dst.width; ++x)
        std::memcpy(out + 4 * x, clusters[nearest[static_cast<size_t>(x)]].color, 3);
    }
  });
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
  const Metric metric{std::sqrt(static_cast<float>(SumOfSquares(width, height))), std::sqrt(195075.0f), weight_};
  // Numbers below the count, of which a fraction takes one more; NaN takes none.
  const size_t count = count_ > 0 ? static_cast<size_t>(std::ceil(std::min(count_, double{kMostClusters}))) : 0;
  Paint(PackedSource(src, width, height), PackedDest(dst, width, height), clusters, count, metric);
}
