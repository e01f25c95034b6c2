// A tone curve in Lab.
#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/core/softfloat.hpp>

#include "engine/composite_looks.h"
#include "engine/engine_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "lab_tone.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// The conversions are OpenCV's of 8 bits, to the byte, whole numbers throughout: bytes to linear light of 0 to 2040, to
// Lab of 0 to 255, to linear light of 0 to 4095, to bytes. What goes through tables is done pixel by pixel for a piece
// of a row, the arithmetic between in vectors.
#ifndef KVX_ENGINE_LAB_TONE_PIECE
#define KVX_ENGINE_LAB_TONE_PIECE
namespace lab_tone {

struct Piece {
  static constexpr int32_t kMost = 256;
  uint16_t blue[kMost], green[kMost], red[kMost];  // linear, of 0 to 2040 and later of 0 to 4095
  uint16_t x[kMost], y[kMost], z[kMost];           // of 0 to 2040 and later their roots, in 1/32768
  uint32_t toned[kMost];                           // as ToneTables::toned
};

}  // namespace lab_tone
#endif

HWY_BEFORE_NAMESPACE();
namespace lab_tone {
namespace HWY_NAMESPACE {
namespace {

constexpr int32_t kUnit = 1 << 14;

// A root of 0 to kUnit and beyond, as Lab holds it, to what it is the root of.
int32_t Unrooted(int32_t root) {
  return root <= 3390 ? root * 108 / 841 - 290 : (((root * root) >> 14) * root) >> 14;
}

int32_t Limited(int32_t v, int32_t most) {
  const int32_t positive = v > 0 ? v : 0;
  return positive < most ? positive : most;
}

}  // namespace

void ToXyz(Piece& piece, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const int32_t b = piece.blue[i], g = piece.green[i], r = piece.red[i];
    piece.x[i] = static_cast<uint16_t>((1777 * r + 1541 * g + 778 * b + 2048) >> 12);
    piece.y[i] = static_cast<uint16_t>((871 * r + 2929 * g + 296 * b + 2048) >> 12);
    piece.z[i] = static_cast<uint16_t>((73 * r + 448 * g + 3575 * b + 2048) >> 12);
  }
}

// By way of a and b, cut to bytes.
void ToLinear(Piece& piece, int32_t count) {
  constexpr int32_t kMiddle = (128 << 15) + (1 << 14);
  for (int32_t i = 0; i < count; ++i) {
    const int32_t a = Limited((500 * (piece.x[i] - piece.y[i]) + kMiddle) >> 15, 255);
    const int32_t b = Limited((200 * (piece.y[i] - piece.z[i]) + kMiddle) >> 15, 255);
    const int32_t aShare = ((5 * a * 53687 + 128) >> 13) - 128 * kUnit / 500;
    const int32_t bShare = ((b * 41943 + 16) >> 9) - 128 * kUnit / 200 + 1;
    const int32_t root = static_cast<int32_t>(piece.toned[i] >> 16);
    const int32_t y = static_cast<int32_t>(piece.toned[i] & 0xFFFF);
    const int32_t x = Unrooted(root + aShare);
    const int32_t z = Unrooted(root - bShare);
    piece.red[i] = static_cast<uint16_t>(Limited((12615 * x - 6296 * y - 2223 * z + 8192) >> 14, 4095));
    piece.green[i] = static_cast<uint16_t>(Limited((-3773 * x + 7684 * y + 185 * z + 8192) >> 14, 4095));
    piece.blue[i] = static_cast<uint16_t>(Limited((217 * x - 836 * y + 4715 * z + 8192) >> 14, 4095));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace lab_tone
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace {

using cv::softdouble;
using cv::softfloat;

// Lightness through a power curve.
Curve LightnessCurve() {
  Curve curve;
  for (int32_t i = 0; i < 256; ++i) {
    double lightness = i * 0.392157;
    if (lightness < 10) lightness = 0;
    const double u = (lightness - 10) * 0.011111;
    const double p = std::clamp(std::pow(1 - u + 1e-6, 1.36), 0.0, 1.0);
    curve[i] = static_cast<uint8_t>(std::min(std::lround((1 - p) * 255), 255L));
  }
  return curve;
}

// Lightness 0 to 255 as a word: its linear light of 0 to 16384 in the low half, the root of that in the high half.
uint32_t LightOf(int32_t lightness) {
  constexpr int32_t kUnit = 1 << 14;
  int32_t y, root;
  if (lightness <= 20) {
    y = cvRound(softfloat(kUnit * 20 * 9) * softfloat(lightness) / softfloat(17 * 29 * 29 * 29));
    root = cvRound(softfloat(kUnit) *
                   (softfloat(16) / softfloat(116) + softfloat(lightness * 5) / softfloat(3 * 17 * 29)));
  } else {
    const softfloat exact =
        softfloat(lightness * 100 * kUnit) / softfloat(255 * 116) + softfloat(16 * kUnit) / softfloat(116);
    root = cvRound(exact);
    y = cvRound(exact * exact * exact / softfloat(kUnit * kUnit));
  }
  return static_cast<uint32_t>(y) | static_cast<uint32_t>(root) << 16;
}

// The library's software floats, as some entries lie so close to a half that the rounding of others might differ.
struct ToneTables {
  uint16_t linear[256];  // of a byte
  uint16_t root[2041];   // of x, y and z; where small, a line
  uint32_t toned[2041];  // what y becomes, by way of its lightness, as LightOf gives it
  uint8_t byteOf[4096];  // of linear light

  ToneTables() {
    const softdouble one = softdouble::one(), bend = softdouble(11) / softdouble(200);
    const softdouble power = softdouble(12) / softdouble(5), slope = softdouble(323) / softdouble(25);
    for (int32_t i = 0; i < 256; ++i) {
      const softdouble v = softfloat(i) / softfloat(255);
      const bool dark = v <= softdouble(809) / softdouble(20000);
      const softfloat light = dark ? v / slope : cv::pow((v + bend) / (one + bend), power);
      linear[i] = static_cast<uint16_t>(cvRound(softfloat(2040) * light));
    }
    for (int32_t i = 0; i < 4096; ++i) {
      const softdouble v = softfloat(i) / softfloat(4096);
      const bool dark = v <= softdouble(7827) / softdouble(2500000);
      const softfloat byte = dark ? v * slope : cv::pow(v, one / power) * (one + bend) - bend;
      byteOf[i] = static_cast<uint8_t>(cvRound(softfloat(255) * byte));
    }
    const Curve lightness = LightnessCurve();
    constexpr int32_t kScale = (116 * 255 + 50) / 100;
    constexpr int32_t kShift = (16 * 255 * 32768 + 50) / 100;
    for (int32_t i = 0; i <= 2040; ++i) {
      const softfloat v = softfloat::one() / softfloat(2040) * softfloat(i);
      const bool dark = v < softfloat(216) / softfloat(24389);
      const softfloat exact =
          dark ? cv::mulAdd(v, softfloat(841) / softfloat(108), softfloat(16) / softfloat(116)) : cv::cbrt(v);
      root[i] = static_cast<uint16_t>(cvRound(softfloat(32768) * exact));
      const int32_t level = (kScale * root[i] - kShift + 16384) >> 15;
      toned[i] = LightOf(lightness[static_cast<size_t>(std::clamp(level, 0, 255))]);
    }
  }
};

}  // namespace

namespace lab_tone {
HWY_EXPORT(ToXyz);
HWY_EXPORT(ToLinear);
}  // namespace lab_tone

// Lightness through a power curve, colour as it is.
int32_t LabTone(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  using namespace lab_tone;
  static const ToneTables tables;
  ForEachCopiedRow(from, image, [=](int32_t, uint8_t* row) {
    Piece piece;
    for (int32_t begin = 0; begin < image.width; begin += Piece::kMost) {
      const int32_t count = std::min(Piece::kMost, image.width - begin);
      uint8_t* pixels = row + 4 * static_cast<ptrdiff_t>(begin);
      for (int32_t i = 0; i < count; ++i) {
        const uint32_t pixel = LoadPixel(pixels, i);
        piece.blue[i] = tables.linear[pixel & 255];
        piece.green[i] = tables.linear[pixel >> 8 & 255];
        piece.red[i] = tables.linear[pixel >> 16 & 255];
      }
      HWY_DYNAMIC_DISPATCH(ToXyz)(piece, count);
      for (int32_t i = 0; i < count; ++i) {
        piece.toned[i] = tables.toned[piece.y[i]];
        piece.x[i] = tables.root[piece.x[i]];
        piece.y[i] = tables.root[piece.y[i]];
        piece.z[i] = tables.root[piece.z[i]];
      }
      HWY_DYNAMIC_DISPATCH(ToLinear)(piece, count);
      for (int32_t i = 0; i < count; ++i) {
        const uint32_t color = tables.byteOf[piece.blue[i]] |
                               static_cast<uint32_t>(tables.byteOf[piece.green[i]]) << 8 |
                               static_cast<uint32_t>(tables.byteOf[piece.red[i]]) << 16;
        StorePixel(pixels, i, (LoadPixel(pixels, i) & kAlphaByte) | color);
      }
    }
  });
  return kEngineDone;
}

#endif  // HWY_ONCE
