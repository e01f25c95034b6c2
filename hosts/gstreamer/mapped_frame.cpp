#include "hosts/gstreamer/mapped_frame.h"

#include <fmt/format.h>

#include <algorithm>

namespace kvx {

MappedFrame::MappedFrame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags)
    : info_(info), buffer_(buffer) {
  const auto all =
      static_cast<GstMapFlags>(static_cast<int>(flags) | static_cast<int>(GST_VIDEO_FRAME_MAP_FLAG_NO_REF));
  mapped_ = gst_video_frame_map(&frame_, &info, buffer, all);
}

MappedFrame::~MappedFrame() {
  if (mapped_) gst_video_frame_unmap(&frame_);
}

ImageView MappedFrame::View() const {
  const int width = GST_VIDEO_INFO_WIDTH(&info_);
  const int height = GST_VIDEO_INFO_HEIGHT(&info_);
  const auto refuse = [&](const char* why) {
    return Error(
        fmt::format("a buffer of {} bytes is no frame of {}x{}: {}", gst_buffer_get_size(buffer_), width, height, why));
  };
  if (!mapped_) throw refuse("it cannot be mapped or is too small");
  if (GST_VIDEO_FRAME_FORMAT(&frame_) != GST_VIDEO_INFO_FORMAT(&info_)) throw refuse("it has another format");
  uint64_t left = 0, top = 0;
  auto wide = static_cast<uint64_t>(GST_VIDEO_FRAME_WIDTH(&frame_));
  auto high = static_cast<uint64_t>(GST_VIDEO_FRAME_HEIGHT(&frame_));
  if (const GstVideoCropMeta* crop = gst_buffer_get_video_crop_meta(buffer_)) {
    left = crop->x;
    top = crop->y;
    if (left + crop->width > wide || top + crop->height > high) throw refuse("the crop goes outside");
    wide = crop->width;
    high = crop->height;
  }
  if (wide < static_cast<uint64_t>(width) || high < static_cast<uint64_t>(height))
    throw refuse("the picture is smaller");
  const int32_t stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, 0);
  auto* data = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, 0));
  data += static_cast<int64_t>(top) * stride + static_cast<int64_t>(left) * 4;

  // Rows that a buffer's description claims and its memory does not have.
  const GstMapInfo& map = frame_.map[0];
  const int64_t begin = data - map.data;
  const int64_t last = begin + static_cast<int64_t>(height - 1) * stride;
  const auto size = static_cast<int64_t>(map.size);
  if (map.data && (std::min(begin, last) < 0 || std::max(begin, last) + int64_t{width} * 4 > size)) {
    throw refuse("its rows go beyond it");
  }
  return {data, width, height, stride};
}

}  // namespace kvx
