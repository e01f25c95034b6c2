// Frames as OpenCV sees them.
#ifndef KVX_FRAMEWORK_FRAME_MATRIX_H_
#define KVX_FRAMEWORK_FRAME_MATRIX_H_

#include <cstring>
#include <opencv2/core.hpp>

#include "framework/frame.h"

// A matrix over a source frame. A matrix cannot have rows that overlap, as those of a source narrower than the frame do
// (step below width * 4): such rows are copied apart.
inline cv::Mat MatrixOf(const ConstFrameView& frame) {
  const size_t rowBytes = static_cast<size_t>(frame.width) * 4;
  if (static_cast<size_t>(frame.step) >= rowBytes) {
    return cv::Mat(frame.height, frame.width, CV_8UC4, const_cast<uint8_t*>(frame.data),
                   static_cast<size_t>(frame.step));
  }
  cv::Mat apart(frame.height, frame.width, CV_8UC4);
  for (int32_t y = 0; y < frame.height; ++y) std::memcpy(apart.ptr(y), frame.Row(y), rowBytes);
  return apart;
}

#endif  // KVX_FRAMEWORK_FRAME_MATRIX_H_
