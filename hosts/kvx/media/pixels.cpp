#include "hosts/kvx/media/pixels.h"

#include <algorithm>
#include <cstdlib>

#include "hostkit/error.h"
#include "hosts/kvx/media/yuv_rows.h"
#include "hosts/kvx/picture_file.h"

extern "C" {
#include <libswscale/swscale.h>
}

namespace kvx {

namespace {

// Colour samples are doubled on the way in and averaged on the way out: what passes an effect unchanged then comes out
// as it came in.
constexpr int kDecodeFlags = SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
constexpr int kEncodeFlags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

// The library's number of the matrix.
int MatrixOf(AVColorSpace tagged, int height) {
  switch (tagged) {
    case AVCOL_SPC_BT709:
      return SWS_CS_ITU709;
    case AVCOL_SPC_FCC:
      return SWS_CS_FCC;
    case AVCOL_SPC_SMPTE240M:
      return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return SWS_CS_BT2020;
    case AVCOL_SPC_UNSPECIFIED:
    case AVCOL_SPC_RGB:
      // Untagged video is taken as players take it: by its size.
      return height > 576 ? SWS_CS_ITU709 : SWS_CS_ITU601;
    default:
      return SWS_CS_ITU601;
  }
}

YuvToRgb Decoding(int matrix, bool full) {
  const int* table = sws_getCoefficients(matrix);  // in 1/65536, for samples from 16 to 235 and 240
  const auto rounded = [](int64_t value) { return static_cast<int32_t>((value + 4) >> 3); };
  const auto spread = [&](int64_t value) { return rounded(full ? value * 224 / 255 : value); };
  return {full ? 0 : 16,
          rounded(full ? 65536 : 65536 * 255 / 219),
          spread(table[0]),
          spread(-int64_t{table[2]}),
          spread(-int64_t{table[3]}),
          spread(table[1])};
}

// As the library rounds them.
RgbToYuv Encoding(int matrix, bool full) {
  switch (matrix) {
    case SWS_CS_ITU709:
      return {{5983, 20127, 2032}, {-3298, -11094, 14392}, {14392, -13073, -1320}, full};
    case SWS_CS_FCC:
      return {{8443, 16604, 3096}, {-4851, -9541, 14392}, {14392, -12131, -2262}, full};
    case SWS_CS_SMPTE240M:
      return {{5966, 19728, 2448}, {-3342, -11050, 14392}, {14392, -12803, -1589}, full};
    case SWS_CS_BT2020:
      return {{7393, 19080, 1669}, {-4019, -10373, 14392}, {14392, -13235, -1158}, full};
    default:
      return {{8414, 16519, 3208}, {-4865, -9528, 14392}, {14392, -12061, -2332}, full};
  }
}

// True for what the rows of yuv_rows.h can do to the bytes that the library makes of it: planes of 8-bit luma and of
// colour that is halved evenly or not at all.
bool GoesByRows(AVPixelFormat format, int width, int height) {
  switch (format) {
    case AV_PIX_FMT_YUV444P:
    case AV_PIX_FMT_YUVJ444P:
      return true;
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUVJ422P:
      return width % 2 == 0 && width >= 4;
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUVJ420P:
      return width % 2 == 0 && width >= 4 && height % 2 == 0 && height >= 4;
    default:
      return false;
  }
}

void RowsToPicture(const AVFrame& frame, const YuvToRgb& by, Picture& picture) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  const auto row = [&](int plane, int y) {
    return frame.data[plane] + static_cast<ptrdiff_t>(y) * frame.linesize[plane];
  };
  for (int y = 0; y < picture.height; ++y) {
    const int colorY = y >> desc.log2_chroma_h;
    YuvRowToBgra(row(0, y), row(1, colorY), row(2, colorY), desc.log2_chroma_w, by, picture.Row(y),
                 static_cast<size_t>(picture.width));
  }
}

// False if the picture is not opaque.
bool RowsToFrame(const Picture& picture, const RgbToYuv& by, AVFrame& frame) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  const auto row = [&](int plane, int y) {
    return frame.data[plane] + static_cast<ptrdiff_t>(y) * frame.linesize[plane];
  };
  const auto width = static_cast<size_t>(picture.width);
  const int together = 1 << desc.log2_chroma_h;
  bool opaque = true;
  for (int y = 0; y < picture.height; y += together) {
    for (int i = 0; i < together; ++i) opaque = BgraRowToLuma(picture.Row(y + i), by, row(0, y + i), width) && opaque;
    BgraRowToColor(picture.Row(y), together == 2 ? picture.Row(y + 1) : nullptr, desc.log2_chroma_w, by,
                   row(1, y / together), row(2, y / together), width);
  }
  return opaque;
}

bool IsFullRange(AVColorRange range, AVPixelFormat format) {
  if (range != AVCOL_RANGE_UNSPECIFIED) return range == AVCOL_RANGE_JPEG;
  return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P ||
         format == AV_PIX_FMT_YUVJ440P || format == AV_PIX_FMT_YUVJ411P || IsRgb(format);
}

const AVPixFmtDescriptor& Describe(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  if (!desc) throw Error("unknown pixel format");
  return *desc;
}

