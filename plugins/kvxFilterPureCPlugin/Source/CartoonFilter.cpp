#include "Source/CartoonFilter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/pixels.h"

namespace {

constexpr ParamRow kParams[] = {{u"Triplevel", 0, 0, 100}, {u"DiffSpace", 0, 0, 10}};
constexpr int32_t kId = 33;
constexpr uint32_t kLineColor = 0;
constexpr uint32_t kEightLevels = 0xFFE0E0E0;

// One row with bytes 0 to 2 apart as planes. Every plane goes on at both ends with copies of its end pixels, so that
// neighbours need no limits.
class PlaneRow {
 public:
  PlaneRow(int32_t width, int32_t reach)
      : width_(width),
        reach_(reach),
        size_(static_cast<size_t>(width) + 2 * static_cast<size_t>(reach)),
        bytes_(3 * size_) {}

  void Load(const uint8_t* in) {
    uint8_t* plane[3];
    for (int c = 0; c < 3; ++c) {
      plane[c] = bytes_.data() + static_cast<size_t>(c) * size_ + reach_;
      std::memset(plane[c] - reach_, in[c], static_cast<size_t>(reach_));
      std::memset(plane[c] + width_, in[4 * (width_ - 1) + c], static_cast<size_t>(reach_));
    }
    for (int32_t x = 0; x < width_; ++x) {
      plane[0][x] = in[4 * x];
      plane[1][x] = in[4 * x + 1];
      plane[2][x] = in[4 * x + 2];
    }
  }

  // Column `x` of a plane, from -reach to width - 1 + reach.
  const uint8_t* At(int c, int32_t x) const { return bytes_.data() + static_cast<size_t>(c) * size_ + reach_ + x; }

 private:
  int32_t width_;
  int32_t reach_;
  size_t size_;
  std::vector<uint8_t> bytes_;
};

uint16_t Square(uint8_t a, uint8_t b) {
  const int32_t d = a - b;
  return static_cast<uint16_t>(d * d);
}

// Raises each measure to the difference of the pixels from `xa` and `xb` on: a sum of squares that wraps at 16 bits,
// which leaves gaps in bright lines. This is meant.
void RaiseToDifference(const PlaneRow& a, int32_t xa, const PlaneRow& b, int32_t xb, std::vector<uint16_t>& measure) {
  const uint8_t *a0 = a.At(0, xa), *a1 = a.At(1, xa), *a2 = a.At(2, xa);
  const uint8_t *b0 = b.At(0, xb), *b1 = b.At(1, xb), *b2 = b.At(2, xb);
  for (size_t x = 0; x < measure.size(); ++x) {
    const uint16_t sum = static_cast<uint16_t>(Square(a0[x], b0[x]) + Square(a1[x], b1[x]) + Square(a2[x], b2[x]));
    measure[x] = std::max(measure[x], sum);
  }
}

// Lines where a measure is above the threshold, eight levels a byte elsewhere.
void Cartoon(ConstFrameView src, FrameView dst, int32_t threshold, int32_t distance) {
  if (dst.Empty()) return;
  const int32_t reach = std::min(distance, dst.width);
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    PlaneRow above(dst.width, reach), row(dst.width, reach), below(dst.width, reach);
    std::vector<uint16_t> measure(static_cast<size_t>(dst.width));
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* in = src.Row(y);
      above.Load(src.Row(std::max(y - distance, 0)));
      row.Load(in);
      below.Load(src.Row(std::min(y + distance, dst.height - 1)));
      std::fill(measure.begin(), measure.end(), uint16_t{0});
      RaiseToDifference(row, -reach, row, reach, measure);
      RaiseToDifference(above, 0, below, 0, measure);
      RaiseToDifference(above, -reach, below, reach, measure);
      RaiseToDifference(above, reach, below, -reach, measure);
      uint8_t* out = dst.Row(y);
      for (int32_t x = 0; x < dst.width; ++x) {
        uint32_t pixel = LoadPixel(in + 4 * x);
        pixel = measure[static_cast<size_t>(x)] > threshold ? kLineColor : pixel & kEightLevels;
        StorePixel(out + 4 * x, pixel);
      }
    }
  });
}

// The highest measure that is not above the threshold. Nothing is above NaN.
int32_t HighestQuiet(double threshold) {
  if (threshold < 0) return -1;
  return threshold < 65535 ? static_cast<int32_t>(threshold) : 65535;
}

}  // namespace

void CCartoonFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {threshold_ / 50, distance_});
}

void CCartoonFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kId) return;
  threshold_ = Param(params, 1) * 50;
  distance_ = Param(params, 2);
  // A distance below 0 compares the same pairs; one beyond the frame ends at its rims.
  const int32_t beyond = std::max(width, height);
  const int32_t distance = std::abs(ClampInt(Trunc32(distance_), -beyond, beyond));
  Cartoon(PackedSource(src, width, height), PackedDest(dst, width, height), HighestQuiet(threshold_), distance);
}
