#include "Source/SelectFilter.h"

#include <algorithm>

#include "Source/PixelMap.h"

namespace {

// Green, as bytes 0, 1, 2; pixels from kFar (squared) on are opaque, up to half of it transparent.
constexpr int32_t kKey[3] = {0, 240, 0};
constexpr uint32_t kFar = 127 * 127;
constexpr uint32_t kNear = kFar >> 1;

void KeyOut(ConstFrameView src, FrameView dst) {
  MapPixels(src, dst, [](uint32_t pixel) {
    const int32_t d0 = static_cast<int32_t>(pixel & 255) - kKey[0];
    const int32_t d1 = static_cast<int32_t>(pixel >> 8 & 255) - kKey[1];
    const int32_t d2 = static_cast<int32_t>(pixel >> 16 & 255) - kKey[2];
    const uint32_t d = static_cast<uint32_t>(d2 * d2 + d1 * d1 + d0 * d0);
    // Not limited: at the last step before kFar it is 256, which leaves byte 3 at 0. This is meant.
    const uint32_t ramp = (std::max(d, kNear) - kNear) * 256 / kNear;
    const uint32_t alpha = d >= kFar ? 255 : ramp;
    return (pixel & 0x00FFFFFF) | alpha << 24;
  });
}

constexpr float kByte = 0.00392157f;
constexpr float kColor = 0.8f;
constexpr float kInverseTolerance = 1.0f / 0.2f;

// A soft-edged ball about a light gray, inverted, joined with the source's alpha.
void Select(ConstFrameView src, FrameView dst) {
  MapPixelsInBands(src, dst, [](uint32_t pixel) {
    const auto away = [](uint32_t byte) {
      return (static_cast<float>(static_cast<int32_t>(byte)) * kByte - kColor) * kInverseTolerance;
    };
    const float e0 = away(pixel & 255);
    const float e1 = away(pixel >> 8 & 255);
    const float e2 = away(pixel >> 16 & 255);
    const float d = e0 * e0 + e1 * e1 + e2 * e2;
    const float m = d * (d * d * d);
    const float inside = m < 1.0f ? 1.0f - m : 0.0f;
    const int32_t mask = static_cast<int32_t>((1.0f - inside) * 255.0f);
    const int32_t alpha = std::max(static_cast<int32_t>(pixel >> 24), mask);
    return (pixel & 0x00FFFFFF) | static_cast<uint32_t>(alpha) << 24;
  });
}

}  // namespace

void CBlueScreen::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  KeyOut(PackedSource(src, width, height), PackedDest(dst, width, height));
}

void CSelect::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  Select({src, width, height, srcStep}, {dst, width, height, dstStep});
}
