#include "Source/GrungeRay.h"

#include <memory>

#include "Source/Overlays.h"
#include "framework/frame.h"
#include "framework/pixels.h"

namespace {

// What the scratch plane holds, everywhere.
constexpr int32_t kScratch = 0;

ByteTable MixTable(int32_t percent) {
  ByteTable table;
  for (int32_t m = 0; m < 256; ++m) {
    table[static_cast<size_t>(m)] = static_cast<uint8_t>(((100 - percent) * m + percent * kScratch) / 100);
  }
  return table;
}

}  // namespace

void CGrungeRay::SetUp(const char* fileName) {
  frameImage_.reset();
  materialFile_.Read(fileName, width, height);
}

void CGrungeRay::Process(uint8_t*, uint8_t* dst, int32_t, int32_t dstStep, const ParamValueArray*) {
  if (!dst) return;
  if (!frameImage_) frameImage_ = materialFile_.TakePicture(width, height);
  if (!frameImage_) return;
  const uint8_t* m = QK_ImageBits(frameImage_.get());
  const ByteTable mix = MixTable(percent_);
  const FrameView out{dst, width, height, dstStep};
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* p = out.Row(y);
    for (int32_t x = 0; x < width; ++x, p += 4, m += 4) {
      for (int c = 0; c < 3; ++c) p[c] = mix[m[c]];
      p[3] = 255;
    }
  }
}

CBaseFilterProc* MakeGrungeRay(const EffectRow& row, int32_t width, int32_t height) {
  auto filter = std::make_unique<CGrungeRay>(width, height);
  filter->SetUp(row.materials[0]);
  return filter.release();
}
