// OpenCV's operations that do the same work as some of the effects, to be timed in the same run.
#ifndef KVX_BENCHMARKS_OPENCV_OPERATIONS_H_
#define KVX_BENCHMARKS_OPENCV_OPERATIONS_H_

#include <opencv2/core.hpp>
#include <span>
#include <vector>

struct OpenCvOperation {
  const char* name;
  std::vector<int32_t> ids;  // the effects whose work it is
  // From a frame of BGRA pixels to `dst`, which keeps its memory from run to run.
  void (*run)(const cv::Mat& src, cv::Mat& dst);
};

std::span<const OpenCvOperation> OpenCvOperations();

#endif  // KVX_BENCHMARKS_OPENCV_OPERATIONS_H_
