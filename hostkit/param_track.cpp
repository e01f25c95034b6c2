#include "hostkit/param_track.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>

namespace kvx {

namespace {

constexpr const char* kTimeName = "Time";

// Settings of recipes may hold thousands of frames.
std::string Shortened(const std::string& text) {
  constexpr size_t kLongest = 60;
  return text.size() <= kLongest ? text : text.substr(0, kLongest) + "...";
}

double ParseNumber(std::string_view text, const std::string& setting) {
  double value = 0;
  if (text.starts_with('+')) text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    throw Error(fmt::format("\"{}\" in \"{}\" is not a number", text, Shortened(setting)), ErrorKind::kBadValue);
  }
  return value;
}

double CheckedValue(const ParamInfo& param, std::string_view text, const std::string& setting) {
  const double value = ParseNumber(text, setting);
  if (value < param.minimum || value > param.maximum) {
    throw Error(fmt::format("{} is out of range for \"{}\": {} to {}", text, param.name, param.minimum, param.maximum),
                ErrorKind::kBadValue);
  }
  if (!param.TakesFractions() && value != std::floor(value)) {
    throw Error(fmt::format("{} is not a whole number, which \"{}\" wants", text, param.name), ErrorKind::kBadValue);
  }
  return value;
}

}  // namespace

ParamTracks::ParamTracks(const EffectInfo& effect, const std::vector<std::string>& settings, double opacity) {
  for (const ParamInfo& param : effect.params) {
    if (param.IsText()) continue;
    if (param.name == kTimeName) feedsTime_ = true;
    tracks_[param.name] = {{0, param.defaultValue}};
  }
  for (const std::string& setting : settings) {
    const size_t equals = setting.find('=');
    if (equals == std::string::npos) throw UsageError(fmt::format("\"{}\" is not NAME=VALUE", setting));
    const ParamInfo& param = FindParam(effect, setting.substr(0, equals));
    std::string_view rest = std::string_view(setting).substr(equals + 1);
    if (param.IsText()) {
      texts_[param.name] = rest;
      continue;
    }
    if (param.name == kTimeName) feedsTime_ = false;
    Track& track = tracks_[param.name];
    track.clear();
    if (rest.find(':') == std::string_view::npos) {
      track[0] = CheckedValue(param, rest, setting);
      continue;
    }
    while (!rest.empty()) {
      const std::string_view point = rest.substr(0, rest.find(','));
      rest.remove_prefix(std::min(point.size() + 1, rest.size()));
      const size_t colon = point.find(':');
      if (colon == std::string_view::npos) throw UsageError(fmt::format("\"{}\" is not FRAME:VALUE", point));
      const double frame = ParseNumber(point.substr(0, colon), setting);
      if (frame < 0)
        throw Error(fmt::format("frame {} of \"{}\" is negative", frame, param.name), ErrorKind::kBadValue);
      if (!track.emplace(frame, CheckedValue(param, point.substr(colon + 1), setting)).second) {
        throw Error(fmt::format("frame {} of \"{}\" is given twice", frame, param.name), ErrorKind::kBadValue);
      }
    }
  }
  tracks_[kOpacityName] = {{0, opacity}};
}

FrameValues ParamTracks::At(int64_t frame, double milliseconds) const {
  FrameValues values;
  values.texts = texts_;
  const auto at = static_cast<double>(frame);
  for (const auto& [name, track] : tracks_) {
    const auto next = track.lower_bound(at);
    if (next == track.end()) {
      values.numbers[name] = std::prev(next)->second;
    } else if (next == track.begin()) {
      values.numbers[name] = next->second;
    } else {
      const auto [frame0, value0] = *std::prev(next);
      const auto [frame1, value1] = *next;
      values.numbers[name] = value0 + (value1 - value0) * (at - frame0) / (frame1 - frame0);
    }
  }
  if (feedsTime_) values.numbers[kTimeName] = milliseconds;
  return values;
}

}  // namespace kvx
