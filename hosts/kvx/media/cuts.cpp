#include "hosts/kvx/media/cuts.h"

#include <algorithm>

namespace kvx {

namespace {

constexpr size_t kMostPlaces = 1 << 16;

}  // namespace

void CutPicker::Offer(const Cut& cut) {
  if (wish_.framesPerPiece > 0) {
    const int64_t due = places_.empty() ? 0 : (places_.back().frame / wish_.framesPerPiece + 1) * wish_.framesPerPiece;
    if (cut.frame >= due) places_.push_back(cut);
    return;
  }
  if (!places_.empty() && cut.frame < places_.back().frame + stride_) return;
  places_.push_back(cut);
  if (places_.size() < kMostPlaces) return;
  stride_ *= 2;
  std::vector<Cut> kept;
  for (const Cut& place : places_) {
    if (kept.empty() || place.frame >= kept.back().frame + stride_) kept.push_back(place);
  }
  places_ = std::move(kept);
}

std::vector<Cut> CutPicker::Pick(int64_t frames) const {
  if (wish_.framesPerPiece > 0) return places_;
  std::vector<Cut> cuts;
  for (int64_t i = 0; i < wish_.pieces; ++i) {
    // In this order it cannot overflow.
    const int64_t wanted = frames / wish_.pieces * i + frames % wish_.pieces * i / wish_.pieces;
    const auto place = std::lower_bound(places_.begin(), places_.end(), wanted,
                                        [](const Cut& cut, int64_t frame) { return cut.frame < frame; });
    if (place != places_.end() && (cuts.empty() || place->frame > cuts.back().frame)) cuts.push_back(*place);
  }
  return cuts;
}

}  // namespace kvx
