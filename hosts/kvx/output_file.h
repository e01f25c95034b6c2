// A file that appears under its name only when it is whole.
#ifndef KVX_HOSTS_KVX_OUTPUT_FILE_H_
#define KVX_HOSTS_KVX_OUTPUT_FILE_H_

#include <memory>
#include <string>
#include <string_view>

#include "hosts/kvx/signals.h"

namespace kvx {

// Throws a usage error if there is such a file and `overwrite` does not allow to replace it, or if what is there is no
// plain file.
void CheckReplaceable(const std::string& path, bool overwrite);

class OutputFile {
 public:
  // Makes an empty file under a name of its own in the same folder. Throws Error: the cause is told.
  OutputFile(const std::string& path, bool overwrite);
  // What was not committed leaves nothing behind.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Where the bytes go until then, for whoever writes them by name.
  const std::string& TemporaryPath() const { return temporary_; }
  void Write(std::string_view bytes);

  // Gives the file its name. Throws Error; then nothing is lost that was there before.
  void Commit();
  // Gives what was written so far a free name with this mark in it ("clip.partial.mp4"), and returns it.
  std::string CommitBeside(const std::string& mark);

 private:
  void Close();

  std::string path_;   // as the user wrote it
  std::string final_;  // links followed
  std::string temporary_;
  bool overwrite_;
  int file_ = -1;
  std::unique_ptr<DoomedFile> doomed_;
};

// Writes a whole file in this way.
void WriteWholeFile(const std::string& path, std::string_view bytes, bool overwrite);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_OUTPUT_FILE_H_
