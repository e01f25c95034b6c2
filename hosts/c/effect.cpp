// Effects with their values, and rendering.
#include <fmt/format.h>

#include <cmath>
#include <map>
#include <optional>
#include <string_view>

#include "hostkit/param_track.h"
#include "hostkit/pixels.h"
#include "hostkit/text.h"
#include "hosts/c/handles.h"

struct kvx_effect {
  kvx_effect(const kvx::SharedPlugin& from, const kvx::EffectInfo& effect)
      : plugin(from), info(effect), tracks(effect, {}, 100), object(plugin->Create(effect)) {}

  kvx::SharedPlugin plugin;
  const kvx::EffectInfo& info;
  std::map<std::string, std::string> settings;  // parameter's name -> NAME=VALUE
  double opacity = 100;
  kvx::ParamTracks tracks;  // of the settings
  kvx::Picture input;       // the plug-in's form of images in another
  kvx::Picture output;
  std::mutex used;                      // one thread at a time: two are told, and harm nothing
  std::unique_ptr<kvx::Effect> object;  // ends before the plug-in
};

namespace kvx {

namespace {

constexpr std::string_view kOpacity = "opacity";

int32_t PixelSize(int32_t layout) {
  return layout == KVX_BGRA || layout == KVX_RGBA ? 4 : 3;
}

kvx_image TakeImage(const kvx_image* given, const char* which) {
  if (!given) throw UsageError(fmt::format("the {} is null", which));
  const kvx_image image = TakeStruct(given, {});
  if (given->size < sizeof(kvx_image)) throw UsageError(fmt::format("the {}'s size is not set", which));
  if (!image.data) throw UsageError(fmt::format("the {} has no pixels", which));
  if (image.layout < KVX_BGRA || image.layout > KVX_RGB) {
    throw UsageError(fmt::format("the {} has an unknown layout, {}", which, image.layout));
  }
  if (image.width < 1 || image.height < 1 || image.width > kMaxPictureSide || image.height > kMaxPictureSide ||
      int64_t{image.width} * image.height > kMaxPicturePixels) {
    throw UsageError(fmt::format("the {} cannot be {} by {}: 1 to {} each, at most {} pixels", which, image.width,
                                 image.height, kMaxPictureSide, kMaxPicturePixels));
  }
  if (std::abs(int64_t{image.stride}) < int64_t{image.width} * PixelSize(image.layout)) {
    throw UsageError(
        fmt::format("the {}'s stride of {} bytes is too small for {} pixels", which, image.stride, image.width));
  }
  return image;
}

// Whether the effect can be given the image's own memory.
bool IsDirect(const kvx_image& image) {
  return image.layout == KVX_BGRA && image.stride > 0;
}

bool IsPacked(const kvx_image& image) {
  return image.stride == image.width * PixelSize(image.layout);
}

void Copy(const uint8_t* in, uint8_t* out, size_t pixels) {
  std::memcpy(out, in, pixels * 4);
}

// Rows of pixels to the plug-in's form and back, by layout.
using TurnRow = void (*)(const uint8_t* in, uint8_t* out, size_t pixels);
constexpr TurnRow kToBgra[] = {Copy, SwapRedBlue, BgrToBgra, RgbToBgra};
constexpr TurnRow kFromBgra[] = {Copy, SwapRedBlue, BgraToBgr, BgraToRgb};

// Calls `row` with each row's place in the image and in the picture and the number of pixels; once, if there are no
// gaps.
template <typename Row>
void ForRows(const kvx_image& image, Picture& picture, Row row) {
  if (IsPacked(image)) return row(image.data, picture.Row(0), picture.pixels.size() / 4);
  for (int32_t y = 0; y < image.height; ++y) {
    row(image.data + ptrdiff_t{y} * image.stride, picture.Row(y), static_cast<size_t>(image.width));
  }
}

void FromImage(const kvx_image& image, Picture& picture) {
  ForRows(image, picture, [turn = kToBgra[image.layout]](const uint8_t* row, uint8_t* pixels, size_t count) {
    turn(row, pixels, count);
  });
}

void ToImage(Picture& picture, const kvx_image& image) {
  ForRows(image, picture, [turn = kFromBgra[image.layout]](uint8_t* row, const uint8_t* pixels, size_t count) {
    turn(pixels, row, count);
  });
}

ImageView Scratch(Picture& picture, const kvx_image& like) {
  if (picture.width != like.width || picture.height != like.height) picture = Picture(like.width, like.height);
  return {picture.pixels.data(), picture.width, picture.height, picture.Step()};
}

std::unique_lock<std::mutex> Use(kvx_effect* effect) {
  if (!effect) throw UsageError("the effect is null");
  std::unique_lock lock(effect->used, std::try_to_lock);
  if (!lock) throw UsageError(effect->info.name + " is in use by another thread: create one for each");
  return lock;
}

int32_t Set(kvx_effect* effect, const char* name, const std::string& value) {
  if (!name) throw UsageError("the parameter's name is null");
  const auto lock = Use(effect);
  auto settings = effect->settings;
  double opacity = effect->opacity;
  if (Lower(name) == kOpacity) {
    opacity = ParseOpacity(value);
  } else {
    const ParamInfo& param = FindParam(effect->info, name);
    settings[param.name] = param.name + "=" + value;
  }
  std::vector<std::string> list;
  for (const auto& [key, setting] : settings) list.push_back(setting);
  effect->tracks = ParamTracks(effect->info, list, opacity);
  effect->settings = std::move(settings);
  effect->opacity = opacity;
  return KVX_OK;
}

}  // namespace

}  // namespace kvx

