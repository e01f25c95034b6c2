#include "Source/ThreeDFlippoFilter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/frame.h"
#include "framework/host_log.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/random.h"

namespace {

constexpr ParamRow kParams[] = {{u"Flip0", 0, 0, 100},   {u"Flip1", 0, 0, 100},   {u"Flip2", 0, 0, 100},
                                {u"FillBlank", 1, 0, 1}, {u"Center0", 0, 0, 100}, {u"Center1", 0, 0, 100},
                                {u"Invertrot", 1, 0, 1}};

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix Multiply(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
  }
  return product;
}

// About x first, then y, then z.
Matrix Rotation(const std::array<double, 3>& angles) {
  std::array<double, 3> s, c;
  for (size_t i = 0; i < 3; ++i) {
    const double radians = (angles[i] - 0.5) * 2 * M_PI;
    s[i] = std::sin(radians);
    c[i] = std::cos(radians);
  }
  const Matrix aboutX = {{{1, 0, 0}, {0, c[0], -s[0]}, {0, s[0], c[0]}}};
  const Matrix aboutY = {{{c[1], 0, s[1]}, {0, 1, 0}, {-s[1], 0, c[1]}}};
  const Matrix aboutZ = {{{c[2], -s[2], 0}, {s[2], c[2], 0}, {0, 0, 1}}};
  return Multiply(aboutZ, Multiply(aboutY, aboutX));
}

Matrix Transposed(const Matrix& m) {
  return {{{m[0][0], m[1][0], m[2][0]}, {m[0][1], m[1][1], m[2][1]}, {m[0][2], m[1][2], m[2][2]}}};
}

// The whole part of a position from 0 up to `size`, some number outside 0..size - 1 for any other, NaN included.
int32_t CutInto(double position, double size) {
  const double low = position >= 0.0 ? position : -1.0;
  return static_cast<int32_t>(low < size ? low : size);
}

// Source index of every pixel, -1 where the card is not.
//
// The card lies in the plane z = 0 and turns by r about (cx, cy). The eye stands before that point at distance D = W +
// H, more than any corner can come near, and sees the card in perspective: a card point p shows at q = r p times D / (D
// + q.z). Backwards, for the pixel at (u, v) from the centre: the ray from (0, 0, -D) through (u, v, 0), turned into
// the card's own axes by the inverse of r, which is its transpose, starts at e = -D * (r20, r21, r22) and runs along d
// = (r00 u + r10 v + r20 D, r01 u + r11 v + r21 D, r02 u + r12 v + r22 D). It meets the card's plane at t = -e.z / d.z,
// which is in front of the eye if t is above 0, in (X, Y) = (e.x + t d.x, e.y + t d.y). With r = 1 that is t = 1 and
// exactly (u, v). Pixels have their centres at whole numbers, so rounding is by + 0.5 and cutting, and half a turn
// about the middle is an exact flip.
void BuildMap(int32_t* map, int32_t width, int32_t height, const Matrix& r, double cx, double cy) {
  const double w = width;
  const double h = height;
  const double distance = w + h;
  const double ex = -distance * r[2][0];
  const double ey = -distance * r[2][1];
  const double ez = -distance * r[2][2];
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      int32_t* places = map + static_cast<ptrdiff_t>(y) * width;
      const double v = y - cy;
      const double dx0 = r[1][0] * v + r[2][0] * distance;
      const double dy0 = r[1][1] * v + r[2][1] * distance;
      const double dz0 = r[1][2] * v + r[2][2] * distance;
      for (int32_t x = 0; x < width; ++x) {
        const double u = x - cx;
        const double t = -ez / (r[0][2] * u + dz0);
        const double front = t > 0 ? 0.5 : -2 * distance;
        const int32_t column = CutInto(cx + (ex + t * (r[0][0] * u + dx0)) + front, w);
        const int32_t row = CutInto(cy + (ey + t * (r[0][1] * u + dy0)) + 0.5, h);
        const bool inside = (static_cast<uint32_t>(column) < static_cast<uint32_t>(width)) &
                            (static_cast<uint32_t>(row) < static_cast<uint32_t>(height));
        places[x] = inside ? row * width + column : -1;
      }
    }
  });
}

// Below 0: a blank or the pixel that was there.
void ApplyMap(ConstFrameView src, FrameView dst, const int32_t* map, bool fillBlank) {
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t i = begin * dst.width; i < end * dst.width; ++i) {
      uint8_t* out = dst.data + static_cast<ptrdiff_t>(i) * 4;
      if (map[i] < 0 && fillBlank) {
        std::memset(out, 0, 4);
        continue;
      }
      const int32_t index = map[i] < 0 ? i : map[i];
      std::memcpy(out, src.data + static_cast<ptrdiff_t>(index) * 4, 4);
    }
  });
}

// Every pixel from anywhere in the source.
void ShowStatic(ConstFrameView src, FrameView dst) {
  const int32_t pixels = dst.width * dst.height;
  Rand rand;
  for (int32_t i = 0; i < pixels; ++i) {
    const int32_t index = rand.Next() % pixels;
    std::memcpy(dst.data + static_cast<ptrdiff_t>(i) * 4, src.data + static_cast<ptrdiff_t>(index) * 4, 4);
  }
}

}  // namespace

void C3DFlippoFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {rates_[0] * 100, rates_[1] * 100, rates_[2] * 100, fillBlank_ ? 1.0 : 0.0, center_[0] * 100,
                 center_[1] * 100, invertRotation_ ? 1.0 : 0.0});
}

void C3DFlippoFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != 31 || width <= 0 || height <= 0) return;
  for (int k = 0; k < 3; ++k) rates_[static_cast<size_t>(k)] = Param(params, k + 1) / 100;
  fillBlank_ = Trunc32(Param(params, 4)) != 0;
  center_ = {Param(params, 5) / 100, Param(params, 6) / 100};
  invertRotation_ = Trunc32(Param(params, 7)) != 0;
  const bool atRest = rates_[0] == 0.5 && rates_[1] == 0.5 && rates_[2] == 0.5;
  if ((!map_ || !atRest) && !RebuildMap()) return;
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (static_) return ShowStatic(in, out);
  ApplyMap(in, out, map_.Data(), fillBlank_);
}

// False without memory.
bool C3DFlippoFilter::RebuildMap() {
  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
  if (!map_ && (pixels > INT32_MAX || !map_.Allocate(pixels))) {
    KVX_LOG_ALLOCATION_FAILURE("ThreeDFlippoFilter");
    return false;
  }
  for (size_t i = 0; i < 3; ++i) {
    const double angle = angles_[i] + (rates_[i] - 0.5);
    angles_[i] = std::isfinite(angle) ? angle - std::floor(angle) : 0.5;
  }
  const double cx = center_[0] * (width - 1);
  const double cy = center_[1] * (height - 1);
  static_ = !std::isfinite(cx) || !std::isfinite(cy);  // a centre that is nowhere gives no picture
  if (static_) return true;
  const Matrix rotation = Rotation(angles_);
  BuildMap(map_.Data(), width, height, invertRotation_ ? Transposed(rotation) : rotation, cx, cy);
  return true;
}
