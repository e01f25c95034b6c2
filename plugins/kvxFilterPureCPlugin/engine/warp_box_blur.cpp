// A box blur of everything that is not wholly transparent, alpha included.
#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "engine/warp_routines.h"
#include "workers/workers.h"

namespace {

cv::Mat MatOf(const EngineImage& image) {
  return {image.height, image.width, CV_8UC4, image.pixels, static_cast<size_t>(image.stepBytes)};
}

// The smallest rectangle about every pixel that is not wholly transparent. Rows are looked at from their ends: in an
// opaque picture that is two pixels each.
cv::Rect VisibleRegion(const EngineImage& image) {
  int32_t left = image.width, right = -1, top = -1, bottom = -1;
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* alphas = image.Row(y) + 3;
    int32_t first = 0;
    while (first < image.width && alphas[4 * first] == 0) ++first;
    if (first == image.width) continue;
    int32_t last = image.width - 1;
    while (alphas[4 * last] == 0) --last;
    left = std::min(left, first);
    right = std::max(right, last);
    if (top < 0) top = y;
    bottom = y;
  }
  return top < 0 ? cv::Rect() : cv::Rect(left, top, right - left + 1, bottom - top + 1);
}

int32_t BoxBlur(EngineRecord&, const EngineImage& frame, const EngineImage& copy) {
  const int32_t side = std::min(2 * std::max(frame.width, frame.height) / 640 + 1, 21);
  cv::Rect region = VisibleRegion(copy);
  if (region.width < 2 || region.height < 2) region = {0, 0, frame.width, frame.height};
  if (region.width < frame.width || region.height < frame.height) MatOf(copy).copyTo(MatOf(frame));
  cv::Mat blurred = MatOf(frame)(region);
  // A band's blur sees the rows of the picture around it; adding up the first window is paid for in each.
  ForRowBands(region.width, 0, region.height,
              [&](int32_t begin, int32_t end) {
                cv::Mat band = blurred.rowRange(begin, end);
                WithWorkers([&] {
                  cv::boxFilter(MatOf(copy)(region).rowRange(begin, end), band, -1, {side, side}, {-1, -1}, true,
                                cv::BORDER_REFLECT_101);
                });
              },
              {.rows = 4 * side});
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> BoxBlurRoutines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kWarpBlur, BoxBlur, true}};
  return kRoutines;
}
