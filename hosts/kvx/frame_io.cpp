#include "hosts/kvx/frame_io.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "hostkit/plugin.h"
#include "hosts/kvx/video.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

std::string Ending(const std::string& path) {
  std::string ending = fs::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  return ending;
}

bool IsPictureName(const std::string& path) {
  const std::string ending = Ending(path);
  return ending == ".png" || ending == ".jpg" || ending == ".jpeg";
}

// Demo, pictures and sequences, which can be read at any place.
class IndexedReader : public FrameReader {
 public:
  IndexedReader(std::unique_ptr<FrameSource> source, const InputOptions& options) : source_(std::move(source)) {
    const int64_t length = source_->Count().value_or(std::numeric_limits<int64_t>::max());
    const auto at = [&](double seconds) { return static_cast<int64_t>(std::max(0.0, seconds) * options.fps + 0.5); };
    fps_ = options.fps;
    first_ = std::min(length, options.start ? at(*options.start) : 0);
    end_ = std::min(length, options.end ? std::max(first_, at(*options.end)) : std::numeric_limits<int64_t>::max());
    const int64_t wanted =
        options.frames.value_or(source_->Count() || options.end ? std::numeric_limits<int64_t>::max() : 1);
    end_ = end_ - first_ > wanted ? first_ + wanted : end_;
  }
  std::optional<int64_t> Count() const override { return end_ - first_; }
  bool Read(Frame& frame) override {
    if (first_ + next_ >= end_) return false;
    frame.picture = source_->Read(first_ + next_);
    frame.number = next_;
    frame.seconds = static_cast<double>(next_) / fps_;
    frame.timestamp = next_++;
    return true;
  }

 private:
  std::unique_ptr<FrameSource> source_;
  double fps_;
  int64_t first_;
  int64_t end_;
  int64_t next_ = 0;
};

class RawReader : public FrameReader {
 public:
  RawReader(FrameSize size, double fps, std::optional<int64_t> frames) : size_(size), fps_(fps), frames_(frames) {}
  std::optional<int64_t> Count() const override { return frames_; }
  bool Read(Frame& frame) override {
    if (frames_ && next_ >= *frames_) return false;
    frame.picture = Picture(size_.width, size_.height);
    const size_t got = std::fread(frame.picture.pixels.data(), 1, frame.picture.pixels.size(), stdin);
    if (got == 0) return false;
    if (got < frame.picture.pixels.size()) throw Error("standard input ends within a frame");
    frame.number = next_;
    frame.seconds = static_cast<double>(next_) / fps_;
    frame.timestamp = next_++;
    return true;
  }

 private:
  FrameSize size_;
  double fps_;
  std::optional<int64_t> frames_;
  int64_t next_ = 0;
};

class SequenceWriter : public FrameWriter {
 public:
  explicit SequenceWriter(std::string pattern) : pattern_(std::move(pattern)) {}
  void Write(const Frame& frame) override { WritePicture(frame.picture, SequenceName(pattern_, frame.number)); }
  void Finish() override {}

 private:
  std::string pattern_;
};

// A single picture gets the last frame.
class StillWriter : public FrameWriter {
 public:
  explicit StillWriter(std::string path) : path_(std::move(path)) {}
  void Write(const Frame& frame) override { last_ = frame.picture; }
  void Finish() override {
    if (last_.pixels.empty()) throw Error("there are no frames to write");
    WritePicture(last_, path_);
  }

 private:
  std::string path_;
  Picture last_;
};

void WriteToPipe(const void* bytes, size_t size) {
  if (std::fwrite(bytes, 1, size, stdout) != size) throw Error("standard output cannot be written");
}

class RawWriter : public FrameWriter {
 public:
  void Write(const Frame& frame) override { WriteToPipe(frame.picture.pixels.data(), frame.picture.pixels.size()); }
  void Finish() override {
    if (std::fflush(stdout) != 0) throw Error("standard output cannot be written");
  }
};

}  // namespace

bool IsVideoName(const std::string& path) {
  return !IsPictureName(path) && !IsSequence(path) && IsVideoContainer(path);
}

std::unique_ptr<FrameReader> OpenReader(const InputOptions& options) {
  if (options.path == "-" && options.rawSize) {
    return std::make_unique<RawReader>(*options.rawSize, options.fps, options.frames);
  }
  std::error_code error;
  if (options.path == "-") return OpenVideo(options);
  if (options.path != "demo" && !IsSequence(options.path)) {
    if (!fs::exists(options.path, error)) throw Error(fmt::format("{}: no such file", options.path));
    if (fs::is_directory(options.path, error)) throw Error(fmt::format("{}: is a directory", options.path));
    if (!IsPictureFile(options.path)) return OpenVideo(options);
  }
  return std::make_unique<IndexedReader>(OpenFrames(options.path, options.demoSize), options);
}

std::unique_ptr<FrameWriter> OpenWriter(const OutputOptions& options, const FrameReader& reader, double fps) {
  if (options.path == "-") {
    if (options.rawPipe) return std::make_unique<RawWriter>();
    return CreateY4mWriter(reader, fps);
  }
  if (IsSequence(options.path)) return std::make_unique<SequenceWriter>(options.path);
  if (IsPictureName(options.path)) return std::make_unique<StillWriter>(options.path);
  if (!IsVideoName(options.path)) {
    throw UsageError(fmt::format("{}: neither a picture (.png, .jpg) nor a video that can be written", options.path));
  }
  return CreateVideo(options, reader, fps);
}

}  // namespace kvx
