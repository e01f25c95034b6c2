#include "tests/support/frames.h"

#include <sanitizer/asan_interface.h>

#include <algorithm>
#include <cstring>

namespace {
constexpr uint8_t kGuardByte = 0xA5;
}

FrameBuffer::FrameBuffer(int32_t width, int32_t height, int32_t padding)
    : width_(width), height_(height), step_(width * 4 + padding), bytes_(2 * kGuard + Size(), kGuardByte) {
  Fill(0);
  ForbidGuards(true);
}

FrameBuffer::~FrameBuffer() {
  if (!bytes_.empty()) ForbidGuards(false);
}

// Does nothing in a build without the address sanitizer.
void FrameBuffer::ForbidGuards(bool forbid) const {
  if (forbid) {
    ASAN_POISON_MEMORY_REGION(bytes_.data(), kGuard);
    ASAN_POISON_MEMORY_REGION(bytes_.data() + kGuard + Size(), kGuard);
  } else {
    ASAN_UNPOISON_MEMORY_REGION(bytes_.data(), bytes_.size());
  }
}

void FrameBuffer::Fill(uint8_t value) {
  std::memset(Data(), value, Size());
}

void FrameBuffer::SetPixel(int32_t x, int32_t y, uint8_t b, uint8_t g, uint8_t r, uint8_t a) {
  const uint8_t pixel[4] = {b, g, r, a};
  std::memcpy(Pixel(x, y), pixel, 4);
}

uint32_t FrameBuffer::Word(int32_t x, int32_t y) const {
  uint32_t word;
  std::memcpy(&word, Pixel(x, y), 4);
  return word;
}

void FrameBuffer::FillTestPicture(uint32_t seed) {
  uint32_t s = seed * 747796405u + 2891336453u;
  for (int32_t y = 0; y < height_; ++y) {
    for (int32_t x = 0; x < width_; ++x) {
      s = s * 1664525u + 1013904223u;
      const bool edge = (x / 9 + y / 7) % 3 == 0;
      SetPixel(x, y, static_cast<uint8_t>(x * 5 + (s >> 28)), static_cast<uint8_t>(y * 3 + (edge ? 90 : 0)),
               static_cast<uint8_t>(s >> 24), static_cast<uint8_t>((x + y) % 5 == 0 ? s >> 16 : 255));
    }
  }
}

void FrameBuffer::FillOpaquePicture(uint32_t seed) {
  FillTestPicture(seed);
  for (int32_t y = 0; y < height_; ++y) {
    for (int32_t x = 0; x < width_; ++x) Pixel(x, y)[3] = 255;
  }
}

bool FrameBuffer::GuardsIntact() const {
  ForbidGuards(false);
  const auto isGuard = [](uint8_t byte) { return byte == kGuardByte; };
  const bool intact = std::all_of(bytes_.begin(), bytes_.begin() + kGuard, isGuard) &&
                      std::all_of(bytes_.end() - kGuard, bytes_.end(), isGuard);
  ForbidGuards(true);
  return intact;
}

std::vector<uint8_t> FrameBuffer::Packed() const {
  std::vector<uint8_t> out;
  for (int32_t y = 0; y < height_; ++y) out.insert(out.end(), Pixel(0, y), Pixel(0, y) + 4 * width_);
  return out;
}

std::unique_ptr<CBaseFilterProc> MakeEffect(int32_t id, int32_t width, int32_t height) {
  CBaseFilterProc* made = nullptr;
  FindEffectByID(id, static_cast<uint32_t>(width), static_cast<uint32_t>(height), &made);
  return std::unique_ptr<CBaseFilterProc>(made);
}

ParamValueArray Values(int32_t id, std::initializer_list<double> values) {
  ParamValueArray array{};
  array.effectId = id;
  std::copy(values.begin(), values.end(), array.value);
  return array;
}

void RunFrame(CBaseFilterProc& processor, FrameBuffer& src, FrameBuffer& dst, const ParamValueArray& values,
              int32_t frame, int32_t totalFrames) {
  if (auto* timed = dynamic_cast<CTimeRelateFilter*>(&processor)) {
    timed->ProcessTimed(src.Data(), dst.Data(), &values, frame, totalFrames, 25.0, src.Step(), dst.Step());
    return;
  }
  processor.SetFrameRate(25.0);
  processor.currentFrame = frame;
  processor.totalFrames = totalFrames;
  processor.Process(src.Data(), dst.Data(), src.Step(), dst.Step(), &values);
}

FrameBuffer RunEffect(int32_t id, FrameBuffer& src, std::initializer_list<double> values, uint8_t fill) {
  FrameBuffer dst(src.Width(), src.Height(), src.Step() - src.Width() * 4);
  dst.Fill(fill);
  if (const auto processor = MakeEffect(id, src.Width(), src.Height())) {
    RunFrame(*processor, src, dst, Values(id, values));
  }
  return dst;
}
