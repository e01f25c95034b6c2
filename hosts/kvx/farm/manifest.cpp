#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "hostkit/effects.h"
#include "hosts/kvx/farm/job.h"
#include "hosts/kvx/farm/submit.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace {

constexpr size_t kLongestName = 50;  // pods get an ending of their own

// Any text as a scalar of YAML, which holds JSON.
std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump();
}

std::string NameOf(const Job& job) {
  std::string name = "kvx-" + Slug(std::filesystem::path(job.folder).filename().string());
  name.resize(std::min(name.size(), kLongestName));
  while (name.back() == '-') name.pop_back();
  return name;
}

// The folder below the root that the path lies in: /data of /data/films/job.
std::string RootFolder(const std::string& path) {
  const size_t end = path.find('/', 1);
  return path.substr(0, end);
}

std::string PodText(const KubernetesOptions& options, const std::string& mount, const std::string& command) {
  return fmt::format(R"(    spec:
      restartPolicy: OnFailure
      containers:
        - name: kvx
          image: {0}
          command: {1}
          resources:
            requests: {{cpu: {2}, memory: {3}}}
            limits: {{cpu: {2}, memory: {3}}}
          volumeMounts:
            - {{name: work, mountPath: {4}}}
      volumes:
        - name: work
          persistentVolumeClaim: {{claimName: {5}}}
)",
                     Quoted(options.image), command, Quoted(options.cpu), Quoted(options.memory), Quoted(mount),
                     Quoted(options.claim));
}

}  // namespace

void PrintManifest(const std::string& folder, const KubernetesOptions& options) {
  const Job job = ReadJob(folder);
  const std::string mount = options.mount.empty() ? RootFolder(job.folder) : options.mount;
  const auto outside = [&](const std::string& path) { return !(path + "/").starts_with(mount + "/"); };
  for (const std::string& path : {job.folder, job.input.path, job.output.path}) {
    if (path != "demo" && outside(path))
      Note(fmt::format("{} is not on the volume, which is mounted at {}", path, mount));
  }
  const std::string name = NameOf(job);
  const size_t pieces = job.pieces.size();
  const size_t parallel = options.parallelism > 0 ? static_cast<size_t>(options.parallelism) : pieces;
  const auto command = [&](const std::string& verb, const std::string& more) {
    return fmt::format("[\"kvx\", \"farm\", \"{}\", {}{}]", verb, Quoted(job.folder), more);
  };
  Print(fmt::format(R"(apiVersion: batch/v1
kind: Job
metadata:
  name: {0}
spec:
  completionMode: Indexed
  completions: {1}
  parallelism: {2}
  backoffLimit: {3}
  template:
{4}---
apiVersion: batch/v1
kind: Job
metadata:
  name: {0}-join
spec:
  template:
{5})",
                    name, pieces, std::min(parallel, pieces), std::max<size_t>(6, pieces),
                    PodText(options, mount, command("run", ", \"--quiet\"")),
                    PodText(options, mount, command("join", ", \"--wait\""))));
}

}  // namespace kvx
