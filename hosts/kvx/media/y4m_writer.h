// Y4M on standard output.
#ifndef KVX_HOSTS_KVX_MEDIA_Y4M_WRITER_H_
#define KVX_HOSTS_KVX_MEDIA_Y4M_WRITER_H_

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/frame_clock.h"
#include "hosts/kvx/media/pixels.h"
#include "hosts/kvx/media/source_media.h"

namespace kvx {

// 4:4:4, 8 bits, at a constant rate, which is all that the header can say.
class Y4mWriter : public FrameWriter {
 public:
  Y4mWriter(const SourceMedia* media, double fps);
  void Write(const Frame& frame) override;
  void Finish() override;
  std::string FinishPartial() override;

 private:
  void Start(const Picture& first);
  void PutFrame();

  const SourceMedia* media_;
  AVRational rate_;
  FrameClock clock_;
  AvFramePtr yuv_;
  PixelConverter converter_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_Y4M_WRITER_H_
