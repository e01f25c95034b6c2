#include "hosts/kvx/frame_io.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>

#include "hostkit/error.h"
#include "hosts/kvx/media/video.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/output_file.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

// Demo, pictures and sequences, which can be read at any place.
class IndexedReader : public FrameReader {
 public:
  IndexedReader(std::unique_ptr<FrameSource> source, const InputOptions& options) : source_(std::move(source)) {
    constexpr int64_t kEndless = std::numeric_limits<int64_t>::max();
    const int64_t length = source_->Count().value_or(kEndless);
    const auto at = [&](double seconds) { return static_cast<int64_t>(std::max(0.0, seconds) * options.fps + 0.5); };
    fps_ = options.fps;
    first_ = std::min(length, options.start ? at(*options.start) : 0);
    end_ = std::min(length, options.end ? std::max(first_, at(*options.end)) : kEndless);
    const int64_t wanted = options.frames.value_or(source_->Count() || options.end ? kEndless : 1);
    end_ = end_ - first_ > wanted ? first_ + wanted : end_;
    next_ = first_ + (options.range ? options.range->first : 0);
    stop_ = options.range ? std::min(end_, next_ + options.range->count) : end_;
    begun_ = next_;
  }
  std::optional<int64_t> Count() const override { return stop_ - begun_; }
  int64_t FirstPlace() const override { return begun_; }
  double Rate() const override { return fps_; }
  std::vector<std::string> Files() const override { return source_->Files(); }
  std::optional<std::pair<int64_t, int64_t>> Numbers() const override {
    if (end_ == first_) return std::nullopt;
    return std::pair(FileNumber(first_), FileNumber(end_ - 1));
  }
  bool Read(Frame& frame) override {
    for (; next_ < stop_; ++next_) {
      try {
        LoadedPicture loaded = source_->Read(next_);
        frame.picture = std::move(loaded.picture);
        frame.metadata = std::move(loaded.metadata);
      } catch (const Error& error) {
        // One bad picture does not take the others of a sequence along.
        if (!source_->Count() || error.IsUsage()) throw;
        damage_.push_back(error.what());
        continue;
      }
      frame.number = read_++;
      frame.place = next_;
      frame.seconds = static_cast<double>(next_ - first_) / fps_;
      frame.clipSeconds = static_cast<double>(next_) / fps_;
      frame.fileNumber = FileNumber(next_);
      frame.timestamp = begun_ - first_ + frame.number;
      ++next_;
      return true;
    }
    if (read_ == 0 && !damage_.empty()) throw Error(damage_.front());
    return false;
  }
  std::vector<std::string> Damage() const override { return damage_; }

 private:
  // What has no files counts what is rendered.
  int64_t FileNumber(int64_t frame) const { return source_->Count() ? source_->Number(frame) : frame - first_; }

  std::unique_ptr<FrameSource> source_;
  double fps_;
  int64_t first_;
  int64_t end_;
  int64_t next_ = 0;
  int64_t begun_ = 0;  // the part that is read
  int64_t stop_ = 0;
  int64_t read_ = 0;
  std::vector<std::string> damage_;
};

// Raw BGRA frames on standard input.
class RawReader : public FrameReader {
 public:
  explicit RawReader(const InputOptions& options) : options_(options), file_("-") {
    skip_ = static_cast<int64_t>(options.start.value_or(0) * options.fps + 0.5);
    end_ = options.end ? static_cast<int64_t>(*options.end * options.fps + 0.5) : std::numeric_limits<int64_t>::max();
    if (options.frames) end_ = std::min(end_, skip_ + *options.frames);
  }
  std::optional<int64_t> Count() const override { return options_.frames; }
  void Abandon() override { file_.Abandon(); }
  int64_t FirstPlace() const override { return skip_; }
  double Rate() const override { return options_.fps; }
  bool Read(Frame& frame) override {
    while (place_ < end_) {
      frame.picture.Reshape(options_.rawSize->width, options_.rawSize->height);
      size_t have = 0;
      while (have < frame.picture.pixels.size()) {
        const size_t got = file_.Read(frame.picture.pixels.data() + have, frame.picture.pixels.size() - have);
        if (got == 0) break;
        have += got;
      }
      if (have < frame.picture.pixels.size()) {
        if (have > 0) damage_.push_back("standard input ends within a frame");
        return false;
      }
      frame.place = place_++;
      if (frame.place < skip_) continue;
      frame.number = frame.timestamp = frame.fileNumber = frame.place - skip_;
      frame.seconds = static_cast<double>(frame.number) / options_.fps;
      frame.clipSeconds = static_cast<double>(frame.place) / options_.fps;
      return true;
    }
    return false;
  }
  std::vector<std::string> Damage() const override { return damage_; }