using namespace kvx;

int32_t kvx_create(kvx_library* library, const char* effect, kvx_effect** created) {
  return Guarded([&] {
    if (!library || !effect || !created) throw UsageError("the library, the effect's name or its place is null");
    *created = nullptr;
    *created = new kvx_effect(library->plugin, library->plugin->Effects().Find(effect));
    return KVX_OK;
  });
}

void kvx_destroy(kvx_effect* effect) {
  delete effect;
}

int32_t kvx_set_number(kvx_effect* effect, const char* name, double value) {
  return Guarded([&] { return Set(effect, name, fmt::format("{}", value)); });
}

int32_t kvx_set_text(kvx_effect* effect, const char* name, const char* value) {
  return Guarded([&] {
    if (!value) throw UsageError("the value is null");
    return Set(effect, name, value);
  });
}

int32_t kvx_render(kvx_effect* effect, const kvx_image* input, const kvx_image* output, const kvx_frame* frame) {
  return Guarded([&] {
    const auto lock = Use(effect);
    const kvx_image from = TakeImage(input, "input");
    const kvx_image to = TakeImage(output, "output");
    if (from.width != to.width || from.height != to.height) {
      throw UsageError(
          fmt::format("the input is {} by {}, the output {} by {}", from.width, from.height, to.width, to.height));
    }
    const kvx_frame place = TakeStruct(frame, {sizeof(kvx_frame), 0, 1, 0});
    ConstImageView source{from.data, from.width, from.height, from.stride};
    if (!IsDirect(from)) {
      const ImageView scratch = Scratch(effect->input, from);
      FromImage(from, effect->input);
      source = {scratch.data, scratch.width, scratch.height, scratch.stride};
    }
    // RGBA is rendered where it will stand and turned there.
    const bool turnInPlace = to.layout == KVX_RGBA && IsPacked(to);
    const bool direct = IsDirect(to) || turnInPlace;
    const ImageView target = direct ? ImageView{to.data, to.width, to.height, to.stride} : Scratch(effect->output, to);
    effect->object->Render(source, target, {place.frame, place.frames},
                           effect->tracks.At(place.frame, place.seconds * 1000));
    if (turnInPlace) SwapRedBlue(to.data, to.data, static_cast<size_t>(to.width) * static_cast<size_t>(to.height));
    if (!direct) ToImage(effect->output, to);
    return KVX_OK;
  });
}
