// What a piece gave: a folder of its own, which is there whole or not at all.
//
// It is made under a name that nobody else has and then gets its own. Whoever comes second throws away what he made.
// So nothing needs a lock, and a machine that dies leaves no half piece.
#ifndef KVX_HOSTS_KVX_FARM_PIECE_FOLDER_H_
#define KVX_HOSTS_KVX_FARM_PIECE_FOLDER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hosts/kvx/farm/job.h"

namespace kvx {

struct PieceFile {
  std::string name;
  int64_t size = 0;
  uint32_t checksum = 0;
};

struct PieceResult {
  std::string job;  // the id
  int64_t frames = 0;
  double seconds = 0;
  std::string host;
  std::string finished;
  std::vector<PieceFile> files;
  std::vector<std::string> damage;  // of the input, where the job goes on in spite of it
};

std::string PiecePath(const Job& job, int64_t piece);

// CRC-32 and size of a file in `folder`. Throws Error.
PieceFile ReadPieceFile(const std::string& folder, const std::string& name);

// What a piece gave, if it is there and every file has its size. `trouble` says what is wrong with one that is there.
std::optional<PieceResult> FindPiece(const Job& job, int64_t piece, std::string& trouble);
// The same, and every checksum is right: everything is read.
std::optional<PieceResult> VerifyPiece(const Job& job, int64_t piece, std::string& trouble);

class PieceFolder {
 public:
  // Throws Error.
  PieceFolder(const Job& job, int64_t piece);
  // What was not committed leaves nothing behind.
  ~PieceFolder();
  PieceFolder(const PieceFolder&) = delete;
  PieceFolder& operator=(const PieceFolder&) = delete;

  const std::string& Path() const { return part_; }
  // Everything in the folder becomes the result, which gets its files from there, and the folder its name. A damaged
  // folder that has the name gives way. False if another worker was first. Throws Error.
  bool Commit(PieceResult result);

 private:
  const Job& job_;
  int64_t piece_;
  std::string part_;
};

// The last failure of a piece, for whoever looks at the job. Never throws: it comes beside another failure.
void NoteFailure(const Job& job, int64_t piece, const std::string& line) noexcept;
void ForgetFailure(const Job& job, int64_t piece) noexcept;
// Empty if there is none.
std::string LastFailure(const Job& job, int64_t piece);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_PIECE_FOLDER_H_
