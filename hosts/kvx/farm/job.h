// A job: work cut into pieces, as it stands in job.json in the job's folder.
#ifndef KVX_HOSTS_KVX_FARM_JOB_H_
#define KVX_HOSTS_KVX_FARM_JOB_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/chain.h"
#include "hosts/kvx/farm/inputs.h"
#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/video_pieces.h"

namespace kvx {

// A range of a clip's frames, or of a list's files.
struct Piece {
  int64_t first = 0;
  int64_t count = 0;  // 0 for all frames of a clip that nobody counted
  // Of a clip: where the piece begins, and the stamp in the result at which the next one does.
  Cut cut;
  std::optional<int64_t> until;
  // Which of the job's inputs it reads, and where the first of them stands in the list.
  int64_t firstInput = 0;
  int64_t inputs = 0;
  int64_t listPlace = 0;
};

enum class JobKind {
  kVideo,     // frames of one input into a video
  kSequence,  // frames of one input into numbered pictures
  kFiles,     // every file by itself into a folder
};

// A link of the chain, with everything as the user wrote it.
struct EffectStep {
  int32_t effect = 0;
  double opacity = 100;
  std::vector<std::string> settings;
};

struct Job {
  std::string folder;
  std::string id;       // no other job has it
  std::string version;  // of the kvx that planned it
  std::string planned;  // when
  JobKind kind = JobKind::kVideo;
  InputOptions input;  // of kFiles: the path is the folder that all inputs lie in
  OutputOptions output;
  std::optional<FrameSize> pad;
  bool keepGoing = false;
  std::optional<uint32_t> seed;
  std::vector<EffectStep> effects;
  ClipPlan clip;  // of one input; without its cuts
  std::vector<Piece> pieces;
  int64_t inputs = 0;

  Chain BuildChain(const EffectList& list) const;
  int64_t Total() const;  // frames or files
};

// The job's files.
std::string JobPath(const std::string& folder);
std::string InputListPath(const std::string& folder);
std::string JoinedPath(const std::string& folder);

// Writes job.json, when the list of inputs is whole. Throws Error.
void WriteJob(const Job& job, const Chain& chain);
// Throws Error if there is none, or if another kvx planned it.
Job ReadJob(const std::string& folder);

// Goes over the inputs of one piece. Throws Error.
void ForEachInput(const Job& job, const Piece& piece, const std::function<void(const InputRecord&)>& visit);

// What the result of the piece's file `place` is called in the piece's folder.
std::string PieceFileName(const std::string& input, int64_t place);

// Where the result of an input goes, in a job of files.
std::string ResultPath(const Job& job, const std::string& input);

// The time as it is written everywhere: 2026-01-31T12:00:00Z.
std::string TimeText();

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_JOB_H_
