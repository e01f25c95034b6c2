#include "hosts/kvx/frame_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "hostkit/plugin.h"
#include "hosts/kvx/demo_picture.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr int32_t kMaxFrameSide = 16384;

// The parts of a pattern around its %d or %0Nd.
struct Pattern {
  std::string head;
  std::string tail;
  size_t digits = 0;  // at least so many
};

std::optional<Pattern> ParsePattern(const std::string& text) {
  const size_t percent = text.find('%');
  if (percent == std::string::npos) return std::nullopt;
  size_t at = percent + 1;
  Pattern pattern;
  while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
    pattern.digits = std::min<size_t>(pattern.digits * 10 + static_cast<size_t>(text[at++] - '0'), 20);
  }
  if (at >= text.size() || text[at] != 'd') return std::nullopt;
  pattern.head = text.substr(0, percent);
  pattern.tail = text.substr(at + 1);
  return pattern;
}

class DemoSource : public FrameSource {
 public:
  explicit DemoSource(FrameSize size) : size_(size) {}
  std::optional<int64_t> Count() const override { return std::nullopt; }
  Picture Read(int64_t frame) override { return DrawDemoPicture(size_.width, size_.height, frame); }

 private:
  FrameSize size_;
};

class StillSource : public FrameSource {
 public:
  explicit StillSource(const std::string& path) : picture_(ReadPicture(path)) {}
  std::optional<int64_t> Count() const override { return std::nullopt; }
  Picture Read(int64_t) override { return picture_; }

 private:
  Picture picture_;
};

class SequenceSource : public FrameSource {
 public:
  SequenceSource(const std::string& text, const Pattern& pattern) {
    const fs::path head(pattern.head);
    const fs::path directory = head.parent_path().empty() ? fs::path(".") : head.parent_path();
    const std::string prefix = head.filename().string();
    std::vector<std::pair<int64_t, std::string>> found;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
      const std::string name = entry.path().filename().string();
      if (!name.starts_with(prefix) || !name.ends_with(pattern.tail) ||
          name.size() < prefix.size() + pattern.tail.size() + std::max<size_t>(pattern.digits, 1)) {
        continue;
      }
      const std::string digits = name.substr(prefix.size(), name.size() - prefix.size() - pattern.tail.size());
      int64_t number = 0;
      const auto [end, bad] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
      if (bad == std::errc() && end == digits.data() + digits.size() && number >= 0) {
        found.emplace_back(number, entry.path().string());
      }
    }
    if (found.empty()) throw Error(fmt::format("no files match {}", text));
    std::sort(found.begin(), found.end());
    for (auto& file : found) files_.push_back(std::move(file.second));
  }
  std::optional<int64_t> Count() const override { return static_cast<int64_t>(files_.size()); }
  Picture Read(int64_t frame) override { return ReadPicture(files_.at(static_cast<size_t>(frame))); }

 private:
  std::vector<std::string> files_;
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

bool IsSequence(const std::string& path) {
  return ParsePattern(path).has_value();
}

std::string SequenceName(const std::string& text, int64_t number) {
  const std::optional<Pattern> pattern = ParsePattern(text);
  return pattern ? fmt::format("{}{:0{}}{}", pattern->head, number, pattern->digits, pattern->tail) : text;
}

std::unique_ptr<FrameSource> OpenFrames(const std::string& input, FrameSize demoSize) {
  if (input == "demo") return std::make_unique<DemoSource>(demoSize);
  if (const auto pattern = ParsePattern(input)) return std::make_unique<SequenceSource>(input, *pattern);
  return std::make_unique<StillSource>(input);
}

Picture ReadPicture(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) throw Error(fmt::format("{}: no such file", path));
  if (fs::is_directory(path, error)) throw Error(fmt::format("{}: is a directory", path));
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) throw Error(fmt::format("{}: cannot be read", path));
  Picture picture;
  std::string reason;
  if (!DecodePicture(bytes, picture, reason)) throw Error(fmt::format("{}: {}", path, reason));
  if (picture.width > kMaxFrameSide || picture.height > kMaxFrameSide) {
    throw Error(fmt::format("{}: larger than {} by {}", path, kMaxFrameSide, kMaxFrameSide));
  }
  return picture;
}

bool IsPictureFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  char head[8] = {};
  file.read(head, sizeof head);
  if (file.gcount() == 0) return true;
  return DetectFormat({head, static_cast<size_t>(file.gcount())}) != PictureFormat::kUnknown;
}

void WritePicture(const Picture& picture, const std::string& path) {
  std::string ending = fs::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  std::string bytes;
  if (ending == ".png") {
    bytes = EncodePng(picture);
  } else if (ending == ".jpg" || ending == ".jpeg") {
    bytes = EncodeJpeg(picture);
  } else {
    throw UsageError(fmt::format("{}: pictures are written as .png, .jpg or .jpeg", path));
  }
  if (bytes.empty()) throw Error(fmt::format("{}: cannot be encoded", path));
  const std::string part = path + ".part";
  std::ofstream file(part, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code error;
  if (file) fs::rename(part, path, error);
  if (!file || error) {
    fs::remove(part, error);
    throw Error(fmt::format("{}: cannot be written", path));
  }
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
