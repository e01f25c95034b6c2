// The routines of the jigsaw panes and the kaleidoscope; `PaneRoutines` lists them with their codes.
#ifndef KVX_ENGINE_PANE_LOOKS_H_
#define KVX_ENGINE_PANE_LOOKS_H_

#include "engine/engine.h"

// jigsaw.cpp. The layout comes from the record's code, 89 to 94.
int32_t Jigsaw(EngineRecord& record, const EngineImage& from, const EngineImage& image);

// kaleidoscope.cpp
int32_t Kaleidoscope(EngineRecord& record, const EngineImage& image);

#endif  // KVX_ENGINE_PANE_LOOKS_H_
