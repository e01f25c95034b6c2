// `kvx farm status` and `kvx farm clean`: how far a job is, and its end.
#ifndef KVX_HOSTS_KVX_FARM_STATUS_H_
#define KVX_HOSTS_KVX_FARM_STATUS_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "hosts/kvx/farm/job.h"

namespace kvx {

struct JobStatus {
  int64_t done = 0;                                     // pieces
  int64_t frames = 0;                                   // in them; files, where every file is rendered by itself
  double seconds = 0;                                   // that they took, added up
  std::vector<int64_t> missing;                         // pieces that are not there, or not whole
  std::vector<std::pair<int64_t, std::string>> failed;  // those of them that failed or are damaged, and why
  bool joined = false;
};

// Reads what each piece says of itself, not its frames.
JobStatus LookAtJob(const Job& job);

// "3,7-9", as batch systems write it.
std::string PieceRanges(const std::vector<int64_t>& pieces);

void ShowStatus(const std::string& folder, bool json);

// Removes the job's folder and nothing that kvx did not put there. What was joined stays. Throws Error.
void CleanJob(const std::string& folder);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_STATUS_H_
