// Pictures laid into a quadrilateral, and the mirrored tiling that a background uses.
#ifndef KVX_SOURCE_PERSPECTIVE_FILTER_H_
#define KVX_SOURCE_PERSPECTIVE_FILTER_H_

#include <array>
#include <cstdint>
#include <opencv2/core/utility.hpp>

#include "frame.h"
#include "kvx/processor.h"

class CPerspectiveFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  std::array<double, 8> corners_ = {0, 0, 1, 0, 0, 1, 1, 1};  // x and y of each, as fractions of the frame
};

// Rows of a picture at half its size, tiled and upside down. Bytes 0 to 2 only. The views must not overlap.
class parallelPerspectInvoker : public cv::ParallelLoopBody {
 public:
  parallelPerspectInvoker(ConstFrameView src, FrameView dst) : src_(src), dst_(dst) {}
  void operator()(const cv::Range& rows) const override;

 private:
  ConstFrameView src_;
  FrameView dst_;
};

#endif  // KVX_SOURCE_PERSPECTIVE_FILTER_H_
