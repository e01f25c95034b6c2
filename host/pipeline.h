// A clip through a chain: reading, rendering and writing overlap; the order of frames is kept.
#ifndef KVX_HOST_PIPELINE_H_
#define KVX_HOST_PIPELINE_H_

#include <cstdint>
#include <functional>
#include <optional>

#include "chain.h"
#include "frame_io.h"

struct PipelineOptions {
  int jobs = 0;  // threads that render; 0 for one per core. Chains with state use one.
  std::optional<FrameSize> pad;
  std::function<void(int64_t done)> onFrame;
  std::function<bool()> stopped;  // asked before each frame is read
};

// Returns the number of frames written. `totalFrames` is what effects are told as the clip's length.
int64_t RunPipeline(Plugin& plugin, const Chain& chain, FrameReader& reader, FrameWriter& writer, int64_t totalFrames,
                    const PipelineOptions& options);

#endif  // KVX_HOST_PIPELINE_H_
