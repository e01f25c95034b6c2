// The routines of the composite looks, told apart by idea; `CompositeRoutines` lists them with their codes.
#ifndef KVX_ENGINE_COMPOSITE_LOOKS_H_
#define KVX_ENGINE_COMPOSITE_LOOKS_H_

#include "engine/engine.h"

// pixel_looks.cpp: arithmetic on each pixel alone.
int32_t SimpleElegant(EngineRecord& record, const EngineImage& from, const EngineImage& image);
int32_t Beautify(EngineRecord& record, const EngineImage& from, const EngineImage& image);
int32_t Gloaming(EngineRecord& record, const EngineImage& from, const EngineImage& image);

// sketch_looks.cpp: lines and edges from the 3 by 3 neighbourhood.
int32_t SketchInPhoto(EngineRecord& record, const EngineImage& image);
int32_t LineDrawing(EngineRecord& record, const EngineImage& image);
int32_t Wash(EngineRecord& record, const EngineImage& from, const EngineImage& image);
int32_t Comic(EngineRecord& record, const EngineImage& image);

// soft_looks.cpp: box blurs.
int32_t GrayNoise(EngineRecord& record, const EngineImage& image);
int32_t Fuzzy(EngineRecord& record, const EngineImage& image);

// color_space_looks.cpp: hue bands.
int32_t Rainbow(EngineRecord& record, const EngineImage& from, const EngineImage& image);
int32_t SunriseBands(EngineRecord& record, const EngineImage& from, const EngineImage& image);

// lab_tone.cpp: a tone curve in Lab.
int32_t LabTone(EngineRecord& record, const EngineImage& from, const EngineImage& image);

#endif  // KVX_ENGINE_COMPOSITE_LOOKS_H_
