// Bilinear resize of frames of 32-bit pixels, alpha included, by fixed-point weights.
#ifndef KVX_FRAMEWORK_MY_RESIZE_H_
#define KVX_FRAMEWORK_MY_RESIZE_H_

#include <cstdint>
#include <vector>

#include "framework/frame.h"

// A frame at another size, which is worked out where it is read. No side may be 0.
class ResizedFrame {
 public:
  ResizedFrame(ConstFrameView src, int32_t width, int32_t height);

  // For one thread. Rows are best read from top to bottom.
  class Reader {
   public:
    explicit Reader(const ResizedFrame& frame) : frame_(frame), spread_(frame.columns_.size() * 8 * 2) {}
    // `count` pixels of row `y` from column `x` on.
    void Read(int32_t x, int32_t y, int32_t count, uint8_t* out);

   private:
    const uint8_t* Spread(int32_t y);

    const ResizedFrame& frame_;
    // The last two source rows with a pixel for each column: all the near ones, then all the far ones. Enlarging reads
    // them many times.
    std::vector<uint8_t> spread_;
    int32_t held_[2] = {-1, -1};
  };

 private:
  // Where a row or column reads.
  struct Place {
    int32_t near;
    int32_t far;
    float weight;  // of `far`

    Place(int32_t at, float ratio, int32_t size);
  };

  ConstFrameView src_;
  float verticalRatio_;
  std::vector<Place> columns_;
  std::vector<float> farWeights_;  // of the columns
};

// All of a frame, over OpenCV's worker threads. Steps in bytes. Equal sizes copy. Does nothing if a pointer is null or
// dstWidth, dstHeight, srcStep or dstStep is not above 0.
void MyResize(const uint8_t* src, uint8_t* dst, int32_t dstWidth, int32_t dstHeight, int32_t dstStep, int32_t srcWidth,
              int32_t srcHeight, int32_t srcStep);

#endif  // KVX_FRAMEWORK_MY_RESIZE_H_
