#include "hosts/kvx/media/y4m_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "hostkit/error.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace {

char Interlacing(const SourceMedia* media) {
  switch (media ? media->fieldOrder : AV_FIELD_PROGRESSIVE) {
    case AV_FIELD_TT:
    case AV_FIELD_TB:
      return 't';
    case AV_FIELD_BB:
    case AV_FIELD_BT:
      return 'b';
    default:
      return 'p';
  }
}

}  // namespace

Y4mWriter::Y4mWriter(const SourceMedia* media, double fps)
    : media_(media),
      rate_(RateOf(media, fps)),
      clock_(Rhythm::kConstant, media ? media->timeBase : av_inv_q(rate_), rate_) {}

void Y4mWriter::Start(const Picture& first) {
  if (media_) {
    for (const SourceStream& stream : media_->streams) {
      if (static_cast<size_t>(stream.index) != media_->video) {
        Note(fmt::format("{} is not kept: Y4M holds pictures alone", stream.Name()));
      }
    }
  }
  yuv_ = NewAvFrame();
  yuv_->format = AV_PIX_FMT_YUV444P;
  yuv_->width = first.width;
  yuv_->height = first.height;
  CheckAv(av_frame_get_buffer(yuv_.get(), 1), "standard output");  // packed rows, so that a plane goes in one piece
  const bool full = media_ && media_->range == AVCOL_RANGE_JPEG && !IsRgb(media_->pixelFormat);
  const AVRational aspect = media_ ? media_->sampleAspect : AVRational{0, 1};
  const bool known = aspect.num > 0 && aspect.den > 0;
  Print(fmt::format("YUV4MPEG2 W{} H{} F{}:{} I{} A{}:{} C444 XCOLORRANGE={}\n", first.width, first.height, rate_.num,
                    rate_.den, Interlacing(media_),
                    known    ? aspect.num
                    : media_ ? 0
                             : 1,
                    known    ? aspect.den
                    : media_ ? 0
                             : 1,
                    full ? "FULL" : "LIMITED"));
}

void Y4mWriter::PutFrame() {
  Print("FRAME\n");
  for (int plane = 0; plane < 3; ++plane) {
    WriteStandardOutput(yuv_->data[plane], static_cast<size_t>(yuv_->width) * static_cast<size_t>(yuv_->height));
  }
}

void Y4mWriter::Write(const Frame& frame) {
  const Picture& picture = frame.picture;
  const bool isFirst = !yuv_;
  if (isFirst) Start(picture);
  if (picture.width != yuv_->width || picture.height != yuv_->height) {
    throw Error("frames of a stream must have one size");
  }
  const FrameClock::Slot slot = clock_.Next(frame.timestamp, std::max<int64_t>(frame.duration, 1));
  if (!slot.shown) return;
  for (int64_t i = 0; i < slot.repeats && !isFirst; ++i) PutFrame();
  const AVColorRange range = media_ && !IsRgb(media_->pixelFormat) ? media_->range : AVCOL_RANGE_UNSPECIFIED;
  const AVColorSpace matrix = media_ ? media_->matrix : AVCOL_SPC_UNSPECIFIED;
  if (!converter_.ToFrame(picture, {matrix, range}, *yuv_)) Note("the transparency is lost: Y4M has none");
  for (int64_t i = 0; i < slot.repeats && isFirst; ++i) PutFrame();
  PutFrame();
}

void Y4mWriter::Finish() {
  for (int64_t i = clock_.RepeatsAtEnd(); i > 0 && yuv_; --i) PutFrame();
  if (clock_.LeftOut() > 0 || clock_.Repeated() > 0) {
    Note(
        fmt::format("Y4M wants a constant rate: frames repeated {}, left out {}", clock_.Repeated(), clock_.LeftOut()));
  }
  FlushStandardOutput();
  if (!yuv_) throw Error("there are no frames to write");
}

std::string Y4mWriter::FinishPartial() {
  FlushStandardOutput();
  return "the pipe was closed early";
}

}  // namespace kvx
