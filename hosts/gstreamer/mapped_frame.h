// The pixels of a buffer.
#ifndef KVX_HOSTS_GSTREAMER_MAPPED_FRAME_H_
#define KVX_HOSTS_GSTREAMER_MAPPED_FRAME_H_

#include <gst/video/video.h>

#include "hostkit/plugin.h"

namespace kvx {

// A buffer, mapped as a frame for as long as the object lives.
class MappedFrame {
 public:
  MappedFrame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags);
  ~MappedFrame();
  MappedFrame(const MappedFrame&) = delete;
  MappedFrame& operator=(const MappedFrame&) = delete;

  // The picture in it, cropped as the buffer says. Throws Error if it does not hold one of the size that was
  // negotiated.
  ImageView View() const;

 private:
  const GstVideoInfo& info_;
  GstBuffer* buffer_;
  GstVideoFrame frame_{};
  bool mapped_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_GSTREAMER_MAPPED_FRAME_H_
