// A clip through a chain: reading, rendering and writing overlap; the order of frames is kept.
#ifndef KVX_HOSTS_KVX_PIPELINE_H_
#define KVX_HOSTS_KVX_PIPELINE_H_

#include <cstdint>
#include <functional>
#include <optional>

#include "hostkit/chain.h"
#include "hosts/kvx/frame_io.h"

namespace kvx {

struct PipelineOptions {
  int jobs = 0;  // threads that render; 0 for one per core. An effect that wants its frames in order uses one of them.
  std::optional<FrameSize> pad;
  std::function<void(int64_t done)> onFrame;
  std::function<bool()> stopped;  // asked before each frame is read
};

struct PipelineResult {
  int64_t frames;  // written
  bool whole;      // false: it was stopped, and the writer is not finished
};

// At most as many frames as threads and stages of the chain (Chain::Stages), and two more, are held at a time.
// `totalFrames` is what effects are told as the clip's length. Effects and keyframes
// count frames and time from the beginning of the input, so that a part of a clip looks as it does in the whole. Throws
// Error.
PipelineResult RunPipeline(Plugin& plugin, const Chain& chain, FrameReader& reader, FrameWriter& writer,
                           int64_t totalFrames, const PipelineOptions& options);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_PIPELINE_H_
