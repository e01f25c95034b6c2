#include "hosts/kvx/media/video.h"

#include <mutex>

#include "hosts/kvx/media/video_reader.h"
#include "hosts/kvx/media/video_writer.h"
#include "hosts/kvx/media/y4m_writer.h"

namespace kvx {

namespace {

std::once_flag g_logCaught;

void KeepLibrariesQuiet() {
  std::call_once(g_logCaught, CatchLibraryLog, false);
}

}  // namespace

void SetMediaVerbose(bool verbose) {
  std::call_once(g_logCaught, CatchLibraryLog, verbose);
}

std::unique_ptr<FrameReader> OpenVideo(std::unique_ptr<InputFile> file, const InputOptions& options) {
  KeepLibrariesQuiet();
  return std::make_unique<VideoReader>(std::move(file), options);
}

std::unique_ptr<FrameWriter> CreateVideo(const OutputOptions& options, const FrameReader& reader, double fps) {
  KeepLibrariesQuiet();
  return std::make_unique<VideoWriter>(options, reader.Media(), fps);
}

std::unique_ptr<FrameWriter> CreateY4mWriter(const FrameReader& reader, double fps) {
  KeepLibrariesQuiet();
  return std::make_unique<Y4mWriter>(reader.Media(), fps);
}

bool IsVideoContainer(const std::string& path) {
  const AVOutputFormat* format = av_guess_format(nullptr, path.c_str(), nullptr);
  return format && format->video_codec != AV_CODEC_ID_NONE && !(format->flags & AVFMT_NOFILE);
}

std::vector<std::string> VideoEncoders() {
  std::vector<std::string> names;
  void* place = nullptr;
  while (const AVCodec* codec = av_codec_iterate(&place)) {
    if (av_codec_is_encoder(codec) && codec->type == AVMEDIA_TYPE_VIDEO) names.emplace_back(codec->name);
  }
  return names;
}

}  // namespace kvx
