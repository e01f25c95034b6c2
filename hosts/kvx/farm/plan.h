// `kvx farm plan`: a job written down, cut into pieces.
#ifndef KVX_HOSTS_KVX_FARM_PLAN_H_
#define KVX_HOSTS_KVX_FARM_PLAN_H_

#include <cstdint>
#include <optional>
#include <string>

#include "hostkit/chain.h"
#include "hostkit/plugin.h"
#include "hosts/kvx/commands.h"
#include "hosts/kvx/farm/inputs.h"
#include "hosts/kvx/media/video_pieces.h"

namespace kvx {

struct PlanOptions {
  std::string folder;  // of the job
  std::string version;
  InputNames inputs;
  RenderOptions render;  // of one input: its name too
  std::optional<uint32_t> seed;
  CutWish cut;  // nothing wished: pieces of 1000 frames or files
};

// True if every input is to be rendered by itself, into a folder.
bool IsForFiles(const InputNames& inputs, const std::string& output);

// Makes the job's folder and prints what is in it. Whatever would fail in every piece fails now. Throws Error: then
// there is no job.
void PlanJob(Plugin& plugin, const Chain& chain, const PlanOptions& options);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_PLAN_H_
