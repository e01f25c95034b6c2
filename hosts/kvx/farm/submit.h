// `kvx farm submit`: a job handed to whatever runs its pieces.
#ifndef KVX_HOSTS_KVX_FARM_SUBMIT_H_
#define KVX_HOSTS_KVX_FARM_SUBMIT_H_

#include <string>
#include <vector>

namespace kvx {

// How a command of the farm is begun on every machine: the program and what comes before "farm".
using CommandWords = std::vector<std::string>;

// The words for this program, with the plug-in and the resources that it was told.
CommandWords OwnCommand(const std::string& plugin, const std::string& resources);

// A line for each piece that is missing.
void PrintCommands(const std::string& folder, const CommandWords& command);

struct SlurmOptions {
  std::vector<std::string> words;  // for sbatch
  bool wait = false;
};
// An array job for the pieces that are missing, and behind it one that joins. Prints their numbers. With `wait` false
// if the job did not end well, else always true. Throws Error.
bool SubmitToSlurm(const std::string& folder, const CommandWords& command, const SlurmOptions& options);

struct KubernetesOptions {
  std::string image;
  std::string claim;  // of the volume that the job lies on
  std::string mount;  // where it is mounted; empty for the root of the job's path, such as /data of /data/job
  std::string cpu = "1";
  std::string memory = "2Gi";
  int parallelism = 0;  // 0 for all pieces at once
};
// Prints a manifest of an Indexed Job for all pieces and of a Job that waits for them and joins.
void PrintManifest(const std::string& folder, const KubernetesOptions& options);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_SUBMIT_H_
