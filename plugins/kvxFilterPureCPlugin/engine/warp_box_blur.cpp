// A box blur of everything that is not wholly transparent, alpha included.
#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "warp_routines.h"

namespace {

cv::Mat MatOf(const EngineImage& image) {
  return {image.height, image.width, CV_8UC4, image.pixels, static_cast<size_t>(image.stepBytes)};
}

int32_t BoxBlur(EngineRecord&, const EngineImage& frame, const EngineImage& copy) {
  const int32_t side = std::min(2 * std::max(frame.width, frame.height) / 640 + 1, 21);
  const cv::Mat from = MatOf(copy);
  const cv::Mat to = MatOf(frame);
  cv::Mat alpha;
  cv::extractChannel(from, alpha, 3);
  cv::Rect region = cv::boundingRect(alpha);
  if (region.width < 2 || region.height < 2) region = {0, 0, frame.width, frame.height};
  cv::Mat blurred = to(region);
  cv::boxFilter(from(region), blurred, -1, {side, side}, {-1, -1}, true, cv::BORDER_REFLECT_101);
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> BoxBlurRoutines() {
  static constexpr WarpRoutine kRoutines[] = {{1027, BoxBlur}};
  return kRoutines;
}
