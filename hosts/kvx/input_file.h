// A file or pipe of the user's, opened once.
#ifndef KVX_HOSTS_KVX_INPUT_FILE_H_
#define KVX_HOSTS_KVX_INPUT_FILE_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kvx {

// Looking at the start takes nothing away from who reads it next: pipes can be looked at too.
class InputFile {
 public:
  // "-" is standard input. Refuses folders and devices, and a pipe that nobody opens for writing within seconds. Throws
  // Error.
  explicit InputFile(const std::string& path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& Name() const { return name_; }
  // What the file is called on disk; empty for standard input.
  const std::string& Path() const { return path_; }

  // The first `count` bytes, fewer if there are no more. Only before anything was read.
  std::string_view Peek(size_t count);
  // Up to `count` bytes; 0 at the end, or once a stop was asked for. Throws Error.
  size_t Read(void* bytes, size_t count);
  // All the rest. Throws Error if that is more than `limit`.
  std::string ReadAll(size_t limit);

  // For readers that must go back: a pipe is read to its end into a file of its own that nobody else sees. Throws
  // Error.
  void MakeSeekable();

  // The size of a plain file; nothing for a pipe.
  std::optional<int64_t> Size() const { return size_; }
  // Only where there is a size.
  void Seek(int64_t position);
  int64_t Position() const { return position_; }

  // Called by another thread: from now on there is nothing more to read.
  void Abandon() { abandoned_ = true; }

 private:
  size_t ReadSystem(void* bytes, size_t count);
  void AwaitWriter();

  std::string path_;
  std::string name_;
  int file_ = -1;
  bool owned_ = true;
  std::optional<int64_t> size_;
  std::string head_;  // read from the system, not yet by the user
  int64_t position_ = 0;
  std::atomic<bool> abandoned_{false};
};

// Anything larger is no picture and no recipe.
inline constexpr size_t kLargestSmallFile = size_t{1} << 30;

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_INPUT_FILE_H_
