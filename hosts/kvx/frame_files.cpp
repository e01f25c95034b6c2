#include "hosts/kvx/frame_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "hostkit/error.h"
#include "hostkit/text.h"
#include "hosts/kvx/demo_picture.h"
#include "hosts/kvx/notes.h"

namespace kvx {

namespace {

// An animation says so before its first pixels.
constexpr size_t kHeadOfPicture = 4096;

class DemoSource : public FrameSource {
 public:
  explicit DemoSource(FrameSize size) : size_(size) {}
  std::optional<int64_t> Count() const override { return std::nullopt; }
  LoadedPicture Read(int64_t frame) override { return {DrawDemoPicture(size_.width, size_.height, frame), nullptr}; }

 private:
  FrameSize size_;
};

class StillSource : public FrameSource {
 public:
  explicit StillSource(InputFile& file) : path_(file.Path()), loaded_(LoadPicture(file)) {}
  std::optional<int64_t> Count() const override { return std::nullopt; }
  LoadedPicture Read(int64_t) override { return loaded_; }
  std::vector<std::string> Files() const override { return {path_}; }

 private:
  std::string path_;
  LoadedPicture loaded_;
};

class SequenceSource : public FrameSource {
 public:
  SequenceSource(const std::string& text, Gaps gaps) {
    files_ = SequencePattern::Parse(text)->List();
    if (files_.empty()) throw Error(fmt::format("no files match {}", text));
    std::vector<int64_t> missing;
    for (size_t i = 0; i < files_.size(); ++i) {
      for (int64_t n = i == 0 ? files_[0].number : files_[i - 1].number + 1; n <= files_[i].number; ++n) {
        const bool there = n == files_[i].number;
        if (!there) missing.push_back(n);
        if (missing.size() > kMostMissing)
          throw Error(fmt::format("{}: more than {} numbers are missing", text, kMostMissing));
        if (there || gaps == Gaps::kHold) frames_.push_back({n, there ? i : i - 1});
      }
    }
    if (missing.empty()) return;
    const std::string line = fmt::format("{} lacks {}", text, NumberRanges(missing));
    if (gaps == Gaps::kRefuse) throw Error(line);
    Note(line + (gaps == Gaps::kHold ? ": the frames before are held" : ": --gaps hold would hold the frames before"));
  }
  std::optional<int64_t> Count() const override { return static_cast<int64_t>(frames_.size()); }
  LoadedPicture Read(int64_t frame) override {
    InputFile file(files_[At(frame).file].path);
    return LoadPicture(file);
  }
  int64_t Number(int64_t frame) const override { return At(frame).number; }
  std::vector<std::string> Files() const override {
    std::vector<std::string> paths;
    for (const NumberedFile& file : files_) paths.push_back(file.path);
    return paths;
  }

 private:
  static constexpr size_t kMostMissing = 1000000;
  struct Place {
    int64_t number;
    size_t file;
  };
  const Place& At(int64_t frame) const { return frames_.at(static_cast<size_t>(frame)); }

  std::vector<NumberedFile> files_;
  std::vector<Place> frames_;
};

}  // namespace

FrameSize ParseFrameSize(const std::string& text) {
  FrameSize size{};
  const char* end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, size.width);
  if (width.ec == std::errc() && width.ptr != end && *width.ptr == 'x') {
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    if (height.ec == std::errc() && height.ptr == end && size.width >= 1 && size.height >= 1 &&
        size.width <= kMaxFrameSide && size.height <= kMaxFrameSide) {
      return size;
    }
  }
  throw UsageError(
      fmt::format("\"{}\" is not a size such as 1280x720, from 1x1 to {}x{}", text, kMaxFrameSide, kMaxFrameSide));
}

std::unique_ptr<FrameSource> OpenDemo(FrameSize size) {
  return std::make_unique<DemoSource>(size);
}

std::unique_ptr<FrameSource> OpenStill(InputFile& file) {
  return std::make_unique<StillSource>(file);
}

std::unique_ptr<FrameSource> OpenSequence(const std::string& pattern, Gaps gaps) {
  return std::make_unique<SequenceSource>(pattern, gaps);
}

bool IsPictureFile(InputFile& file) {
  const std::string_view head = file.Peek(kHeadOfPicture);
  const std::string ending = Lower(std::filesystem::path(file.Path()).extension().string());
  switch (DetectFormat(head)) {
    case PictureFormat::kPng:
      return head.find("acTL") == std::string_view::npos;
    case PictureFormat::kJpeg:
      return ending != ".mjpeg" && ending != ".mjpg";
    case PictureFormat::kUnknown:
      break;
  }
  return head.empty() && !file.Path().empty();
}

bool IsPictureFile(const std::string& path) {
  InputFile file(path);
  return IsPictureFile(file);
}

Picture PadPicture(const Picture& picture, FrameSize size) {
  const double scale =
      std::min(static_cast<double>(size.width) / picture.width, static_cast<double>(size.height) / picture.height);
  const int32_t width = std::clamp(cvRound(picture.width * scale), 1, size.width);
  const int32_t height = std::clamp(cvRound(picture.height * scale), 1, size.height);
  Picture padded(size.width, size.height);
  const cv::Mat from(picture.height, picture.width, CV_8UC4, const_cast<uint8_t*>(picture.pixels.data()));
  cv::Mat to(size.height, size.width, CV_8UC4, padded.pixels.data());
  cv::Mat box = to(cv::Rect((size.width - width) / 2, (size.height - height) / 2, width, height));
  cv::resize(from, box, box.size(), 0, 0, scale < 1 ? cv::INTER_AREA : cv::INTER_LINEAR);
  return padded;
}

}  // namespace kvx
