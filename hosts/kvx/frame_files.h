// Where frames come from and where they go: the demo, picture files, numbered sequences.
#ifndef KVX_HOSTS_KVX_FRAME_FILES_H_
#define KVX_HOSTS_KVX_FRAME_FILES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "codecs/picture.h"

namespace kvx {

struct FrameSize {
  int32_t width;
  int32_t height;
};

// "1280x720". Throws UsageError for anything else and for sizes that are not from 1 to 16384.
FrameSize ParseFrameSize(const std::string& text);

class FrameSource {
 public:
  virtual ~FrameSource() = default;
  // Frames that the source has by itself; nothing if it can give any number.
  virtual std::optional<int64_t> Count() const = 0;
  // Throws Error if the frame cannot be read.
  virtual Picture Read(int64_t frame) = 0;
};

// `input` is "demo", a PNG or JPEG file, or a pattern such as in_%04d.png, whose numbers start wherever the files do.
// `demoSize` is for the demo only. Throws Error if there is nothing to read.
std::unique_ptr<FrameSource> OpenFrames(const std::string& input, FrameSize demoSize);

// True for a name with a frame number, such as out_%04d.png.
bool IsSequence(const std::string& path);

// The name of one frame of a sequence; any other name comes back as it is.
std::string SequenceName(const std::string& pattern, int64_t number);

// Reads one PNG or JPEG file. Throws Error.
Picture ReadPicture(const std::string& path);

// True if the file begins as a PNG or JPEG does, or cannot be anything else (it is empty or unreadable).
bool IsPictureFile(const std::string& path);

// Writes PNG or JPEG by the name's ending; the file appears under its name only when it is whole. Throws Error.
void WritePicture(const Picture& picture, const std::string& path);

// `picture` fitted into a transparent frame of this size, centred.
Picture PadPicture(const Picture& picture, FrameSize size);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FRAME_FILES_H_
