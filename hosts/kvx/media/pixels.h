// Between the frames of codecs and pictures of 8-bit BGRA.
#ifndef KVX_HOSTS_KVX_MEDIA_PIXELS_H_
#define KVX_HOSTS_KVX_MEDIA_PIXELS_H_

#include <memory>
#include <vector>

#include "codecs/picture.h"
#include "hosts/kvx/media/libav.h"

struct SwsContext;

namespace kvx {

bool HasAlpha(AVPixelFormat format);
bool IsRgb(AVPixelFormat format);
// Bits of the deepest channel.
int BitDepth(AVPixelFormat format);

// How samples stand for colours.
struct ColorCoding {
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;  // unspecified: by the height, as players take it
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  bool operator==(const ColorCoding&) const = default;
};

// One direction of conversion; set up anew only when the frames change. The usual planes of 8 bits are converted here,
// to the library's bytes except where it overflows; everything else is the library's.
class PixelConverter {
 public:
  PixelConverter();
  ~PixelConverter();

  // `picture` has its size already; a frame of another size is scaled to it. Without alpha it becomes opaque. Throws
  // Error.
  void ToPicture(const AVFrame& frame, ColorCoding coding, Picture& picture);
  // Into a frame with format, size and buffers. False if the picture is not opaque. Throws Error.
  bool ToFrame(const Picture& picture, ColorCoding coding, AVFrame& frame);

 private:
  struct Shape {
    int width, height;
    AVPixelFormat from;
    int toWidth, toHeight;
    AVPixelFormat to;
    ColorCoding coding;
    bool operator==(const Shape&) const = default;
  };
  void Prepare(const Shape& shape, AVPixelFormat format, int height);
  struct Deleter {
    void operator()(SwsContext* c) const;
  };
  std::unique_ptr<SwsContext, Deleter> scaler_;
  Shape shape_{};
};

// The encoder's formats that suit best, the best first: at most 8 bits where there are such, alpha if `alpha` wants
// it, sampling of colour as in `source` (NONE: 4:2:0, which everything plays).
std::vector<AVPixelFormat> ChoosePixelFormats(const AVCodec& encoder, AVPixelFormat source, bool alpha);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_PIXELS_H_
