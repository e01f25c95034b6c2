#include "hosts/gstreamer/effect_runner.h"

#include <gst/gst.h>

#include <cstring>
#include <future>

#include "hostkit/shared_plugin.h"
#include "hosts/gstreamer/video_effect.h"

namespace kvx {

namespace {

Plugin& ElementsPlugin() {
  return SharedPlugin([](int32_t level, const std::string& line) {
    GST_CAT_LEVEL_LOG(DebugCategory(), level >= kHostLogError ? GST_LEVEL_WARNING : GST_LEVEL_DEBUG, nullptr, "%s",
                      line.c_str());
  });
}

constexpr uint32_t kAlphaBits = 0xFF000000u;

bool IsAllOpaque(ConstImageView image) {
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* row = image.data + static_cast<ptrdiff_t>(y) * image.stride;
    uint32_t all = kAlphaBits;
    for (int32_t x = 0; x < image.width; ++x) {
      uint32_t pixel;
      std::memcpy(&pixel, row + static_cast<ptrdiff_t>(x) * 4, sizeof pixel);
      all &= pixel;
    }
    if (all != kAlphaBits) return false;
  }
  return true;
}

void CopyOpaque(ConstImageView image, Picture& copy) {
  if (copy.width != image.width || copy.height != image.height) copy = Picture(image.width, image.height);
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* from = image.data + static_cast<ptrdiff_t>(y) * image.stride;
    uint8_t* to = copy.pixels.data() + static_cast<ptrdiff_t>(y) * copy.Step();
    for (ptrdiff_t x = 0; x < static_cast<ptrdiff_t>(image.width) * 4; x += 4) {
      uint32_t pixel;
      std::memcpy(&pixel, from + x, sizeof pixel);
      pixel |= kAlphaBits;
      std::memcpy(to + x, &pixel, sizeof pixel);
    }
  }
}

}  // namespace

void EffectRunner::Open(const EffectInfo& effect) {
  Plugin& plugin = ElementsPlugin();
  info_ = &OfferedEffect(plugin, effect);
  effect_ = plugin.Create(*info_);
  restart_ = used_ = needsCopy_ = false;
}

void EffectRunner::Close() {
  effect_.reset();
  opaque_ = Picture();
}

void EffectRunner::Render(ConstImageView input, bool isOpaque, ImageView output, FramePlace place,
                          const FrameValues& values) {
  if (restart_ && used_ && info_->ordered) effect_ = ElementsPlugin().Create(*info_);
  restart_ = false;
  used_ = true;
  if (isOpaque && !needsCopy_) {
    if (info_->ordered) {
      needsCopy_ = !IsAllOpaque(input);
    } else {
      // Nearly all programs write 255 there. To look at it takes as long as to read the frame, and goes on beside the
      // effect where a thread can start; where there was something else the picture is made anew.
      std::future<bool> look = std::async(IsAllOpaque, input);
      effect_->Render(input, output, place, values);
      needsCopy_ = !look.get();
      if (!needsCopy_) return;
    }
  }
  if (isOpaque && needsCopy_) {
    CopyOpaque(input, opaque_);
    input = {opaque_.pixels.data(), opaque_.width, opaque_.height, opaque_.Step()};
  }
  effect_->Render(input, output, place, values);
}

}  // namespace kvx
