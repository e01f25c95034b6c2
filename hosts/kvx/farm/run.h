// `kvx farm run`: one piece of a job, rendered.
#ifndef KVX_HOSTS_KVX_FARM_RUN_H_
#define KVX_HOSTS_KVX_FARM_RUN_H_

#include <cstdint>
#include <optional>
#include <string>

#include "hostkit/plugin.h"

namespace kvx {

struct RunOptions {
  std::string job;
  std::optional<int64_t> piece;  // else the batch system names it
  int64_t offset = 0;            // the piece that the batch system's first index stands for
  int jobs = 0;                  // threads that render; 0 for as many as the batch system gave, or the machine has
  bool quiet = false;
};

// Renders the piece and puts it whole into the job's folder; one that is whole already is left alone. Throws Error:
// then there is no such piece, and the job knows why.
void RunPiece(const PluginOptions& plugin, const std::string& version, const RunOptions& options);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_RUN_H_
