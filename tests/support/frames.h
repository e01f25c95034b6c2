// Frames for tests: buffers between guard zones, test pictures, one-call runs of an effect.
#ifndef KVX_TESTS_SUPPORT_FRAMES_H_
#define KVX_TESTS_SUPPORT_FRAMES_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/frame.h"
#include "kvx/exports.h"

// Pixels with a step of their own, between guard zones that must stay as they are. Under the address sanitizer the
// zones cannot be touched at all.
class FrameBuffer {
 public:
  FrameBuffer(int32_t width, int32_t height, int32_t padding = 0);
  ~FrameBuffer();
  FrameBuffer(FrameBuffer&&) = default;

  uint8_t* Data() { return bytes_.data() + kGuard; }
  const uint8_t* Data() const { return bytes_.data() + kGuard; }
  uint8_t* Pixel(int32_t x, int32_t y) { return Data() + static_cast<ptrdiff_t>(y) * step_ + 4 * x; }
  const uint8_t* Pixel(int32_t x, int32_t y) const { return Data() + static_cast<ptrdiff_t>(y) * step_ + 4 * x; }
  int32_t Width() const { return width_; }
  int32_t Height() const { return height_; }
  int32_t Step() const { return step_; }
  size_t Size() const { return static_cast<size_t>(step_) * static_cast<size_t>(height_); }

  void Fill(uint8_t value);
  void SetPixel(int32_t x, int32_t y, uint8_t b, uint8_t g, uint8_t r, uint8_t a);
  // The four bytes as 0xAARRGGBB.
  uint32_t Word(int32_t x, int32_t y) const;
  // A picture of gradients, edges and noise, alpha varied as well; repeatable.
  void FillTestPicture(uint32_t seed = 1);
  // As a camera gives it: the same, opaque.
  void FillOpaquePicture(uint32_t seed = 1);

  bool GuardsIntact() const;
  // The visible pixels, without padding.
  std::vector<uint8_t> Packed() const;

 private:
  static constexpr size_t kGuard = 512;
  void ForbidGuards(bool forbid) const;
  int32_t width_;
  int32_t height_;
  int32_t step_;
  std::vector<uint8_t> bytes_;
};

// Null if the factory does not serve the id.
std::unique_ptr<CBaseFilterProc> MakeEffect(int32_t id, int32_t width, int32_t height);

ParamValueArray Values(int32_t id, std::initializer_list<double> values = {});

// One frame through a processor, by whichever operation it renders in.
void RunFrame(CBaseFilterProc& processor, FrameBuffer& src, FrameBuffer& dst, const ParamValueArray& values,
              int32_t frame = 0, int32_t totalFrames = 100);

// A fresh effect on one frame; the destination starts as `fill`.
FrameBuffer RunEffect(int32_t id, FrameBuffer& src, std::initializer_list<double> values = {}, uint8_t fill = 0xCD);

#endif  // KVX_TESTS_SUPPORT_FRAMES_H_
