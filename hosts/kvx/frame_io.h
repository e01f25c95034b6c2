// Frames in order: where they come from and where they go.
#ifndef KVX_HOSTS_KVX_FRAME_IO_H_
#define KVX_HOSTS_KVX_FRAME_IO_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "codecs/picture.h"
#include "hosts/kvx/frame_files.h"

namespace kvx {

struct SourceMedia;

struct Frame {
  Picture picture;
  std::shared_ptr<const PictureMetadata> metadata;  // of a picture file; may be null
  int64_t number = 0;                               // from 0 for the first frame that is read
  double seconds = 0;                               // from the first frame that is read
  int64_t place = 0;                                // counted from the beginning of the input
  double clipSeconds = 0;                           // from the beginning of the input
  int64_t fileNumber = 0;                           // what a sequence calls it
  int64_t timestamp = 0;  // of a video, from the start of its result, in the video's time base; else `number`
  int64_t duration = 0;   // likewise; 0 if unknown
};

class FrameReader {
 public:
  virtual ~FrameReader() = default;
  // False at the end. Throws Error.
  virtual bool Read(Frame& frame) = 0;
  // Frames that will come, as far as that is known.
  virtual std::optional<int64_t> Count() const = 0;
  // Called by another thread: ends a Read that waits for a pipe, and all later ones.
  virtual void Abandon() {}
  // The place in the input of the first frame, as far as it is known before it is read.
  virtual int64_t FirstPlace() const { return 0; }
  // Frames per second; 0 if unknown.
  virtual double Rate() const { return 0; }
  // The files that are read.
  virtual std::vector<std::string> Files() const { return {}; }
  // The first and the last number that a sequence made of the frames would have; nothing if that is not known.
  virtual std::optional<std::pair<int64_t, int64_t>> Numbers() const { return std::nullopt; }
  // Asked after the last frame: a line for each thing that was damaged or missing.
  virtual std::vector<std::string> Damage() const { return {}; }
  // What a video has beside its frames; null for anything else.
  virtual const SourceMedia* Media() const { return nullptr; }
};

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;  // what was not finished leaves no file under the final name
  virtual void Write(const Frame& frame) = 0;
  // After the last frame: the file gets its name.
  virtual void Finish() = 0;
  // Instead of Finish, when the run was interrupted. Says what is kept: a sentence.
  virtual std::string FinishPartial() { return "nothing was written"; }
};

// A part of the frames that the other options choose, which is rendered by itself and looks as it does in the whole.
// The stamps count in the time base of a video, and say nothing for anything else.
struct FrameRange {
  int64_t first = 0;       // counted from the first frame that is chosen
  int64_t count = 0;       // all of them must be there
  int64_t clipStamp = 0;   // of the first frame that is chosen
  int64_t stamp = 0;       // of frame `first`
  int64_t keyStamp = 0;    // of the key frame that decoding begins with: when it is shown
  int64_t keyDecoded = 0;  // and when it is decoded
  FrameSize size{0, 0};    // of the first frame that is chosen
};

struct InputOptions {
  std::string path;  // "demo", a picture, a sequence, a video, or "-" for standard input
  FrameSize demoSize{1280, 720};
  std::optional<FrameSize> rawSize;  // standard input is raw BGRA of this size
  std::optional<int64_t> frames;     // at most so many; for demo and pictures, exactly
  double fps = 25;                   // of what has no rate of its own
  std::optional<double> start;       // seconds
  std::optional<double> end;
  bool literal = false;  // a % in the name is no number
  Gaps gaps = Gaps::kClose;
  bool deinterlace = false;
  std::optional<FrameRange> range;
};

struct OutputOptions {
  std::string path;      // a picture, a sequence, a video, or "-" for standard output
  bool rawPipe = false;  // standard output gets raw BGRA instead of Y4M
  std::string codec;     // encoder of a video; empty for the usual one of the file's kind
  std::optional<int> crf;
  std::string preset;
  std::string pixelFormat;
  std::optional<int64_t> bitrate;  // bits per second
  int encoderThreads = 0;          // of a video; 0 for as many as there are cores. Bytes may depend on it.
  bool audio = true;               // streams beside the frames, where the input has them
  bool subtitles = true;
  bool overwrite = false;
  bool literal = false;
  std::optional<int64_t> startNumber;  // of a sequence; else the input's numbers
};

std::unique_ptr<FrameReader> OpenReader(const InputOptions& options);

// `reader` gives a video its rate, colour tags, audio and metadata where it has them. The first frame fixes the size.
std::unique_ptr<FrameWriter> OpenWriter(const OutputOptions& options, const FrameReader& reader, double fps);

// What a name stands for.
bool IsSequenceName(const InputOptions& options);
bool IsSequenceName(const OutputOptions& options);
bool IsVideoName(const std::string& path);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FRAME_IO_H_
