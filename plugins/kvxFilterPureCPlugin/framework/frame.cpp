#include "framework/frame.h"

#include <algorithm>
#include <cstring>

#include "framework/parallel.h"

bool CopyRows(const uint8_t* src, uint8_t* dst, int32_t width, int32_t height, int32_t srcStep, int32_t dstStep) {
  if (!src || !dst || width <= 0 || height <= 0 || srcStep <= 0 || dstStep <= 0) return false;
  if (srcStep == dstStep) {
    std::memcpy(dst, src, static_cast<size_t>(height) * static_cast<size_t>(dstStep));
    return true;
  }
  const size_t length = static_cast<size_t>(std::min(srcStep, dstStep));
  for (int32_t y = 0; y < height; ++y) {
    std::memcpy(dst + static_cast<ptrdiff_t>(y) * dstStep, src + static_cast<ptrdiff_t>(y) * srcStep, length);
  }
  return true;
}

void CopyRowsInBands(ConstFrameView src, FrameView dst) {
  if (!src.data || !dst.data) return;
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    CopyRows(src.Row(begin), dst.Row(begin), dst.width, end - begin, src.step, dst.step);
  });
}
