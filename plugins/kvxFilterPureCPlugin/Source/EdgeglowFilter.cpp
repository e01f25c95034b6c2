#include "EdgeglowFilter.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "frame.h"
#include "numeric.h"

namespace {

constexpr int32_t kEdgeglow = 29;

constexpr ParamRow kEdgeglowParams[] = {{u"Thresh", 0, 1, 400}, {u"Upscale", 0, 0, 500}, {u"Redscale", 0, 0, 100}};

// The strength of the edge at every byte of a row but the first and last four, by the Sobel pair.
void FindEdges(const uint8_t* above, const uint8_t* row, const uint8_t* below, int32_t rowBytes, uint8_t* edges) {
  for (int32_t j = 4; j < rowBytes - 4; ++j) {
    const int16_t across =
        static_cast<int16_t>(2 * (row[j + 4] - row[j - 4]) - above[j - 4] - below[j - 4] + above[j + 4] + below[j + 4]);
    const int16_t down =
        static_cast<int16_t>(2 * (above[j] - below[j]) - below[j + 4] - below[j - 4] + above[j + 4] + above[j - 4]);
    const int16_t sum = static_cast<int16_t>(std::abs(across) + std::abs(down));
    edges[j] = static_cast<uint8_t>(sum < 255 ? sum : 255);
  }
}

// How one colour byte comes from p and q at each hue: a ramp from p to q along the hue circle, then q, then p. There is
// no ramp back from q to p.
struct HueSegment {
  double place;
  enum : size_t { kRamp, kQ, kP } kind;
};
using HueTable = std::array<std::array<HueSegment, 3>, 361>;

HueTable MakeHueTable() {
  HueTable table;
  for (int32_t hue = 0; hue <= 360; ++hue) {
    const double h = hue / 360.0;
    const double ahead = h + 1.0 / 3;
    const double behind = h - 1.0 / 3;
    const double places[3] = {ahead > 1 ? ahead - 1 : ahead, h, behind < 0 ? behind + 1 : behind};
    for (size_t c = 0; c < 3; ++c) {
      const double t = places[c];
      table[static_cast<size_t>(hue)][c] = {t, t < 1.0 / 6 ? HueSegment::kRamp
                                               : t < 0.5   ? HueSegment::kQ
                                                           : HueSegment::kP};
    }
  }
  return table;
}

// As CLAMP0255(Trunc32(value)), in floats.
uint8_t ByteOf(double value) {
  const double inRange = value < 2147483648.0 ? value : 0;
  const double positive = inRange > 0 ? inRange : 0;
  return static_cast<uint8_t>(static_cast<int32_t>(positive < 255 ? positive : 255));
}

// The colour of `in` at luminance `l`. Bytes are not brought to 0..1 and the saturation is therefore negative for all
// but the darkest pixels: the look depends on it. `high` and `low` are the greatest and least of the three bytes.
void Relight(const HueTable& table, const uint8_t* in, uint8_t* out, int32_t high, int32_t low, int32_t l) {
  int32_t hue = 0;
  double saturation = 0;
  if (high != low) {
    const int32_t s0 = in[0], s1 = in[1], s2 = in[2];
    const double d = high - low;
    const bool first = high == s0, second = high == s1;
    const int32_t spread = first ? s1 - s2 : second ? s2 - s0 : s0 - s1;
    const int32_t base = first ? 0 : second ? 120 : 240;
    hue = static_cast<int32_t>(spread * 60 / d + base) + (first && spread < 0 ? 360 : 0);
    saturation = d / (l <= 0.5 ? high + low : 2 - (high + low));
  }
  const double q = l < 0.5 ? (saturation + 1) * l : l + saturation - l * saturation;
  const double p = 2.0 * l - q;
  const double rise = (q - p) * 6;
  for (size_t c = 0; c < 3; ++c) {
    const HueSegment& segment = table[static_cast<size_t>(hue)][c];
    const double values[3] = {rise * segment.place + p, q, p};
    out[c] = ByteOf(values[segment.kind]);
  }
}

// The rim stays as `dst` holds it.
void EdgeGlow(ConstFrameView src, FrameView dst, double threshold, double upscale, double redscale) {
  static const HueTable table = MakeHueTable();
  const float limit = static_cast<float>(threshold * 255);
  std::vector<uint8_t> edges(static_cast<size_t>(src.width) * 4);
  for (int32_t y = 1; y < dst.height - 1; ++y) {
    FindEdges(src.Row(y - 1), src.Row(y), src.Row(y + 1), src.width * 4, edges.data());
    for (int32_t x = 1; x < dst.width - 1; ++x) {
      const uint8_t* edge = &edges[static_cast<size_t>(x) * 4];
      const uint8_t* in = src.Pixel(x, y);
      const int32_t strength = (std::min({edge[0], edge[1], edge[2]}) + std::max({edge[0], edge[1], edge[2]})) / 2;
      const int32_t high = std::max({in[0], in[1], in[2]});
      const int32_t low = std::min({in[0], in[1], in[2]});
      const double luminance = (high + low) * 0.5;
      int32_t l = strength;
      if (static_cast<float>(strength) > limit) {
        l = CLAMP0255(Trunc32(luminance + strength * upscale));
      } else if (redscale > 0) {
        l = Trunc32(luminance * (1 - redscale));
      }
      if (redscale <= 0 && !(static_cast<float>(static_cast<uint8_t>(l)) > limit)) {
        std::memcpy(dst.Pixel(x, y), in, 3);
      } else {
        Relight(table, in, dst.Pixel(x, y), high, low, l);
      }
    }
  }
}

}  // namespace

// Reports a hundred times what the last frame received.
void CEdgeglowFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kEdgeglowParams, {threshold_ * 100, upscale_ * 100, redscale_ * 100});
}

void CEdgeglowFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEdgeglow) return;
  threshold_ = Param(params, 1);
  upscale_ = Param(params, 2);
  redscale_ = Param(params, 3);
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  CopyRows(in.data, out.data, width, height, in.step, out.step);
  EdgeGlow(in, out, threshold_, upscale_, redscale_);
}
