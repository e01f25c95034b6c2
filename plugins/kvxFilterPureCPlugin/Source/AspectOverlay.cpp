#include "Source/AspectOverlay.h"

#include <string>

#include "framework/material_path.h"
#include "framework/parallel.h"
#include "framework/pixels.h"
#include "platform/files.h"

// The loops over a row are plain and compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "AspectOverlay.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace aspect_overlay {
namespace HWY_NAMESPACE {
namespace {

// A third of a sum of three bytes, and of a byte.
uint32_t Third(uint32_t sum) {
  return sum * 43691 >> 17;
}

uint32_t GrayOf(uint32_t pixel) {
  return Third((pixel & 255) + (pixel >> 8 & 255) + (pixel >> 16 & 255));
}

}  // namespace

void GrayRow(uint8_t* pixels, int32_t count) {
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(pixels + 4 * x);
    StorePixel(pixels + 4 * x, (pixel & kAlphaByte) | GrayOf(pixel) * 0x010101u);
  }
}

void GreenRow(uint8_t* pixels, int32_t count) {
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(pixels + 4 * x);
    const uint32_t gray = GrayOf(pixel);
    StorePixel(pixels + 4 * x, (pixel & kAlphaByte) | Third(gray) * 0x010001u | gray << 8);
  }
}

// (s * (256 - a) + m * a + 255) >> 8 for bytes 0 to 2. `out` may be `src`.
void LayOverRow(const uint8_t* src, const uint8_t* over, uint8_t* out, int32_t count, float alphaFactor) {
  constexpr int32_t kRun = 64;
  uint8_t alphas[4 * kRun];
  for (int32_t x = 0; x < count; x += kRun, src += 4 * kRun, over += 4 * kRun, out += 4 * kRun) {
    const int32_t n = count - x < kRun ? count - x : kRun;
    for (int32_t i = 0; i < n; ++i) {
      const auto whole = static_cast<float>(static_cast<int32_t>(LoadPixel(over + 4 * i) >> 24));
      StorePixel(alphas + 4 * i, static_cast<uint32_t>(static_cast<int32_t>(whole * alphaFactor)) * 0x010101u);
    }
#pragma GCC ivdep
    for (int32_t i = 0; i < 4 * n; ++i) {
      const uint16_t a = alphas[i];
      out[i] = static_cast<uint8_t>(static_cast<uint16_t>(src[i] * (256 - a) + over[i] * a + 255) >> 8);
    }
#pragma GCC ivdep
    for (int32_t i = 0; i < n; ++i) StorePixel(out + 4 * i, LoadPixel(out + 4 * i) | kAlphaByte);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace aspect_overlay
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace aspect_overlay {
HWY_EXPORT(GrayRow);
HWY_EXPORT(GreenRow);
HWY_EXPORT(LayOverRow);
}  // namespace aspect_overlay

namespace {

// Only an exact 16:9 counts: 1366 by 768 does not.
bool IsWide(int32_t width, int32_t height) {
  return static_cast<double>(width) / static_cast<double>(height) == 1.7777777777777777;
}

}  // namespace

const uint8_t* AspectOverlay::PictureFor(int32_t width, int32_t height) {
  const bool wide = IsWide(width, height);
  ImageHandle& decoded = wide ? wideImage_ : narrowImage_;
  if (!decoded) {
    const std::u16string path = MaterialPath(wide ? wideFile_ : narrowFile_);
    decoded.reset(QK_ImageCreate());
    // The handle stays: the file is not looked for again.
    if (!FileExists(path)) return nullptr;
    QK_ImageLoad(decoded.get(), path);
  }
  if (!frameImage_) frameImage_.reset(QK_ImageCreate());
  if (QK_ImageWidth(frameImage_.get()) != width || QK_ImageHeight(frameImage_.get()) != height) {
    QK_ImageAlloc(frameImage_.get(), width, height, 32);
    QK_ImageStretch(decoded.get(), frameImage_.get(), 2);
  }
  return QK_ImageBits(frameImage_.get());
}

void DrawOverlay(FrameView src, FrameView dst, const uint8_t* picture, float alphaFactor, OverlayTone tone) {
  using namespace aspect_overlay;
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      if (tone == OverlayTone::kGray) HWY_DYNAMIC_DISPATCH(GrayRow)(src.Row(y), dst.width);
      if (tone == OverlayTone::kGreen) HWY_DYNAMIC_DISPATCH(GreenRow)(src.Row(y), dst.width);
      const uint8_t* over = picture + 4 * static_cast<ptrdiff_t>(dst.width) * y;
      HWY_DYNAMIC_DISPATCH(LayOverRow)(src.Row(y), over, dst.Row(y), dst.width, alphaFactor);
    }
  });
}

#endif  // HWY_ONCE
