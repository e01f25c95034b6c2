#include "engine/film_wear.h"

#include "engine/engine_internal.h"

std::span<const DirectLook> FilmWearLooks() {
  static constexpr DirectLook kLooks[] = {
      {code::kTcvga, film::ReducePalette},
      {code::kAmCartoon, film::ReducePalette},
      {code::kGetColor, film::GetColor},
  };
  return kLooks;
}

std::span<const LookRoutine> FilmWearRoutines() {
  static constexpr LookRoutine kRoutines[] = {
      {code::kAmNoise, film::AmNoise},
      {code::kMosaic, film::Mosaic},
      {code::kAmSplash, film::AmSplash},
      {code::kFilmGrain, film::FilmGrain},
      {code::kEmboss, film::Emboss},
      {code::kSunshine, film::Sunshine},
      {code::kOldMovie, film::OldMovie},
      {code::kOld80s, film::Old80s},
      {code::kOld90s, film::Old90s},
      {code::kOld70s, film::WornCurves},
      {code::kSiena, film::Siena},
      {code::kGrayRetro, film::GrayRetro},
      {code::kXpro, film::WornCurves},
      {code::kStar, film::Star},
      {code::kSnow, film::Snow},
      {code::kBubble, film::Bubble},
      {code::kVignetteRadius, film::VignetteRadius},
      {code::kBadTvSignal, film::BadTvSignal, true},
  };
  return kRoutines;
}
