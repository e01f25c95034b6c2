// The mirrored tiling of a picture that a background fill uses.
#ifndef KVX_SOURCE_PERSPECTIVE_TILES_H_
#define KVX_SOURCE_PERSPECTIVE_TILES_H_

#include <opencv2/core/utility.hpp>

#include "framework/frame.h"

// Rows of a picture at half its size, tiled and upside down. Bytes 0 to 2 only. The views must not overlap.
class parallelPerspectInvoker : public cv::ParallelLoopBody {
 public:
  parallelPerspectInvoker(ConstFrameView src, FrameView dst) : src_(src), dst_(dst) {}
  void operator()(const cv::Range& rows) const override;

 private:
  ConstFrameView src_;
  FrameView dst_;
};

#endif  // KVX_SOURCE_PERSPECTIVE_TILES_H_
