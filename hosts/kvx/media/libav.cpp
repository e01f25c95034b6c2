#include "hosts/kvx/media/libav.h"

#include <fmt/format.h>

#include <atomic>
#include <cctype>
#include <cstdarg>
#include <cstdio>

#include "hostkit/error.h"
#include "hosts/kvx/media/source_media.h"

namespace kvx {

namespace {

bool g_verbose = false;
std::atomic<int64_t> g_decoderComplaints{0};
thread_local std::string t_complaint;

bool IsVideoDecoder(void* object) {
  if (!object || *static_cast<const AVClass**>(object) != avcodec_get_class()) return false;
  const auto* codec = static_cast<const AVCodecContext*>(object);
  return codec->codec_type == AVMEDIA_TYPE_VIDEO && codec->codec && av_codec_is_decoder(codec->codec);
}

void OnLog(void* object, int level, const char* format, va_list arguments) {
  if (level > (g_verbose ? AV_LOG_INFO : AV_LOG_ERROR)) return;
  char line[1024];
  int prefix = 1;
  va_list copy;
  va_copy(copy, arguments);
  av_log_format_line2(object, level, format, copy, line, sizeof line, &prefix);
  va_end(copy);
  if (g_verbose) std::fputs(line, stderr);
  if (level > AV_LOG_ERROR) return;
  if (IsVideoDecoder(object)) ++g_decoderComplaints;
  std::string text = line;
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
  // "[libx264 @ 0x55d0c8f1a740] " says nothing to a user.
  if (const size_t end = text.find("] "); text.starts_with('[') && end != std::string::npos) text.erase(0, end + 2);
  if (!text.empty()) t_complaint = text;
}

}  // namespace

void CatchLibraryLog(bool verbose) {
  g_verbose = verbose;
  av_log_set_level(verbose ? AV_LOG_INFO : AV_LOG_ERROR);
  av_log_set_callback(OnLog);
}

bool LibrariesAreVerbose() {
  return g_verbose;
}

int64_t VideoDecoderComplaints() {
  return g_decoderComplaints;
}

void ForgetComplaint() {
  t_complaint.clear();
}

std::string LastComplaint() {
  return t_complaint.empty() ? "" : ": " + t_complaint;
}

std::string AvErrorText(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(code, text, sizeof text);
  return text;
}

int CheckAv(int code, const std::string& what) {
  if (code < 0) throw Error(fmt::format("{}: {}", what, AvErrorText(code)));
  return code;
}

CodecPtr OpenDecoder(const SourceStream& stream) {
  const AVCodec* decoder = avcodec_find_decoder(stream.parameters->codec_id);
  if (!decoder) throw Error(fmt::format("{} cannot be decoded", stream.Name()));
  CodecPtr codec(CheckAlloc(avcodec_alloc_context3(decoder)));
  CheckAv(avcodec_parameters_to_context(codec.get(), stream.parameters.get()), stream.Name());
  codec->pkt_timebase = stream.timeBase;
  CheckAv(avcodec_open2(codec.get(), decoder, nullptr), stream.Name());
  return codec;
}

AVRational RateOf(const SourceMedia* media, double fps) {
  return media ? media->rate : av_d2q(fps, 100000);
}

std::string SourceStream::Name() const {
  const char* type = av_get_media_type_string(Type());
  return fmt::format("{} stream {} ({})", type ? type : "unknown", index, CodecName());
}

}  // namespace kvx
