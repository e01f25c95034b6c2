// The studio's input, at any frame.
#ifndef KVX_HOSTS_KVX_STUDIO_CLIP_H_
#define KVX_HOSTS_KVX_STUDIO_CLIP_H_

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "hosts/kvx/frame_io.h"

namespace kvx {

using SharedFrame = std::shared_ptr<const Frame>;

// Any thread may ask; one at a time is read. The frames last used are kept, as far as a limit of memory allows.
class Clip {
 public:
  // "demo", a picture, a sequence or a video. Throws Error.
  explicit Clip(std::string input);

  const std::string& Input() const { return input_; }
  FrameSize Size() const { return size_; }
  double Fps() const { return fps_; }
  // A picture or the demo, which last as long as one likes.
  bool IsEndless() const { return endless_; }
  // Frames in the clip as far as known, 0 if it is endless.
  int64_t Count() const;
  // The folder that results go to: the input's, or the working directory for the demo.
  std::string Folder() const;

  // Beyond the end the last frame. Throws Error if it cannot be read or `stopped` says so.
  SharedFrame At(int64_t frame, const std::function<bool()>& stopped = {});
  // The same, scaled to this size; with `pad` fitted into it, else stretched.
  SharedFrame Scaled(int64_t frame, FrameSize size, bool pad, const std::function<bool()>& stopped = {});

 private:
  struct Entry {
    int64_t frame;
    FrameSize size;
    bool pad;
    SharedFrame data;
  };
  SharedFrame Find(int64_t frame, FrameSize size, bool pad);
  void Keep(Entry entry);
  void Open(int64_t frame);

  std::string input_;
  bool demo_;
  bool still_;
  bool endless_;
  FrameSize size_{};
  double fps_ = 25;
  mutable std::mutex mutex_;  // over all below
  std::unique_ptr<FrameReader> reader_;
  int64_t next_ = 0;   // what the reader gives next
  double offset_ = 0;  // seconds before its first frame
  int64_t count_ = 0;
  std::list<Entry> kept_;  // last used first
  size_t keptBytes_ = 0;
};

// `picture` scaled to `size`.
Picture ScalePicture(const Picture& picture, FrameSize size);

// A rectangle of `picture`, which must hold it.
Picture CropPicture(const Picture& picture, int32_t x, int32_t y, FrameSize size);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_CLIP_H_
