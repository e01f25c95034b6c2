// The pattern routines of the background fills. They paint bytes 0 to 2 in place; byte 3 stays. Cells scale with the
// height of the image, so that a fill looks alike at any size.
#ifndef KVX_SOURCE_BGF_PATTERNS_H_
#define KVX_SOURCE_BGF_PATTERNS_H_

#include <cstdint>

#include "Source/BGFCommon.h"
#include "framework/parallel.h"

// `perRow(y, row, width)` for each row of a fill's box, which covers 0.3 of a frame each way unless it is set
// otherwise: large frames are what counts.
template <typename PerRow>
void ForFillRows(FrameView image, PerRow perRow) {
  ForRowBands(image.width, 0, image.height,
              [=](int32_t begin, int32_t end) {
                for (int32_t y = begin; y < end; ++y) perRow(y, image.Row(y), image.width);
              },
              {.pixels = kLargeFrame / 12});
}

// The stack blur at a radius of up to 254; below 1 nothing happens.
void FillBlur(FrameView image, int32_t radius);

namespace fill_pattern {

void Gray(FrameView image, const FillInput& input);         // a light grey
void Blacknet(FrameView image, const FillInput& input);     // a grey behind a darker net
void Mosaic(FrameView image, const FillInput& input);       // bands of repeated rows
void Brick(FrameView image, const FillInput& input);        // four-pointed cells on a dimmed ground
void DiamondBlur(FrameView image, const FillInput& input);  // diamonds of one colour
void Oyster(FrameView image, const FillInput& input);       // discs of one colour
void Hola(FrameView image, const FillInput& input);         // six large discs from top to bottom
void DiamondWave(FrameView image, const FillInput& input);  // waves of light from the middle, straight
void Wave(FrameView image, const FillInput& input);         // waves of light from the middle, round
void Frosted(FrameView image, const FillInput& input);      // as through ground glass
void Noise(FrameView image, const FillInput& input);        // coarse grain
void RippleH(FrameView image, const FillInput& input);      // rows shifted along a sine
void RippleV(FrameView image, const FillInput& input);      // columns shifted along a sine
void ThreeD(FrameView image, const FillInput& input);       // blurred panes behind a sharp lattice
void Perspect(FrameView image, const FillInput& input);     // four small pictures, upside down

}  // namespace fill_pattern

#endif  // KVX_SOURCE_BGF_PATTERNS_H_
