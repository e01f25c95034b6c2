#include "Source/SplitMoveFilter.h"

#include "Source/PixelWords.h"
#include "framework/frame.h"

namespace {

struct Strips {
  int32_t count;
  bool rows;           // strips are rows, else columns
  bool growFromStart;  // the first strip grows in at column or row 0, else at the far end
};

// The rows start at the bottom and leave at the top, the other way round than the columns: this is meant.
constexpr Strips kThreeColumns = {3, false, true};
constexpr Strips kTwoColumns = {2, false, true};
constexpr Strips kThreeRows = {3, true, false};

int32_t Even(int32_t size) {
  return size - size % 2;
}

// A strip of the whole side at progress 1.
int32_t StripSize(float progress, int32_t side, int32_t count) {
  return Even(static_cast<int32_t>(progress * static_cast<float>(side) / static_cast<float>(count)));
}

// Every strip shows the centre of the picture.
void PlaceStrips(ConstFrameView src, FrameView dst, const Strips& strips, int32_t size, bool fromStart) {
  const int32_t side = strips.rows ? dst.height : dst.width;
  const int32_t from = (side - size) / 2;
  for (int32_t i = 0; i < strips.count; ++i) {
    const int32_t to = fromStart ? i * size : side - (i + 1) * size;
    if (strips.rows) {
      for (int32_t y = 0; y < size; ++y) CopyPixels(src.Row(from + y), dst.Row(to + y), dst.width);
    } else {
      for (int32_t y = 0; y < dst.height; ++y) CopyPixels(src.Pixel(from, y), dst.Pixel(to, y), size);
    }
  }
}

void MoveStrips(const Strips& strips, const CBaseFilterProc& processor, uint8_t* src, uint8_t* dst, int32_t frame,
                int32_t frameCount, int32_t srcStep, int32_t dstStep) {
  const int32_t width = processor.width;
  const int32_t height = processor.height;
  const int32_t move = frameCount < 100 ? 12 : 25;  // frames that strips take to grow
  const int32_t rest = 2 * move;                    // frames before they stand, and before the end when they go
  const int32_t side = strips.rows ? height : width;
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);

  const bool plain = frameCount < 2 * rest || frame < move || frame >= frameCount - move;
  if (!plain && frame >= rest && frame < frameCount - rest) {
    PlaceStrips(in, out, strips, Even(side / strips.count), strips.growFromStart);
    return;
  }
  CopyRows(src, dst, width, height, srcStep, dstStep);
  if (plain) return;
  if (frame < rest) {
    const float progress = static_cast<float>(frame - move) / static_cast<float>(move);
    PlaceStrips(in, out, strips, StripSize(progress, side, strips.count), strips.growFromStart);
  } else {
    const float progress = static_cast<float>(rest + frame - frameCount) / static_cast<float>(move);
    PlaceStrips(in, out, strips, StripSize(1 - progress, side, strips.count), !strips.growFromStart);
  }
}

}  // namespace

void CSplitMoveFilter::ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray*, int32_t currentFrameNumber,
                                    int32_t totalFrameCount, double, int32_t srcStep, int32_t dstStep) {
  MoveStrips(kThreeColumns, *this, src, dst, currentFrameNumber, totalFrameCount, srcStep, dstStep);
}

void CTwoSplitMoveFilter::ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray*, int32_t currentFrameNumber,
                                       int32_t totalFrameCount, double, int32_t srcStep, int32_t dstStep) {
  MoveStrips(kTwoColumns, *this, src, dst, currentFrameNumber, totalFrameCount, srcStep, dstStep);
}

void CThreeSplitMoveFilterTop2Bottom::ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray*,
                                                   int32_t currentFrameNumber, int32_t totalFrameCount, double,
                                                   int32_t srcStep, int32_t dstStep) {
  MoveStrips(kThreeRows, *this, src, dst, currentFrameNumber, totalFrameCount, srcStep, dstStep);
}
