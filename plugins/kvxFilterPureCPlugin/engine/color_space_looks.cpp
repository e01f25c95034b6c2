// Looks that work in another colour space: bands of hue, and a tone curve in Lab.
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "engine/composite_looks.h"
#include "engine/engine_internal.h"

namespace {

// Where a sector of 60 degrees puts its three levels: the value, the level between, the lowest.
struct Sector {
  int value;
  int between;
  int lowest;
};
constexpr Sector kSectors[] = {{2, 1, 0}, {1, 2, 0}, {1, 0, 2}, {0, 1, 2}, {0, 2, 1}, {2, 0, 1}};

// A hue in degrees. Even sectors rise towards the next colour, odd ones fall from the last.
struct Hue {
  explicit Hue(int32_t degrees) : sector(kSectors[degrees / 60 % 6]) {
    const double f = degrees / 60.0 - degrees / 60;
    slope = degrees / 60 % 2 ? f : 1 - f;
  }
  uint8_t Between(double saturation, int32_t value) const {
    return static_cast<uint8_t>(static_cast<int32_t>((1 - slope * saturation) * value));
  }

  Sector sector;
  double slope;
};

}  // namespace

// The full circle of hues from bottom to top; value and saturation stay.
int32_t Rainbow(EngineRecord&, const EngineImage& image) {
  for (int32_t y = 0; y < image.height; ++y) {
    const Hue hue(360 * (image.height - y) / image.height);
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const int32_t value = std::max({p[0], p[1], p[2]});
      const int32_t least = std::min({p[0], p[1], p[2]});
      if (value == least) {
        SetGray(p, static_cast<uint8_t>(value));
        continue;
      }
      const double saturation = static_cast<double>(value - least) / value;
      p[hue.sector.value] = static_cast<uint8_t>(value);
      p[hue.sector.between] = hue.Between(saturation, value);
      p[hue.sector.lowest] = static_cast<uint8_t>(static_cast<int32_t>((1 - saturation) * value));
    }
  }
  return kEngineDone;
}

// From orange at the top to green at the bottom, fully saturated.
int32_t SunriseBands(EngineRecord&, const EngineImage& image) {
  for (int32_t y = 0; y < image.height; ++y) {
    const Hue hue(90 * y / image.height + 30);
    Curve between;
    for (int32_t value = 0; value < 256; ++value) between[value] = hue.Between(1.0, value);
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const uint8_t value = std::max({p[0], p[1], p[2]});
      p[hue.sector.value] = value;
      p[hue.sector.between] = between[value];
      p[hue.sector.lowest] = 0;
    }
  }
  return kEngineDone;
}

// Lightness through a power curve, colour as it is.
int32_t LabTone(EngineRecord& record, const EngineImage& image) {
  static const Curve kLightness = [] {
    Curve curve;
    for (int32_t i = 0; i < 256; ++i) {
      double lightness = i * 0.392157;
      if (lightness < 10) lightness = 0;
      const double u = (lightness - 10) * 0.011111;
      const double p = std::clamp(std::pow(1 - u + 1e-6, 1.36), 0.0, 1.0);
      curve[i] = static_cast<uint8_t>(std::min(std::lround((1 - p) * 255), 255L));
    }
    return curve;
  }();
  // The library fills its Lab tables on first use and does not lock: one thread must have been through alone.
  [[maybe_unused]] static const bool kTablesFilled = [] {
    uint8_t bgrBytes[3] = {}, labBytes[3] = {};
    cv::Mat bgr(1, 1, CV_8UC3, bgrBytes), lab(1, 1, CV_8UC3, labBytes);
    cv::cvtColor(bgr, lab, cv::COLOR_BGR2Lab);
    cv::cvtColor(lab, bgr, cv::COLOR_Lab2BGR);
    return true;
  }();
  // A few rows at a time, so that they stay in the cache between the conversions.
  const int32_t bandRows = std::clamp(16384 / image.width, 1, image.height);
  uint8_t* bgrBytes = EnsureWorkCopy(record, bandRows * image.width * 3);
  uint8_t* labBytes = EnsureSourceCopy(record, bandRows * image.width * 3);
  if (!bgrBytes || !labBytes) return kEngineNoScratch;
  for (int32_t y = 0; y < image.height; y += bandRows) {
    const int32_t rows = std::min(bandRows, image.height - y);
    const int32_t pixels = rows * image.width;
    const cv::Mat bgra(rows, image.width, CV_8UC4, image.Row(y), static_cast<size_t>(image.stepBytes));
    cv::Mat bgr(rows, image.width, CV_8UC3, bgrBytes);
    cv::Mat lab(rows, image.width, CV_8UC3, labBytes);
    cv::cvtColor(bgra, bgr, cv::COLOR_BGRA2BGR);
    cv::cvtColor(bgr, lab, cv::COLOR_BGR2Lab);
    for (int32_t i = 0; i < 3 * pixels; i += 3) labBytes[i] = kLightness[labBytes[i]];
    cv::cvtColor(lab, bgr, cv::COLOR_Lab2BGR);
    const uint8_t* converted = bgrBytes;
    ForEachPixel(MakeEngineImage(image.Row(y), image.width, rows, image.stepBytes), [&converted](uint8_t* p) {
      std::copy_n(converted, 3, p);
      converted += 3;
    });
  }
  return kEngineDone;
}
