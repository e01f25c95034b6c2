#include "hosts/kvx/labelled_grid.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace kvx {

namespace {

constexpr int kCaptionHeight = 26;
constexpr int kGap = 6;

cv::Mat View(Picture& picture) {
  return cv::Mat(picture.height, picture.width, CV_8UC4, picture.pixels.data());
}

}  // namespace

Picture OverCheckerboard(const Picture& picture) {
  Picture out = picture;
  for (int32_t y = 0; y < out.height; ++y) {
    uint8_t* p = out.Row(y);
    for (int32_t x = 0; x < out.width; ++x, p += 4) {
      const int ground = (x / 8 + y / 8) % 2 ? 150 : 110;
      for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>((p[c] * p[3] + ground * (255 - p[3])) / 255);
      p[3] = 255;
    }
  }
  return out;
}

LabelledGrid::LabelledGrid(int count, int columns, int cellWidth, int32_t width, int32_t height)
    : columns_(std::clamp(columns, 1, std::max(count, 1))),
      cellWidth_(cellWidth),
      cellHeight_(std::clamp(cellWidth * height / width, 16, 4 * cellWidth)),
      sheet_(kGap + columns_ * (cellWidth + kGap),
             kGap + ((count + columns_ - 1) / columns_) * (cellHeight_ + kCaptionHeight + kGap)) {
  View(sheet_).setTo(cv::Scalar(32, 32, 32, 255));
}

void LabelledGrid::Add(const Picture& picture, const std::string& caption) {
  cv::Mat canvas = View(sheet_);
  const int x = kGap + next_ % columns_ * (cellWidth_ + kGap);
  const int y = kGap + next_ / columns_ * (cellHeight_ + kCaptionHeight + kGap);
  ++next_;
  Picture shown = OverCheckerboard(picture);
  cv::Mat cell;
  cv::resize(View(shown), cell, {cellWidth_, cellHeight_}, 0, 0, cv::INTER_AREA);
  cell.copyTo(canvas(cv::Rect(x, y, cellWidth_, cellHeight_)));
  cv::putText(canvas, caption, {x + 2, y + cellHeight_ + 18}, cv::FONT_HERSHEY_SIMPLEX, 0.5,
              cv::Scalar(235, 235, 235, 255), 1, cv::LINE_AA);
}

}  // namespace kvx