// How far `format` is from what is wanted; less is better.
int Distance(AVPixelFormat format, AVPixelFormat source, bool alpha) {
  const AVPixFmtDescriptor& desc = Describe(format);
  const bool known =
      source != AV_PIX_FMT_NONE && Describe(source).nb_components >= 3;  // grey has no sampling of colour
  const int wantedX = known ? Describe(source).log2_chroma_w : 1;
  const int wantedY = known ? Describe(source).log2_chroma_h : 1;
  const int missing = std::max(0, desc.log2_chroma_w - wantedX) + std::max(0, desc.log2_chroma_h - wantedY);
  const int spare = std::max(0, wantedX - desc.log2_chroma_w) + std::max(0, wantedY - desc.log2_chroma_h);
  int distance = 0;
  if (desc.nb_components < 3) distance += 100000;  // grey, or a palette
  if (desc.flags & AV_PIX_FMT_FLAG_PAL) distance += 50000;
  if (desc.comp[0].depth < 8) distance += 40000;
  if (alpha && !HasAlpha(format)) distance += 20000;
  if (!alpha && HasAlpha(format)) distance += 40;
  distance += 1000 * missing + 100 * spare;
  if (known && IsRgb(source) != IsRgb(format)) distance += 50;
  if (!known && IsRgb(format)) distance += 10;
  return distance + 5 * std::abs(desc.comp[0].depth - 8) + (desc.flags & AV_PIX_FMT_FLAG_BE ? 1 : 0);
}

}  // namespace

bool HasAlpha(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && (desc->flags & AV_PIX_FMT_FLAG_ALPHA);
}

bool IsRgb(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && (desc->flags & AV_PIX_FMT_FLAG_RGB);
}

int BitDepth(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  int depth = 0;
  for (int i = 0; desc && i < desc->nb_components; ++i) depth = std::max(depth, desc->comp[i].depth);
  return depth;
}

void PixelConverter::Deleter::operator()(SwsContext* c) const {
  sws_freeContext(c);
}
PixelConverter::PixelConverter() = default;
PixelConverter::~PixelConverter() = default;

// BGRA is on one side and `format` on the other; `height` decides about the matrix where no tag does.
void PixelConverter::Prepare(const Shape& shape, AVPixelFormat format, int height) {
  if (scaler_ && shape == shape_) return;
  const bool decoding = shape.to == AV_PIX_FMT_BGRA;
  scaler_.reset(sws_getContext(shape.width, shape.height, shape.from, shape.toWidth, shape.toHeight, shape.to,
                               decoding ? kDecodeFlags : kEncodeFlags, nullptr, nullptr, nullptr));
  if (!scaler_) throw Error("its pixels cannot be converted");
  const int* matrix = sws_getCoefficients(MatrixOf(shape.coding.matrix, height));
  const int full = IsFullRange(shape.coding.range, format);
  sws_setColorspaceDetails(scaler_.get(), matrix, decoding ? full : 1, matrix, decoding ? 1 : full, 0, 1 << 16,
                           1 << 16);
  shape_ = shape;
}

void PixelConverter::ToPicture(const AVFrame& frame, ColorCoding coding, Picture& picture) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  if (frame.width == picture.width && frame.height == picture.height && GoesByRows(format, frame.width, frame.height)) {
    RowsToPicture(frame, Decoding(MatrixOf(coding.matrix, frame.height), IsFullRange(coding.range, format)), picture);
    return;
  }
  Prepare({frame.width, frame.height, format, picture.width, picture.height, AV_PIX_FMT_BGRA, coding}, format,
          frame.height);
  uint8_t* planes[] = {picture.pixels.data()};
  const int steps[] = {picture.Step()};
  sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height, planes, steps);
  if (HasAlpha(format)) return;
  for (size_t i = 3; i < picture.pixels.size(); i += 4) picture.pixels[i] = 255;
}

bool PixelConverter::ToFrame(const Picture& picture, ColorCoding coding, AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  if (frame.width == picture.width && frame.height == picture.height && GoesByRows(format, frame.width, frame.height)) {
    const int matrix = MatrixOf(coding.matrix, picture.height);
    return RowsToFrame(picture, Encoding(matrix, IsFullRange(coding.range, format)), frame);
  }
  Prepare({picture.width, picture.height, AV_PIX_FMT_BGRA, frame.width, frame.height, format, coding}, format,
          picture.height);
  const uint8_t* planes[] = {picture.pixels.data()};
  const int steps[] = {picture.Step()};
  sws_scale(scaler_.get(), planes, steps, 0, picture.height, frame.data, frame.linesize);
  return IsOpaque(picture);
}

std::vector<AVPixelFormat> ChoosePixelFormats(const AVCodec& encoder, AVPixelFormat source, bool alpha) {
  std::vector<AVPixelFormat> formats;
  for (const AVPixelFormat* f = encoder.pix_fmts; f && *f != AV_PIX_FMT_NONE; ++f) {
    const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(*f);
    if (desc && !(desc->flags & AV_PIX_FMT_FLAG_HWACCEL)) formats.push_back(*f);
  }
  if (formats.empty()) {
    formats = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_BGRA};
  }
  std::stable_sort(formats.begin(), formats.end(), [&](AVPixelFormat a, AVPixelFormat b) {
    return Distance(a, source, alpha) < Distance(b, source, alpha);
  });
  return formats;
}

}  // namespace kvx
