// Frames per second as the moving looks need it.
#ifndef KVX_ENGINE_FRAME_RATE_H_
#define KVX_ENGINE_FRAME_RATE_H_

#include "engine/engine.h"

// The usual rate for a record that has none.
inline double FrameRateOf(const EngineRecord& record) {
  return record.frameRate > 0 ? record.frameRate : 25.0;
}

#endif  // KVX_ENGINE_FRAME_RATE_H_
