#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "hosts/kvx/commands.h"
#include "hosts/kvx/frame_cache.h"
#include "hosts/kvx/labelled_grid.h"
#include "hosts/kvx/output_file.h"
#include "hosts/kvx/progress.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace {

constexpr int kCellWidth = 240;
constexpr int kColumns = 8;
constexpr int32_t kLargestShown = 2 * kCellWidth;  // more than a cell shows
constexpr int32_t kLargest = 1920;

// Colours, overlays and panes go with the size of the picture; grains, edges and waves do not.
bool LooksTheSameSmall(const EffectInfo& effect) {
  static const std::set<std::string> families = {"colour and tone", "colour looks", "composite looks", "overlays",
                                                 "flips and panes"};
  return families.count(effect.family) > 0;
}

std::string FileNameOf(const EffectInfo& effect) {
  std::string name = fmt::format("{:04}_{}", effect.id, effect.name);
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == ' ' || c == '/'; }, '_');
  return name + ".png";
}

// Up to four values from minimum to maximum, whole ones where the parameter wants that.
std::vector<double> SampleValues(const ParamInfo& param) {
  std::vector<double> values;
  for (int i = 0; i < 4; ++i) {
    double value = param.minimum + (param.maximum - param.minimum) * i / 3;
    if (!param.TakesFractions()) value = static_cast<double>(static_cast<int64_t>(value));
    if (values.empty() || value != values.back()) values.push_back(value);
  }
  return values;
}

}  // namespace

void RenderContactSheet(Plugin& plugin, const ContactSheetOptions& options) {
  std::vector<const EffectInfo*> effects;
  for (const EffectInfo& effect : plugin.Effects().All()) {
    if (MatchesPattern(effect.name, options.pattern)) effects.push_back(&effect);
  }
  if (effects.empty()) throw UsageError(fmt::format("no effect matches \"{}\"", options.pattern));
  OutputFile file(options.output, options.overwrite);
  if (!IsPictureName(options.output)) {
    throw UsageError(fmt::format("{}: pictures are written as .png, .jpg or .jpeg", options.output));
  }
  FrameCache source(options.input, options.size, options.pad, kLargest);
  FrameCache small(source, std::nullopt, kLargestShown);
  if (!options.each.empty()) {
    std::error_code error;
    std::filesystem::create_directories(options.each, error);
    if (error) throw Error(fmt::format("{}: {}", options.each, error.message()));
    for (const EffectInfo* effect : effects) {
      CheckReplaceable(options.each + "/" + FileNameOf(*effect), options.overwrite);
    }
  }
  LabelledGrid grid(static_cast<int>(effects.size()), kColumns, kCellWidth, source.At(0).width, source.At(0).height);
  Progress progress("effect", static_cast<int64_t>(effects.size()));
  Picture output;
  for (const EffectInfo* effect : effects) {
    ThrowIfStopAsked();
    FrameCache& frames = options.each.empty() && LooksTheSameSmall(*effect) ? small : source;
    RenderSample(plugin, *effect, ParamTracks(*effect, {}, 100), frames, SampleLength(*effect), output);
    if (!options.each.empty()) WritePicture(output, options.each + "/" + FileNameOf(*effect), options.overwrite);
    grid.Add(output, fmt::format("{} {}", effect->id, effect->name));
    progress.Advance();
  }
  progress.Finish();
  file.Write(EncodePicture(grid.Sheet(), options.output, nullptr));
  file.Commit();
}

void RenderPreview(Plugin& plugin, const EffectInfo& effect, const PreviewOptions& options) {
  OutputFile file(options.output, options.overwrite);
  if (!IsPictureName(options.output)) {
    throw UsageError(fmt::format("{}: pictures are written as .png, .jpg or .jpeg", options.output));
  }
  FrameCache source(options.input, options.size, std::nullopt, 1280);
  std::vector<const ParamInfo*> params;
  for (const ParamInfo& param : effect.params) {
    if (!param.IsText() && params.size() < 2) params.push_back(&param);
  }
  std::vector<std::vector<std::string>> settings;
  const std::vector<double> across = params.empty() ? std::vector<double>{0} : SampleValues(*params[0]);
  const std::vector<double> down = params.size() < 2 ? std::vector<double>{0} : SampleValues(*params[1]);
  for (const double second : down) {
    for (const double first : across) {
      std::vector<std::string> set;
      if (!params.empty()) set.push_back(fmt::format("{}={:g}", params[0]->name, first));
      if (params.size() == 2) set.push_back(fmt::format("{}={:g}", params[1]->name, second));
      settings.push_back(std::move(set));
    }
  }
  LabelledGrid grid(static_cast<int>(settings.size()), static_cast<int>(across.size()), 360, source.At(0).width,
                    source.At(0).height);
  Picture output;
  for (const std::vector<std::string>& set : settings) {
    ThrowIfStopAsked();
    RenderSample(plugin, effect, ParamTracks(effect, set, 100), source, SampleLength(effect), output);
    grid.Add(output, set.empty() ? effect.name : fmt::format("{}", fmt::join(set, "  ")));
  }
  file.Write(EncodePicture(grid.Sheet(), options.output, nullptr));
  file.Commit();
}

}  // namespace kvx
