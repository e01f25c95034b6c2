#include "hosts/kvx/studio/clip.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "hostkit/error.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr size_t kMostBytes = size_t{384} << 20;
constexpr int64_t kReadOn = 40;          // frames that are rather read than jumped over
constexpr int64_t kDemoFrames = 100000;  // as good as endless
constexpr FrameSize kFull{0, 0};         // stands for the frame as it is

}  // namespace

Picture ScalePicture(const Picture& picture, FrameSize size) {
  Picture scaled(size.width, size.height);
  const cv::Mat from(picture.height, picture.width, CV_8UC4, const_cast<uint8_t*>(picture.pixels.data()));
  cv::Mat to(size.height, size.width, CV_8UC4, scaled.pixels.data());
  cv::resize(from, to, to.size(), 0, 0, size.width < picture.width ? cv::INTER_AREA : cv::INTER_LINEAR);
  return scaled;
}

Picture CropPicture(const Picture& picture, int32_t x, int32_t y, FrameSize size) {
  Picture crop(size.width, size.height);
  for (int32_t row = 0; row < size.height; ++row) {
    std::memcpy(crop.Row(row), picture.Row(y + row) + 4 * static_cast<size_t>(x), static_cast<size_t>(crop.Step()));
  }
  return crop;
}

Clip::Clip(std::string input) : input_(std::move(input)) {
  if (input_ == "-") throw UsageError("the studio shows frames in any order: give it a file, not a pipe");
  demo_ = input_ == "demo";
  still_ = !demo_ && !IsSequence(input_) && IsPictureFile(input_);
  endless_ = demo_ || still_;
  Open(0);
  Frame first;
  if (!reader_->Read(first)) throw Error(fmt::format("{}: there are no frames in it", input_));
  size_ = {first.picture.width, first.picture.height};
  next_ = 1;
  if (!endless_) count_ = std::max<int64_t>(1, reader_->Count().value_or(1));
  Keep({0, kFull, false, std::make_shared<Frame>(std::move(first))});
  if (endless_ || count_ < 2) return;
  Frame second;
  if (!reader_->Read(second)) {
    count_ = 1;
    return;
  }
  next_ = 2;
  second.number = 1;
  if (second.seconds > 0) fps_ = 1 / second.seconds;
  Keep({1, kFull, false, std::make_shared<Frame>(std::move(second))});
}

int64_t Clip::Count() const {
  const std::lock_guard lock(mutex_);
  return count_;
}

std::string Clip::Folder() const {
  const fs::path folder = demo_ ? fs::path() : fs::path(input_).parent_path();
  return folder.empty() ? "." : folder.string();
}

void Clip::Open(int64_t frame) {
  InputOptions options;
  options.path = input_;
  if (demo_) options.frames = kDemoFrames;
  // A quarter of a frame early: time stamps are rounded.
  if (frame > 0) options.start = (static_cast<double>(frame) - 0.25) / fps_;
  reader_ = OpenReader(options);
  next_ = frame;
  offset_ = static_cast<double>(frame) / fps_;
}

SharedFrame Clip::Find(int64_t frame, FrameSize size, bool pad) {
  for (auto at = kept_.begin(); at != kept_.end(); ++at) {
    if (at->frame != frame || at->size.width != size.width || at->size.height != size.height || at->pad != pad) {
      continue;
    }
    kept_.splice(kept_.begin(), kept_, at);
    return kept_.front().data;
  }
  return nullptr;
}

void Clip::Keep(Entry entry) {
  keptBytes_ += entry.data->picture.pixels.size();
  kept_.push_front(std::move(entry));
  while (keptBytes_ > kMostBytes && kept_.size() > 2) {
    keptBytes_ -= kept_.back().data->picture.pixels.size();
    kept_.pop_back();
  }
}

SharedFrame Clip::At(int64_t frame, const std::function<bool()>& stopped) {
  const std::lock_guard lock(mutex_);
  if (still_) frame = 0;
  if (!endless_) frame = std::min(frame, count_ - 1);
  for (;;) {
    if (SharedFrame found = Find(frame, kFull, false)) return found;
    if (!reader_ || frame < next_ || frame > next_ + kReadOn) Open(frame);
    while (next_ <= frame) {
      if (stopped && stopped()) throw Error("stopped");
      Frame read;
      bool got = false;
      try {
        got = reader_->Read(read);
      } catch (...) {
        reader_.reset();
        throw;
      }
      if (!got) break;
      read.number = next_++;
      read.seconds += offset_;
      Keep({read.number, kFull, false, std::make_shared<Frame>(std::move(read))});
    }
    if (next_ > frame) continue;
    // The clip is shorter than it says.
    reader_.reset();
    if (frame == 0) throw Error(fmt::format("{}: there are no frames in it", input_));
    count_ = next_ < frame ? std::max<int64_t>(next_, 1) : frame;
    frame = count_ - 1;
  }
}

SharedFrame Clip::Scaled(int64_t frame, FrameSize size, bool pad, const std::function<bool()>& stopped) {
  {
    const std::lock_guard lock(mutex_);
    if (SharedFrame found = Find(still_ ? 0 : frame, size, pad)) return found;
  }
  const SharedFrame full = At(frame, stopped);
  auto scaled = std::make_shared<Frame>();
  scaled->number = full->number;
  scaled->seconds = full->seconds;
  scaled->picture = pad ? PadPicture(full->picture, size) : ScalePicture(full->picture, size);
  const std::lock_guard lock(mutex_);
  Keep({still_ ? 0 : frame, size, pad, scaled});
  return scaled;
}

}  // namespace kvx
