#include "Source/Nervous.h"

#include <algorithm>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {
constexpr ParamRow kParams[] = {{u"Mode", 1, 0, 1}};
constexpr int32_t kFrames = 32;
}  // namespace

CNervous::CNervous(int32_t frameWidth, int32_t frameHeight) : CBaseFilterProc(frameWidth, frameHeight) {
  Reset();
}

void CNervous::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(mode_)});
}

// The random numbers go on.
void CNervous::Reset() {
  ring_.Allocate(PixelCount(width, height) * 4 * kFrames);
  writeIndex_ = count_ = timer_ = stride_ = readIndex_ = 0;
}

uint32_t CNervous::NextRandom() {
  return seed_ = seed_ * 1103515245u + 12345u;
}

// With the mode on, runs of 2 to 7 frames at one of the strides -2, -1, 1, 2, 3; off, a jump on every frame.
void CNervous::ChooseFrame() {
  const uint32_t count = static_cast<uint32_t>(count_);
  if (mode_ == 0) {
    readIndex_ = static_cast<int32_t>(NextRandom() % count);
  } else if (timer_ != 0) {
    readIndex_ += stride_;
    while (readIndex_ < 0) readIndex_ += count_;
    while (readIndex_ >= count_) readIndex_ -= count_;
    --timer_;
  } else {
    readIndex_ = static_cast<int32_t>(NextRandom() % count);
    stride_ = static_cast<int32_t>(NextRandom() % 5) - 2;
    if (stride_ >= 0) ++stride_;
    timer_ = static_cast<int32_t>(NextRandom() % 6) + 2;
  }
}

void CNervous::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  mode_ = Trunc32(Param(params, 1));
  if (Param(params, 2) == 1.0) Reset();
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (!ring_) return CopyVisibleInBands(in, out);
  const auto frameAt = [this](int32_t index) {
    const size_t frameBytes = 4 * PixelCount(width, height);
    return PackedDest(ring_.Data() + static_cast<size_t>(index) * frameBytes, width, height);
  };
  count_ = std::min(count_ + 1, kFrames);
  ChooseFrame();
  const FrameView written = frameAt(writeIndex_), shown = frameAt(readIndex_);
  writeIndex_ = (writeIndex_ + 1) % kFrames;
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    CopyRows(in.Row(begin), written.Row(begin), in.width, end - begin, in.step, written.step);
    CopyRows(shown.Row(begin), out.Row(begin), in.width, end - begin, shown.step, out.step);
  });
}
