#include "benchmarks/opencv_operations.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace {

// A second picture of the frame's size.
const cv::Mat& Second(const cv::Mat& src) {
  static cv::Mat second;
  if (second.size() != src.size()) cv::flip(src, second, 1);
  return second;
}

// One table for all channels; alpha is mapped too, which spares OpenCV the four-table form.
void Lut(const cv::Mat& src, cv::Mat& dst) {
  static const cv::Mat table = [] {
    cv::Mat made(1, 256, CV_8U);
    for (int i = 0; i < 256; ++i) made.at<uint8_t>(i) = static_cast<uint8_t>(255 - i / 2);
    return made;
  }();
  cv::LUT(src, table, dst);
}

// A table for each channel.
void Lut4(const cv::Mat& src, cv::Mat& dst) {
  static const cv::Mat table = [] {
    cv::Mat made(1, 256, CV_8UC4);
    for (int i = 0; i < 256; ++i) {
      const auto v = static_cast<uint8_t>(i);
      made.at<cv::Vec4b>(i) = cv::Vec4b(255 - v, v / 2, 128 + v / 2, v);
    }
    return made;
  }();
  cv::LUT(src, table, dst);
}

void Gray(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat gray;
  cv::cvtColor(src, gray, cv::COLOR_BGRA2GRAY);
  cv::cvtColor(gray, dst, cv::COLOR_GRAY2BGRA);
}

void Threshold(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat gray;
  cv::cvtColor(src, gray, cv::COLOR_BGRA2GRAY);
  cv::threshold(gray, gray, 128, 255, cv::THRESH_BINARY);
  cv::cvtColor(gray, dst, cv::COLOR_GRAY2BGRA);
}

void Equalize(const cv::Mat& src, cv::Mat& dst) {
  static std::vector<cv::Mat> channels;
  cv::split(src, channels);
  for (int c = 0; c < 3; ++c) cv::equalizeHist(channels[static_cast<size_t>(c)], channels[static_cast<size_t>(c)]);
  cv::merge(channels, dst);
}

void Sobel(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat across, down, absolute;
  cv::Sobel(src, across, CV_16S, 1, 0);
  cv::Sobel(src, down, CV_16S, 0, 1);
  cv::convertScaleAbs(across, dst);
  cv::convertScaleAbs(down, absolute);
  cv::add(dst, absolute, dst);
}

void Filter3x3(const cv::Mat& src, cv::Mat& dst) {
  cv::filter2D(src, dst, -1, cv::Matx33f(0, -1, 0, -1, 5, -1, 0, -1, 0));
}

// A whirl about the middle, in OpenCV's quick form of a map.
void RemapNearest(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat map, none;
  if (map.size() != src.size()) {
    cv::Mat places(src.size(), CV_32FC2);
    const float cx = static_cast<float>(src.cols) / 2, cy = static_cast<float>(src.rows) / 2;
    for (int y = 0; y < src.rows; ++y) {
      for (int x = 0; x < src.cols; ++x) {
        const float dx = static_cast<float>(x) - cx, dy = static_cast<float>(y) - cy;
        const float r = 1 - std::hypot(dx, dy) / std::hypot(cx, cy);
        const float c = std::cos(r * r * 1.57f), s = std::sin(r * r * 1.57f);
        places.at<cv::Vec2f>(y, x) = {cx + dx * c - dy * s, cy + dy * c + dx * s};
      }
    }
    cv::convertMaps(places, cv::noArray(), map, none, CV_16SC2, true);
  }
  cv::remap(src, dst, map, cv::noArray(), cv::INTER_NEAREST, cv::BORDER_REPLICATE);
}

void WarpPerspective(const cv::Mat& src, cv::Mat& dst) {
  const cv::Matx33d matrix(0.8, 0.1, 30, 0.05, 0.9, 20, 0.0001, 0.00005, 1);
  cv::warpPerspective(src, dst, matrix, src.size(), cv::INTER_NEAREST);
}

void Tiles(const cv::Mat& src, cv::Mat& dst) {
  static cv::Mat small;
  cv::resize(src, small, {src.cols / 3, src.rows / 3}, 0, 0, cv::INTER_LINEAR);
  cv::repeat(small, 3, 3, dst);
}

const OpenCvOperation kOperations[] = {
    {"xor", {71, 88}, [](const cv::Mat& s, cv::Mat& d) { cv::bitwise_xor(s, cv::Scalar(255, 255, 255, 0), d); }},
    {"and", {81, 82, 83, 84}, [](const cv::Mat& s, cv::Mat& d) { cv::bitwise_and(s, cv::Scalar(255, 0, 0, 255), d); }},
    {"LUT, one table", {21, 23, 25, 27, 28, 79, 92}, Lut},
    {"LUT, a table each",
     {42, 55, 99, 100, 101, 102, 123, 124, 125, 126, 127, 129, 140, 141, 142, 146, 152, 153},
     Lut4},
    {"gray and back", {46, 54, 85}, Gray},
    {"threshold of gray", {86}, Threshold},
    {"colour matrix",
     {26, 41},
     [](const cv::Mat& s, cv::Mat& d) {
       cv::transform(s, d, cv::Matx44f(.8f, .1f, .1f, 0, .1f, .8f, .1f, 0, .1f, .1f, .8f, 0, 0, 0, 0, 1));
     }},
    {"equalizeHist of three channels", {39}, Equalize},
    {"3 by 3 filter", {1, 10, 12, 80, 171}, Filter3x3},
    {"Sobel both ways", {37}, Sobel},
    {"box blur of 7",
     {172},
     [](const cv::Mat& s, cv::Mat& d) {
       cv::blur(s, d, {7, 7});
     }},
    {"Gaussian blur of 39",
     {17},
     [](const cv::Mat& s, cv::Mat& d) {
       cv::GaussianBlur(s, d, {39, 39}, 0);
     }},
    {"flip across", {13, 93}, [](const cv::Mat& s, cv::Mat& d) { cv::flip(s, d, 1); }},
    {"flip down", {94}, [](const cv::Mat& s, cv::Mat& d) { cv::flip(s, d, 0); }},
    {"flip both ways", {95}, [](const cv::Mat& s, cv::Mat& d) { cv::flip(s, d, -1); }},
    {"multiply",
     {196, 197, 198, 199, 200, 201, 202, 203, 204, 205},
     [](const cv::Mat& s, cv::Mat& d) { cv::multiply(s, Second(s), d, 1.0 / 255); }},
    {"add", {241, 242, 243}, [](const cv::Mat& s, cv::Mat& d) { cv::add(s, Second(s), d); }},
    {"minimum", {254}, [](const cv::Mat& s, cv::Mat& d) { cv::min(s, Second(s), d); }},
    {"weighted sum", {193}, [](const cv::Mat& s, cv::Mat& d) { cv::addWeighted(s, 0.3, Second(s), 0.7, 0, d); }},
    {"scale", {56}, [](const cv::Mat& s, cv::Mat& d) { s.convertTo(d, -1, 255 / 256.0); }},
    {"nearest remap", {62, 65, 69, 70, 176, 177, 178, 179, 180}, RemapNearest},
    {"perspective", {48}, WarpPerspective},
    {"a third of the size, tiled", {15}, Tiles},
};

}  // namespace

std::span<const OpenCvOperation> OpenCvOperations() {
  return kOperations;
}
