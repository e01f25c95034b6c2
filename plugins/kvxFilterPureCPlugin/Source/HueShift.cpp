#include "Source/HueShift.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Source/PixelWords.h"
#include "Source/PointRows.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

// Rows times columns, for row vectors.
using Matrix4 = std::array<std::array<float, 4>, 4>;

constexpr ParamRow kParams[] = {{u"Hue", 0, 0, 100}};
constexpr double kDefaultLevel = 0.95;  // only reported; frames do not change it

Matrix4 operator*(const Matrix4& a, const Matrix4& b) {
  Matrix4 product;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j] + a[i][3] * b[3][j];
    }
  }
  return product;
}

Matrix4 RotationX(float s, float c) {
  return {{{1, 0, 0, 0}, {0, c, s, 0}, {0, -s, c, 0}, {0, 0, 0, 1}}};
}
Matrix4 RotationY(float s, float c) {
  return {{{c, 0, -s, 0}, {0, 1, 0, 0}, {s, 0, c, 0}, {0, 0, 0, 1}}};
}
Matrix4 RotationZ(float s, float c) {
  return {{{c, s, 0, 0}, {-s, c, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
}
Matrix4 ShearZ(float sx, float sy) {
  return {{{1, 0, sx, 0}, {0, 1, sy, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
}

// Turns the gray axis onto z, shears so that equal luminance lies level, rotates about z and goes all the way back.
Matrix4 HueRotation(int32_t degrees) {
  const float xSin = 1.0f / std::sqrt(2.0f);
  const float xCos = 1.0f / std::sqrt(2.0f);
  const float ySin = -1.0f / std::sqrt(3.0f);
  const float yCos = std::sqrt(2.0f) / std::sqrt(3.0f);
  const Matrix4 toGray = RotationX(xSin, xCos) * RotationY(ySin, yCos);

  float luminance[3];
  for (int j = 0; j < 3; ++j) {
    luminance[j] = 0.3086f * toGray[0][j] + 0.6094f * toGray[1][j] + 0.082f * toGray[2][j] + toGray[3][j];
  }
  const float sx = luminance[0] / luminance[2];
  const float sy = luminance[1] / luminance[2];

  const double angle = degrees * 3.141592653589793 / 180.0;
  const Matrix4 turned =
      toGray * ShearZ(sx, sy) * RotationZ(static_cast<float>(std::sin(angle)), static_cast<float>(std::cos(angle)));
  return turned * ShearZ(-sx, -sy) * RotationY(-ySin, yCos) * RotationX(-xSin, xCos);
}

// 0 to 100 go once around the circle, 50 being no shift. The two halves round apart: 51 is 356 degrees.
int32_t DegreesOf(int32_t level) {
  if (level >= 0 && level <= 50) return Trunc32(180 - level / 50.0 * 180);
  if (level >= 51 && level <= 100) return Trunc32((100 - level) / 50.0 * 180 + 180);
  return 0;
}

}  // namespace

void CHueShift::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {kDefaultLevel * 100});
}

void CHueShift::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  CopyBetweenRows(in, out);
  const Matrix4 m = HueRotation(DegreesOf(Trunc32(Param(params, 1))));
  ColorMatrix matrix;
  for (size_t i = 0; i < 3; ++i) std::copy_n(m[i].begin(), 3, matrix.factors[i].begin());
  std::copy_n(m[3].begin(), 3, matrix.offsets.begin());
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) MatrixRow(in.Row(y), out.Row(y), out.width, matrix);
  });
}
