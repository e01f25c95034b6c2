#include "hosts/mlt/effect_renderer.h"

#include <optional>
#include <string_view>

#include "hostkit/pixels.h"
#include "hosts/mlt/create_effect.h"

namespace kvx {

namespace {

// An object and the picture that it made last.
struct Worker {
  explicit Worker(const EffectInfo& effect) : object(CreateEffect(effect)) {}

  void Render(ConstImageView image, FramePlace place, const FrameValues& values) {
    if (result.width != image.width || result.height != image.height) result = Picture(image.width, image.height);
    object->Render(image, {result.pixels.data(), result.width, result.height, result.Step()}, place, values);
  }

  std::unique_ptr<Effect> object;
  Picture result;
};

// The image with its bytes in the plug-in's order as long as this lives.
class Borrowed {
 public:
  explicit Borrowed(RgbaImage image) : image_(image) { Swap(image_.pixels); }
  ~Borrowed() {
    if (!replaced_) Swap(image_.pixels);
  }
  Borrowed(const Borrowed&) = delete;
  Borrowed& operator=(const Borrowed&) = delete;

  ConstImageView View() const { return {image_.pixels, image_.width, image_.height, image_.width * 4}; }
  size_t Hash() const {
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(image_.pixels), Pixels() * 4});
  }
  void Replace(const Picture& picture) {
    Swap(picture.pixels.data());
    replaced_ = true;
  }

 private:
  size_t Pixels() const { return static_cast<size_t>(image_.width) * static_cast<size_t>(image_.height); }
  void Swap(const uint8_t* from) { SwapRedBlue(from, image_.pixels, Pixels()); }

  RgbaImage image_;
  bool replaced_ = false;
};

// Effects that keep nothing from frame to frame: any frame on any object, as many objects as threads render at once.
class PooledRenderer : public EffectRenderer {
 public:
  explicit PooledRenderer(const EffectInfo& effect) : effect_(effect) {}

  void Render(RgbaImage image, FramePlace place, const ValuesAt& valuesAt) override {
    const FrameValues values = valuesAt(place.frame);
    std::unique_ptr<Worker> worker = Take();
    Borrowed borrowed(image);
    worker->Render(borrowed.View(), place, values);
    borrowed.Replace(worker->result);
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(worker));
  }

 private:
  std::unique_ptr<Worker> Take() {
    {
      const std::lock_guard lock(mutex_);
      if (!idle_.empty()) {
        std::unique_ptr<Worker> worker = std::move(idle_.back());
        idle_.pop_back();
        return worker;
      }
    }
    return std::make_unique<Worker>(effect_);
  }

  const EffectInfo& effect_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Worker>> idle_;
};

// Effects that build on the frames before: one object, which sees them in order.
class OrderedRenderer : public EffectRenderer {
 public:
  explicit OrderedRenderer(const EffectInfo& effect) : effect_(effect) {}

  void Render(RgbaImage image, FramePlace place, const ValuesAt& valuesAt) override {
    const std::lock_guard lock(mutex_);
    FrameValues values = valuesAt(place.frame);
    Borrowed borrowed(image);
    Asked asked{place, image.width, image.height, borrowed.Hash(), std::move(values.numbers), std::move(values.texts)};
    if (asked != last_) {
      const bool goesOn = worker_ && last_ && asked.width == last_->width && asked.height == last_->height &&
                          place.totalFrames == last_->place.totalFrames && place.frame > last_->place.frame &&
                          place.frame - last_->place.frame - 1 <= kMostFramesMadeUp;
      const int64_t first = goesOn ? last_->place.frame + 1 : place.frame;
      last_.reset();
      if (!goesOn) worker_ = std::make_unique<Worker>(effect_);
      for (int64_t frame = first; frame < place.frame; ++frame) {
        worker_->Render(borrowed.View(), {frame, place.totalFrames}, valuesAt(frame));
      }
      worker_->Render(borrowed.View(), place, {asked.numbers, asked.texts});
      last_ = std::move(asked);
    }
    borrowed.Replace(worker_->result);
  }

 private:
  // Whoever asks for the same again, say for a paused frame, gets the same picture.
  struct Asked {
    FramePlace place;
    int width;
    int height;
    size_t hash;
    decltype(FrameValues::numbers) numbers;
    decltype(FrameValues::texts) texts;

    bool operator==(const Asked& other) const {
      return place.frame == other.place.frame && place.totalFrames == other.place.totalFrames && width == other.width &&
             height == other.height && hash == other.hash && numbers == other.numbers && texts == other.texts;
    }
  };

  const EffectInfo& effect_;
  std::mutex mutex_;
  std::unique_ptr<Worker> worker_;
  std::optional<Asked> last_;
};

}  // namespace

std::unique_ptr<EffectRenderer> MakeRenderer(const EffectInfo& effect) {
  if (effect.ordered) return std::make_unique<OrderedRenderer>(effect);
  return std::make_unique<PooledRenderer>(effect);
}

}  // namespace kvx
