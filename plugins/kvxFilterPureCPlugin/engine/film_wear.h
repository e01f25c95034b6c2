// Film wear, noise and particles: what a camera, a film or a broken television adds to a picture. One routine for each
// code or small family of codes; film_wear.cpp lists them.
#ifndef KVX_ENGINE_FILM_WEAR_H_
#define KVX_ENGINE_FILM_WEAR_H_

#include "engine/engine.h"

namespace film {

// noise.cpp
int32_t AmNoise(EngineRecord& record, const EngineImage& image);
int32_t AmSplash(EngineRecord& record, const EngineImage& image);
int32_t FilmGrain(EngineRecord& record, const EngineImage& image);

// block_emboss.cpp
int32_t Mosaic(EngineRecord& record, const EngineImage& image);
int32_t Emboss(EngineRecord& record, const EngineImage& image);

// light_spot.cpp
int32_t Sunshine(EngineRecord& record, const EngineImage& image);
int32_t VignetteRadius(EngineRecord& record, const EngineImage& image);

// old_film.cpp
int32_t OldMovie(EngineRecord& record, const EngineImage& image);
int32_t Old80s(EngineRecord& record, const EngineImage& image);
int32_t Old90s(EngineRecord& record, const EngineImage& image);
int32_t WornCurves(EngineRecord& record, const EngineImage& image);
int32_t Siena(EngineRecord& record, const EngineImage& image);
int32_t GrayRetro(EngineRecord& record, const EngineImage& image);

// palette.cpp
int32_t ReducePalette(EngineRecord& record, const EngineImage& from, const EngineImage& image);

// particles.cpp
int32_t Star(EngineRecord& record, const EngineImage& image);
int32_t Snow(EngineRecord& record, const EngineImage& image);
int32_t Bubble(EngineRecord& record, const EngineImage& image);

// get_color.cpp
int32_t GetColor(EngineRecord& record, const EngineImage& from, const EngineImage& image);

// bad_tv.cpp
int32_t BadTvSignal(EngineRecord& record, const EngineImage& image);

}  // namespace film

#endif  // KVX_ENGINE_FILM_WEAR_H_
