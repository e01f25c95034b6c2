#include <fmt/format.h>

#include <algorithm>
#include <fstream>

#include "hostkit/error.h"
#include "hosts/kvx/commands.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/overlap.h"
#include "hosts/kvx/pipeline.h"
#include "hosts/kvx/progress.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace {

// A file of somebody's that lies under the name for progress by mistake is not written over.
void CheckProgressFile(const RenderOptions& options) {
  std::ifstream file(options.progressFile);
  std::string line;
  if (options.output.overwrite || !file || !std::getline(file, line) || line.starts_with("frame=")) return;
  throw UsageError(fmt::format("{} exists and is no file of progress; --overwrite replaces it", options.progressFile));
}

void CheckFiles(const RenderOptions& options, const FrameReader& reader) {
  std::vector<std::string> inputs = reader.Files();
  inputs.push_back(options.recipe);
  const bool sequence = IsSequenceName(options.output);
  RefuseOverlap(inputs, {sequence ? "" : options.output.path, options.progressFile},
                sequence ? options.output.path : "");
  if (options.progressFile.empty()) return;
  if (options.progressFile == options.output.path) throw UsageError("the file of progress is the output");
  CheckProgressFile(options);
}

}  // namespace

bool RenderFrames(Plugin& plugin, const Chain& chain, const RenderOptions& options) {
  const std::unique_ptr<FrameReader> reader = OpenReader(options.input);
  if (options.fpsGiven && reader->Media()) {
    throw UsageError(
        fmt::format("--fps is for inputs without a rate; {} has {:.6g}", options.input.path, reader->Rate()));
  }
  CheckFiles(options, *reader);
  const std::unique_ptr<FrameWriter> writer = OpenWriter(options.output, *reader, options.input.fps);
  const int64_t count = reader->Count().value_or(0);
  const int64_t total = count > 0 ? reader->FirstPlace() + count : 0;

  Progress progress("frame", count, {options.quiet, options.progressFile, reader->Rate()});
  PipelineOptions pipeline;
  pipeline.jobs = options.jobs;
  pipeline.pad = options.pad;
  pipeline.onFrame = [&](int64_t) { progress.Advance(); };
  pipeline.stopped = StopAsked;
  const PipelineResult result = RunPipeline(plugin, chain, *reader, *writer, total, pipeline);
  if (!result.whole) {
    AcknowledgeStop();
    const std::string kept = writer->FinishPartial();
    progress.Interrupt();
    Note(fmt::format("interrupted after {} frames: {}", result.frames, kept));
    throw Interrupted();
  }
  progress.Finish();
  const std::vector<std::string> damage = reader->Damage();
  for (const std::string& line : damage) Note(line);
  return damage.empty() || options.keepGoing;
}

}  // namespace kvx
