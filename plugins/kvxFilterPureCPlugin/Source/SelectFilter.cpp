#include "Source/SelectFilter.h"

#include "Source/PointRows.h"
#include "framework/frame.h"
#include "framework/parallel.h"

void CBlueScreen::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  for (int32_t y = 0; y < height; ++y) KeyOutRow(in.Row(y), out.Row(y), width);
}

void CSelect::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) SelectRow(in.Row(y), out.Row(y), out.width);
  });
}