 private:
  InputOptions options_;
  InputFile file_;
  int64_t skip_;
  int64_t end_;
  int64_t place_ = 0;
  std::vector<std::string> damage_;
};

class SequenceWriter : public FrameWriter {
 public:
  SequenceWriter(const OutputOptions& options, const FrameReader& reader)
      : options_(options), pattern_(*SequencePattern::Parse(options.path)) {
    // Before the first frame: nobody wants to hear of the last one's file after an hour.
    auto numbers = reader.Numbers();
    if (numbers && options_.startNumber) shift_ = *options_.startNumber - numbers->first;
    if (!numbers && options_.startNumber) shift_ = *options_.startNumber;
    for (const NumberedFile& file : pattern_.List()) {
      if (numbers ? file.number < numbers->first + shift_ || file.number > numbers->second + shift_
                  : file.number < shift_) {
        continue;
      }
      CheckReplaceable(file.path, options_.overwrite);
    }
  }
  void Write(const Frame& frame) override {
    WritePicture(frame.picture, pattern_.Name(frame.fileNumber + shift_), options_.overwrite, frame.metadata.get());
    ++written_;
  }
  void Finish() override {
    if (written_ == 0) throw Error("there are no frames to write");
  }
  std::string FinishPartial() override { return fmt::format("{} pictures were finished", written_); }

 private:
  OutputOptions options_;
  SequencePattern pattern_;
  int64_t shift_ = 0;
  int64_t written_ = 0;
};

// A single picture gets the last frame.
class StillWriter : public FrameWriter {
 public:
  explicit StillWriter(const OutputOptions& options) : options_(options), file_(options.path, options.overwrite) {}
  void Write(const Frame& frame) override {
    last_ = frame.picture;
    metadata_ = frame.metadata;
  }
  void Finish() override {
    if (last_.pixels.empty()) throw Error("there are no frames to write");
    file_.Write(EncodePicture(last_, options_.path, metadata_.get()));
    file_.Commit();
  }

 private:
  OutputOptions options_;
  OutputFile file_;
  Picture last_;
  std::shared_ptr<const PictureMetadata> metadata_;
};

class RawWriter : public FrameWriter {
 public:
  void Write(const Frame& frame) override {
    WriteStandardOutput(frame.picture.pixels.data(), frame.picture.pixels.size());
  }
  void Finish() override { FlushStandardOutput(); }
  std::string FinishPartial() override {
    FlushStandardOutput();
    return "the pipe was closed early";
  }
};

bool Exists(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error);
}

}  // namespace

bool IsSequenceName(const InputOptions& options) {
  return !options.literal && options.path != "demo" && IsSequence(options.path) && !Exists(options.path);
}

bool IsSequenceName(const OutputOptions& options) {
  return !options.literal && IsSequence(options.path);
}

bool IsVideoName(const std::string& path) {
  return path != "-" && !IsPictureName(path) && IsVideoContainer(path);
}

std::unique_ptr<FrameReader> OpenReader(const InputOptions& options) {
  if (options.path == "demo") return std::make_unique<IndexedReader>(OpenDemo(options.demoSize), options);
  if (options.path == "-" && options.rawSize) return std::make_unique<RawReader>(options);
  if (IsSequenceName(options)) {
    return std::make_unique<IndexedReader>(OpenSequence(options.path, options.gaps), options);
  }
  auto file = std::make_unique<InputFile>(options.path);
  if (IsPictureFile(*file)) return std::make_unique<IndexedReader>(OpenStill(*file), options);
  return OpenVideo(std::move(file), options);
}

std::unique_ptr<FrameWriter> OpenWriter(const OutputOptions& options, const FrameReader& reader, double fps) {
  if (options.path == "-") {
    if (options.rawPipe) return std::make_unique<RawWriter>();
    return CreateY4mWriter(reader, fps);
  }
  const bool picture = IsPictureName(options.path);
  if (picture && IsSequenceName(options)) return std::make_unique<SequenceWriter>(options, reader);
  if (picture) return std::make_unique<StillWriter>(options);
  if (!IsVideoName(options.path)) {
    throw UsageError(fmt::format("{}: neither a picture (.png, .jpg) nor a video that can be written", options.path));
  }
  return CreateVideo(options, reader, fps);
}

}  // namespace kvx
