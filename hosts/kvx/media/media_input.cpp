#include "hosts/kvx/media/media_input.h"

#include <fmt/format.h>

#include <cstdio>

#include "hostkit/error.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace {

constexpr int kBlock = 1 << 16;

// mp4 and its kin are boxes of size and name. Where the frames come before what says where they are, a pipe is of no
// use.
bool HasIndexBehind(std::string_view head) {
  size_t at = 0;
  while (at + 8 <= head.size()) {
    size_t size = 0;
    for (size_t i = at; i < at + 4; ++i) size = size << 8 | static_cast<uint8_t>(head[i]);
    const std::string_view name = head.substr(at + 4, 4);
    if (name == "mdat") return true;
    const bool mayLead = name == "ftyp" || name == "free" || name == "wide" || name == "skip" || name == "uuid";
    if (!mayLead || size < 8) return false;
    at += size;
  }
  return false;
}

}  // namespace

int MediaInput::Read(void* self, uint8_t* bytes, int count) {
  try {
    const size_t got = static_cast<MediaInput*>(self)->file_->Read(bytes, static_cast<size_t>(count));
    return got == 0 ? AVERROR_EOF : static_cast<int>(got);
  } catch (const std::exception&) {
    return AVERROR(EIO);
  }
}

int64_t MediaInput::Seek(void* self, int64_t offset, int whence) {
  InputFile& file = *static_cast<MediaInput*>(self)->file_;
  const int64_t size = *file.Size();
  if (whence & AVSEEK_SIZE) return size;
  const int base = whence & ~AVSEEK_FORCE;
  const int64_t to = offset + (base == SEEK_CUR ? file.Position() : base == SEEK_END ? size : 0);
  if (to < 0) return AVERROR(EINVAL);
  try {
    file.Seek(to);
  } catch (const std::exception&) {
    return AVERROR(EIO);
  }
  return to;
}

MediaInput::MediaInput(std::unique_ptr<InputFile> file) : file_(std::move(file)) {
  const std::string& name = file_->Name();
  if (HasIndexBehind(file_->Peek(kBlock))) file_->MakeSeekable();
  if (file_->Size() ? *file_->Size() == 0 : file_->Peek(1).empty())
    throw Error(fmt::format("{}: the file is empty", name));
  auto* buffer = static_cast<unsigned char*>(CheckAlloc(av_malloc(kBlock)));
  stream_ = avio_alloc_context(buffer, kBlock, 0, this, Read, nullptr, file_->Size() ? Seek : nullptr);
  if (!stream_) {
    av_free(buffer);
    throw std::bad_alloc();
  }
  container_ = avformat_alloc_context();
  if (container_) {
    container_->pb = stream_;
    container_->interrupt_callback.callback = [](void*) { return StopAsked() ? 1 : 0; };
    // On failure the container is freed by the library.
    const std::string url = file_->Path().empty() ? "pipe:" : "file:" + file_->Path();
    int status = avformat_open_input(&container_, url.c_str(), nullptr, nullptr);
    if (status >= 0) status = avformat_find_stream_info(container_, nullptr);
    if (status >= 0) return;
    avformat_close_input(&container_);
    av_freep(&stream_->buffer);
    avio_context_free(&stream_);
    ThrowIfStopAsked();
    CheckAv(status, name);
  }
  throw std::bad_alloc();
}

MediaInput::~MediaInput() {
  avformat_close_input(&container_);
  av_freep(&stream_->buffer);
  avio_context_free(&stream_);
}

}  // namespace kvx
