#include "Source/TwoSplitFadeInFilter.h"

#include <algorithm>
#include <array>

#include "Source/ByteOffsets.h"
#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"

namespace {

constexpr int32_t kFadeFrames = 50;
constexpr int32_t kTint = 20;
constexpr double kBarWidth = 5.0;  // at 640 columns

constexpr int kGreen = 1;
constexpr int kRed = 2;

// The left half redder, the right half greener, both opaque.
ByteOffsets TintOf(int32_t width) {
  ByteOffsets offsets(4 * static_cast<size_t>(std::max(width, 0)), 0);
  for (int32_t x = 0; x < width; ++x) {
    int16_t* pixel = &offsets[4 * static_cast<size_t>(x)];
    pixel[x < width / 2 ? kRed : kGreen] = kTint;
    pixel[3] = 255;
  }
  return offsets;
}

ByteTable FadeTable(double progress, int32_t tint) {
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) table[static_cast<size_t>(i)] = TruncByte(std::min(255.0, i * progress + tint));
  return table;
}

// From the tint alone to the tinted picture.
template <int Tinted>
void FadeRow(const uint8_t* in, uint8_t* out, int32_t count, const ByteTable& plain, const ByteTable& tinted) {
  constexpr int kOther = kGreen + kRed - Tinted;
  for (int32_t x = 0; x < count; ++x, in += 4, out += 4) {
    out[0] = plain[in[0]];
    out[Tinted] = tinted[in[Tinted]];
    out[kOther] = plain[in[kOther]];
    out[3] = 255;
  }
}

void FadeIn(bool leftFades, const CBaseFilterProc& processor, uint8_t* src, uint8_t* dst, int32_t frame,
            int32_t frameCount, int32_t srcStep, int32_t dstStep) {
  const int32_t width = processor.width;
  const int32_t height = processor.height;
  const int32_t half = width / 2;
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  CopyBetweenRows(in, out);
  const ByteOffsets tint = TintOf(width);
  const double progress = static_cast<double>(frame) / std::min(frameCount, kFadeFrames);
  const ByteTable plain = FadeTable(progress, 0);
  const ByteTable tinted = FadeTable(progress, kTint);
  ForRowBands(width, 0, height, [=, &tint](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      AddOffsets(in.Row(y), tint, out.Row(y));
      if (!(progress <= 1)) continue;
      if (leftFades) {
        FadeRow<kRed>(in.Row(y), out.Row(y), half, plain, tinted);
      } else {  // an odd last column does not fade
        FadeRow<kGreen>(in.Pixel(half, y), out.Pixel(half, y), half, plain, tinted);
      }
    }
  });

  const int32_t bar = Trunc32(width * kBarWidth / 640.0);
  const FrameView packed = PackedDest(dst, width, height);
  for (int32_t y = 0; y < height; ++y) FillPixels(packed.Row(y), (width - bar) / 2, (width + bar) / 2, kOpaqueBlack);
}

}  // namespace

void CTwoSplitLeftFadeInFilter::ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray*,
                                             int32_t currentFrameNumber, int32_t totalFrameCount, double,
                                             int32_t srcStep, int32_t dstStep) {
  FadeIn(true, *this, src, dst, currentFrameNumber, totalFrameCount, srcStep, dstStep);
}

void CTwoSplitRightFadeInFilter::ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray*,
                                              int32_t currentFrameNumber, int32_t totalFrameCount, double,
                                              int32_t srcStep, int32_t dstStep) {
  FadeIn(false, *this, src, dst, currentFrameNumber, totalFrameCount, srcStep, dstStep);
}
