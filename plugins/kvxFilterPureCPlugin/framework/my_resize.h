// Bilinear resize by table look-ups, over OpenCV's worker threads.
#ifndef KVX_FRAMEWORK_MY_RESIZE_H_
#define KVX_FRAMEWORK_MY_RESIZE_H_

#include <cstdint>

// Scales a frame of 32-bit pixels, alpha included. Steps in bytes. Equal sizes copy. Does nothing if a pointer is null
// or dstWidth, dstHeight, srcStep or dstStep is not above 0.
void MyResize(const uint8_t* src, uint8_t* dst, int32_t dstWidth, int32_t dstHeight, int32_t dstStep, int32_t srcWidth,
              int32_t srcHeight, int32_t srcStep);

#endif  // KVX_FRAMEWORK_MY_RESIZE_H_
