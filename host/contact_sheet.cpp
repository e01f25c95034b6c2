#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <opencv2/imgproc.hpp>

#include "commands.h"
#include "param_track.h"
#include "progress.h"

namespace {

constexpr int kCellWidth = 240;
constexpr int kCaptionHeight = 26;
constexpr int kGap = 6;
constexpr int64_t kStillFrames = 2;
constexpr int64_t kMovingFrames = 25;
constexpr double kFps = 25;

cv::Mat View(Picture& picture) { return cv::Mat(picture.height, picture.width, CV_8UC4, picture.pixels.data()); }

// The picture over a checkerboard, so that transparency shows.
cv::Mat OverCheckerboard(const cv::Mat& picture) {
  cv::Mat out(picture.size(), CV_8UC4);
  for (int y = 0; y < out.rows; ++y) {
    for (int x = 0; x < out.cols; ++x) {
      const auto& pixel = picture.at<cv::Vec4b>(y, x);
      const int ground = (x / 8 + y / 8) % 2 ? 150 : 110;
      auto& to = out.at<cv::Vec4b>(y, x);
      for (int c = 0; c < 3; ++c) to[c] = static_cast<uint8_t>((pixel[c] * pixel[3] + ground * (255 - pixel[3])) / 255);
      to[3] = 255;
    }
  }
  return out;
}

void RenderEffect(Plugin& plugin, const EffectInfo& effect, FrameSource& source, const std::optional<FrameSize>& pad,
                  Picture& output) {
  const ParamTracks tracks(effect, {}, 100);
  const std::unique_ptr<Effect> object = plugin.Create(effect);
  const int64_t total = effect.dynamic ? kMovingFrames : kStillFrames;
  for (int64_t frame = 0; frame < total; ++frame) {
    const int64_t last = source.Count() ? *source.Count() - 1 : frame;
    Picture input = source.Read(std::min(frame, last));
    if (pad) input = PadPicture(input, *pad);
    object->Render(input, output, frame, total, tracks.At(frame, static_cast<double>(frame) * 1000 / kFps));
  }
}

std::string FileNameOf(const EffectInfo& effect) {
  std::string name = fmt::format("{:04}_{}", effect.id, effect.name);
  std::replace_if(name.begin(), name.end(), [](char c) { return c == ' ' || c == '/'; }, '_');
  return name + ".png";
}

// Frames that several effects ask for are read once.
class CachedSource : public FrameSource {
 public:
  explicit CachedSource(std::unique_ptr<FrameSource> source) : source_(std::move(source)) {}
  std::optional<int64_t> Count() const override { return source_->Count(); }
  Picture Read(int64_t frame) override {
    const auto found = frames_.find(frame);
    if (found != frames_.end()) return found->second;
    return frames_.emplace(frame, source_->Read(frame)).first->second;
  }

 private:
  std::unique_ptr<FrameSource> source_;
  std::map<int64_t, Picture> frames_;
};

}  // namespace

void RenderContactSheet(Plugin& plugin, const ContactSheetOptions& options) {
  std::vector<const EffectInfo*> effects;
  for (const EffectInfo& effect : plugin.Effects()) {
    if (MatchesPattern(effect.name, options.pattern)) effects.push_back(&effect);
  }
  if (effects.empty()) throw UsageError(fmt::format("no effect matches \"{}\"", options.pattern));
  CachedSource source(OpenFrames(options.input, options.size));
  if (!options.each.empty()) {
    std::error_code error;
    std::filesystem::create_directories(options.each, error);
    if (error) throw KvxError(fmt::format("{}: {}", options.each, error.message()));
  }
  const Picture first = options.pad ? PadPicture(source.Read(0), *options.pad) : source.Read(0);
  const int cellHeight = std::clamp(kCellWidth * first.height / first.width, 16, 4 * kCellWidth);
  const int columns = std::clamp(static_cast<int>(effects.size()), 1, 8);
  const int rows = (static_cast<int>(effects.size()) + columns - 1) / columns;
  Picture sheet(kGap + columns * (kCellWidth + kGap), kGap + rows * (cellHeight + kCaptionHeight + kGap));
  cv::Mat canvas = View(sheet);
  canvas.setTo(cv::Scalar(32, 32, 32, 255));

  Progress progress("effect", static_cast<int64_t>(effects.size()));
  Picture output;
  for (size_t i = 0; i < effects.size(); ++i) {
    const EffectInfo& effect = *effects[i];
    RenderEffect(plugin, effect, source, options.pad, output);
    if (!options.each.empty()) WritePicture(output, options.each + "/" + FileNameOf(effect));
    const int x = kGap + static_cast<int>(i) % columns * (kCellWidth + kGap);
    const int y = kGap + static_cast<int>(i) / columns * (cellHeight + kCaptionHeight + kGap);
    cv::Mat cell;
    cv::resize(OverCheckerboard(View(output)), cell, {kCellWidth, cellHeight}, 0, 0, cv::INTER_AREA);
    cell.copyTo(canvas(cv::Rect(x, y, kCellWidth, cellHeight)));
    cv::putText(canvas, fmt::format("{} {}", effect.id, effect.name), {x + 2, y + cellHeight + 18},
                cv::FONT_HERSHEY_SIMPLEX, 0.5, cv::Scalar(235, 235, 235, 255), 1, cv::LINE_AA);
    progress.Advance();
  }
  WritePicture(sheet, options.output);
}
