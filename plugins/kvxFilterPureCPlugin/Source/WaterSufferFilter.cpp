#include "Source/WaterSufferFilter.h"

#include <cstring>

#include "framework/frame.h"
#include "framework/host_log.h"
#include "framework/numeric.h"
#include "framework/parallel.h"

namespace {

// A coordinate of the course along an axis: the product of two sines of different speed, within 4 pixels of the rims.
int32_t CourseAt(int32_t phase, int32_t fast, int32_t slow, int32_t size) {
  const auto& sine = WaterTables::Get().sineTable;
  const int32_t a = sine[(WrapMul(phase, fast) >> 8) & 0x7FF] >> 8;
  const int32_t b = sine[(WrapMul(phase, slow) >> 8) & 0x7FF] >> 8;
  return (WrapMul(a * b, (size - 8) >> 1) >> 16) + (size >> 1);
}

}  // namespace

CWaterSuffer::CWaterSuffer(int32_t frameWidth, int32_t frameHeight)
    : CBaseFilterProc(frameWidth, frameHeight),
      phaseX_(static_cast<int32_t>(random_.Next() & 0x7FF)),
      phaseY_(static_cast<int32_t>(random_.Next() & 0x7FF)),
      surface_(width, height) {}

// The simulation runs upside down: the copy is the source with its rows in reverse, and the destination is written
// through a view whose row 0 is the last one.
void CWaterSuffer::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  if (!src || !dst || width <= 0 || height <= 0) return;
  if (!surface_.Allocate(2 * surface_.Cells())) {
    KVX_LOG_ALLOCATION_FAILURE("WaterSufferFilter");
    return;
  }
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  const FrameView copy{surface_.Copy(), width, height, surface_.CopyStep()};
  const size_t rowBytes = static_cast<size_t>(width) * 4;
  ForRowBands(width, 0, height, [=, last = height - 1](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      std::memcpy(copy.Row(last - y), in.Row(y), rowBytes);
      std::memcpy(out.Row(y), copy.Row(last - y), rowBytes);
    }
  });
  destPixels_ = out.Row(height - 1);
  destStep_ = -dstStep;
  WaterStep();
}

void CWaterSuffer::WaterStep() {
  Drive();
  surface_.Displace(FrameView{destPixels_, width, height, destStep_},
                    {.factor = 1, .wholeRows = false, .onePastEnd = true});
  surface_.WaveStep(damping_);
}

void CWaterSuffer::Drive() {
  const int32_t x = CourseAt(phaseX_, 349, 65, width);
  const int32_t y = CourseAt(phaseY_, 377, 84, height);
  phaseX_ = Trunc32(phaseX_ + 325.0 / frameRate);
  phaseY_ = Trunc32(phaseY_ + 300.0 / frameRate);
  SineDrop((lastX_ + x) >> 1, (lastY_ + y) >> 1, 3, -1200);
  SineDrop(x, y, 4, -2000);
  lastX_ = x;
  lastY_ = y;
}

// A raised cosine: all of the height at the centre, nothing at the rim.
void CWaterSuffer::SineDrop(int32_t x, int32_t y, int32_t r, int32_t amount) {
  if (x < 0) x = WrapAdd(r + 1, random_.Below(width - 2 * r - 1));
  if (y < 0) y = WrapAdd(r + 1, random_.Below(height - 2 * r - 1));
  const float q = static_cast<float>((1024.0 / r) * (1024.0 / r));
  const int32_t shift = width <= 1024 ? 19 : 17;
  const auto& cosine = WaterTables::Get().cosineTable;
  surface_.AddDrop(x, y, r, WaterRim::kNone, [&](uint32_t distance) {
    const uint32_t angle = ISqrt(static_cast<uint32_t>(static_cast<float>(distance) * q)) & 0x7FF;
    return ((cosine[angle] + 65535) * amount) >> shift;
  });
}
