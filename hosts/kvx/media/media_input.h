// A file or pipe that the media libraries read.
#ifndef KVX_HOSTS_KVX_MEDIA_MEDIA_INPUT_H_
#define KVX_HOSTS_KVX_MEDIA_MEDIA_INPUT_H_

#include <exception>
#include <memory>
#include <string>

#include "hosts/kvx/input_file.h"
#include "hosts/kvx/media/libav.h"

namespace kvx {

// An opened container. What was looked at before of the file is not lost to it.
class MediaInput {
 public:
  // Throws Error if nothing in the file is known.
  explicit MediaInput(std::unique_ptr<InputFile> file);
  ~MediaInput();
  MediaInput(const MediaInput&) = delete;
  MediaInput& operator=(const MediaInput&) = delete;

  AVFormatContext* Get() const { return container_; }
  const InputFile& File() const { return *file_; }
  void Abandon() { file_->Abandon(); }

 private:
  static int Read(void* self, uint8_t* bytes, int count);
  static int64_t Seek(void* self, int64_t offset, int whence);

  std::unique_ptr<InputFile> file_;
  AVIOContext* stream_ = nullptr;
  AVFormatContext* container_ = nullptr;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_MEDIA_INPUT_H_
