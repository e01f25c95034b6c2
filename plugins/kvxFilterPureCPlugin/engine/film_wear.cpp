#include "engine/film_wear.h"

#include "engine/engine_internal.h"

std::span<const LookRoutine> FilmWearRoutines() {
  static constexpr LookRoutine kRoutines[] = {
      {1, film::AmNoise},     {2, film::Mosaic},          {3, film::AmSplash},
      {4, film::FilmGrain},   {6, film::Emboss},          {24, film::Sunshine},
      {44, film::OldMovie},   {45, film::Old80s},         {46, film::Old90s},
      {47, film::WornCurves}, {48, film::Siena},          {54, film::GrayRetro},
      {56, film::WornCurves}, {57, film::ReducePalette},  {58, film::ReducePalette},
      {60, film::Star},       {61, film::Snow},           {62, film::Bubble},
      {63, film::GetColor},   {95, film::VignetteRadius}, {96, film::BadTvSignal, true},
  };
  return kRoutines;
}
