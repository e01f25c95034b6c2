// Frames that can be read at any place: the demo, a picture, a numbered sequence.
#ifndef KVX_HOSTS_KVX_FRAME_FILES_H_
#define KVX_HOSTS_KVX_FRAME_FILES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "codecs/picture.h"
#include "hosts/kvx/picture_file.h"
#include "hosts/kvx/sequence.h"

namespace kvx {

struct FrameSize {
  int32_t width;
  int32_t height;
};

// "1280x720". Throws UsageError for anything else and for sizes that are not from 1 to 16384.
FrameSize ParseFrameSize(const std::string& text);

// What happens where a sequence lacks numbers.
enum class Gaps { kClose, kHold, kRefuse };

class FrameSource {
 public:
  virtual ~FrameSource() = default;
  // Frames that the source has by itself; nothing if it can give any number.
  virtual std::optional<int64_t> Count() const = 0;
  // Throws Error if the frame cannot be read.
  virtual LoadedPicture Read(int64_t frame) = 0;
  // The number that the frame's file has; the frame's own where files have none.
  virtual int64_t Number(int64_t frame) const { return frame; }
  virtual std::vector<std::string> Files() const { return {}; }
};

// "demo" at this size.
std::unique_ptr<FrameSource> OpenDemo(FrameSize size);
std::unique_ptr<FrameSource> OpenStill(InputFile& file);
// The numbers start wherever the files do. Throws Error if there are none.
std::unique_ptr<FrameSource> OpenSequence(const std::string& pattern, Gaps gaps);

// True if the file begins as a still PNG or JPEG does, or cannot be anything else (it is empty).
bool IsPictureFile(InputFile& file);
bool IsPictureFile(const std::string& path);

// `picture` fitted into a transparent frame of this size, centred.
Picture PadPicture(const Picture& picture, FrameSize size);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FRAME_FILES_H_
