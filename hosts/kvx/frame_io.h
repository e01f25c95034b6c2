// Frames in order: where they come from and where they go.
#ifndef KVX_HOSTS_KVX_FRAME_IO_H_
#define KVX_HOSTS_KVX_FRAME_IO_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "codecs/picture.h"
#include "hosts/kvx/frame_files.h"

namespace kvx {

struct Frame {
  Picture picture;
  int64_t number = 0;     // from 0
  double seconds = 0;     // from the first frame
  int64_t timestamp = 0;  // in the clip's own time base, for a video
};

class FrameReader {
 public:
  virtual ~FrameReader() = default;
  // False at the end. Throws Error.
  virtual bool Read(Frame& frame) = 0;
  // Frames that will come, as far as that is known.
  virtual std::optional<int64_t> Count() const = 0;
};

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;  // what was not finished leaves no file under the final name
  virtual void Write(const Frame& frame) = 0;
  virtual void Finish() = 0;
};

struct InputOptions {
  std::string path;  // "demo", a picture, a sequence, a video, or "-" for standard input
  FrameSize demoSize{1280, 720};
  std::optional<FrameSize> rawSize;  // standard input is raw BGRA of this size
  std::optional<int64_t> frames;     // at most so many; for demo and pictures, exactly
  double fps = 25;                   // of what has no rate of its own
  std::optional<double> start;       // seconds
  std::optional<double> end;
};

struct OutputOptions {
  std::string path;      // a picture, a sequence, a video, or "-" for standard output
  bool rawPipe = false;  // standard output gets raw BGRA instead of Y4M
  std::string codec;     // encoder of a video; empty for the usual one of the file's kind
  std::optional<int> crf;
  bool overwrite = false;
};

std::unique_ptr<FrameReader> OpenReader(const InputOptions& options);

// `reader` gives a video its rate, colour tags, audio and metadata where it has them. The first frame fixes the size.
std::unique_ptr<FrameWriter> OpenWriter(const OutputOptions& options, const FrameReader& reader, double fps);

// True for names that are written as a video.
bool IsVideoName(const std::string& path);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FRAME_IO_H_
