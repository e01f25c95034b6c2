// The stack blur: a triangular window at a cost per pixel that does not depend on the radius.
#ifndef KVX_SOURCE_STACK_BLUR_H_
#define KVX_SOURCE_STACK_BLUR_H_

#include <cstdint>

#include "framework/frame.h"

constexpr int32_t kMaxStackRadius = 254;

// Blurs bytes 0 to 2 in place, all rows first, then all columns. Each pass limits every result by the byte 3 of its
// pixel, so that premultiplied pixels stay valid; byte 3 stays. `radius` is limited to 0 and 254.
void StackBlur(FrameView frame, int32_t radius);

#endif  // KVX_SOURCE_STACK_BLUR_H_
