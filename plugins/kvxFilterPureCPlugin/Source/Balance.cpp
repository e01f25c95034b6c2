#include "Source/Balance.h"

#include <cstring>
#include <utility>

#include "Source/PixelMap.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {
    {u"R", 0, 1, 255}, {u"G", 0, 1, 255}, {u"B", 0, 1, 255}, {u"IsLeft", 0, 0, 1}, {u"IsSplit", 0, 0, 1}};

struct Quadratic {
  double c[3];  // of x^2, x and 1
};

// Elimination without dividing rows by their pivots. The curve is therefore not the parabola through the points; this
// response is meant.
Quadratic CurveOf(double p) {
  const double points[3][2] = {{0, 0}, {0.5, 0.5}, {p, 1}};
  double m[3][4];
  for (int i = 0; i < 3; ++i) {
    const double x = points[i][0];
    m[i][0] = x * x;
    m[i][1] = x;
    m[i][2] = 1;
    m[i][3] = points[i][1];
  }
  for (int k = 0; k < 3; ++k) {
    int last = 2;
    while (m[k][k] == 0 && last > k) std::swap(m[k], m[last--]);
    if (last <= k) continue;
    for (int i = k + 1; i < 3; ++i) {
      const double factor = -m[i][k];
      for (int j = k; j < 4; ++j) m[i][j] += m[k][j] * factor;
    }
  }
  Quadratic curve;
  for (int k = 2; k >= 0; --k) {
    double sum = 0;
    for (int j = k + 1; j < 3; ++j) sum += m[k][j] * curve.c[j];
    curve.c[k] = m[k][3] - sum;
  }
  return curve;
}

ByteTable TableOf(double p) {
  const Quadratic curve = CurveOf(p);
  ByteTable table;
  for (int i = 0; i < 256; ++i) {
    const double x = i / 255.0;
    const double v = (curve.c[0] * x + curve.c[1]) * x + curve.c[2];
    table[i] = TruncByte(ClampFloat(v, 0, 1) * 255);
  }
  return table;
}

void CopyPixels(ConstFrameView src, FrameView dst) {
  if (dst.Empty()) return;
  for (int32_t y = 0; y < dst.height; ++y) std::memcpy(dst.Row(y), src.Row(y), static_cast<size_t>(dst.width) * 4);
}

template <typename View>
View Columns(View view, int32_t from, int32_t to) {
  return {view.Pixel(from, 0), to - from, view.height, view.step};
}

}  // namespace

void CBalance::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {r_ * 255, g_ * 255, b_ * 255, static_cast<double>(left_), static_cast<double>(split_)});
}

void CBalance::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (!src || !dst || !params) return;
  r_ = Param(params, 1) / 255;
  g_ = Param(params, 2) / 255;
  b_ = Param(params, 3) / 255;
  left_ = Param(params, 4) == 0 ? 1 : 0;
  split_ = Param(params, 5) != 0 ? 1 : 0;

  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  const int32_t from = split_ && !left_ ? width / 2 : 0;
  const int32_t to = left_ ? width / 2 : width;
  CopyPixels(Columns(in, 0, from), Columns(out, 0, from));
  // The first curve serves byte 1, the second byte 0: this pairing is meant.
  MapBytes(Columns(in, from, to), Columns(out, from, to), TableOf(g_), TableOf(r_), TableOf(b_));
  CopyPixels(Columns(in, to, width), Columns(out, to, width));
}
