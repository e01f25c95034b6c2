#include <png.h>
#include <zlib.h>

#include <csetjmp>
#include <cstring>
#include <map>
#include <vector>

#include "codecs/picture.h"
#include "codecs/png_sink.h"

namespace kvx {

namespace {

constexpr size_t kLargestPalette = 256;

// What says everything of the picture. Samples are in PNG's order, rows one after another.
struct Reduced {
  int colorType = PNG_COLOR_TYPE_RGB_ALPHA;
  int channels = 4;
  std::vector<png_color> palette;
  std::vector<png_byte> paletteAlpha;
  std::vector<png_byte> samples;
};

// True if at most 256 colours, alpha included, make up the picture.
bool ReduceToPalette(const Picture& picture, Reduced& reduced) {
  std::map<uint32_t, png_byte> indices;
  std::vector<png_byte> samples;
  samples.reserve(picture.pixels.size() / 4);
  for (size_t i = 0; i < picture.pixels.size(); i += 4) {
    uint32_t color;
    std::memcpy(&color, &picture.pixels[i], 4);
    const auto [at, isNew] = indices.try_emplace(color, static_cast<png_byte>(indices.size()));
    if (isNew) {
      if (indices.size() > kLargestPalette) return false;
      const uint8_t* bgra = &picture.pixels[i];
      reduced.palette.push_back({bgra[2], bgra[1], bgra[0]});
      reduced.paletteAlpha.push_back(bgra[3]);
    }
    samples.push_back(at->second);
  }
  reduced.colorType = PNG_COLOR_TYPE_PALETTE;
  reduced.channels = 1;
  reduced.samples = std::move(samples);
  return true;
}

Reduced Reduce(const Picture& picture) {
  bool opaque = true;
  bool grey = true;
  for (size_t i = 0; i < picture.pixels.size(); i += 4) {
    const uint8_t* bgra = &picture.pixels[i];
    opaque = opaque && bgra[3] == 255;
    grey = grey && bgra[0] == bgra[1] && bgra[1] == bgra[2];
  }
  Reduced reduced;
  // Neighbours of a grey picture are alike, which indices of a palette are not.
  if (!(grey && opaque) && ReduceToPalette(picture, reduced)) return reduced;
  reduced = Reduced();
  reduced.colorType = (grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB) | (opaque ? 0 : PNG_COLOR_MASK_ALPHA);
  reduced.channels = (grey ? 1 : 3) + (opaque ? 0 : 1);
  for (size_t i = 0; i < picture.pixels.size(); i += 4) {
    const uint8_t* bgra = &picture.pixels[i];
    reduced.samples.push_back(bgra[2]);
    if (!grey) reduced.samples.insert(reduced.samples.end(), {bgra[1], bgra[0]});
    if (!opaque) reduced.samples.push_back(bgra[3]);
  }
  return reduced;
}

[[noreturn]] void OnError(png_structp png, png_const_charp) {
  png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

// Everything between setjmp and a possible longjmp; objects with destructors live in the caller.
bool WriteAll(png_structp png, png_infop info, const Picture& picture, const Reduced& reduced, int filters, int level,
              std::string& out) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_write_fn(png, &out, AppendPngBytes, FlushPngBytes);
  png_set_user_limits(png, kMaxPictureSide, kMaxPictureSide);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height), 8,
               reduced.colorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  const bool palette = reduced.colorType == PNG_COLOR_TYPE_PALETTE;
  if (palette) {
    const auto count = static_cast<int>(reduced.palette.size());
    png_set_PLTE(png, info, reduced.palette.data(), count);
    png_set_tRNS(png, info, reduced.paletteAlpha.data(), count, nullptr);
  }
  png_set_compression_level(png, level);
  png_set_compression_mem_level(png, 9);
  png_set_compression_strategy(png, Z_DEFAULT_STRATEGY);
  png_set_filter(png, 0, filters);
  png_write_info(png, info);
  const size_t step = static_cast<size_t>(picture.width) * static_cast<size_t>(reduced.channels);
  for (size_t y = 0; y < static_cast<size_t>(picture.height); ++y) png_write_row(png, &reduced.samples[y * step]);
  png_write_end(png, nullptr);
  return true;
}

// Empty if there is no memory for it.
std::string Write(const Picture& picture, const Reduced& reduced, int filters, int level) {
  std::string out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!info || !WriteAll(png, info, picture, reduced, filters, level, out)) out.clear();
  png_destroy_write_struct(&png, &info);
  return out;
}

}  // namespace

std::string EncodeSmallPng(const Picture& picture) {
  if (picture.width <= 0 || picture.height <= 0) return {};
  const Reduced reduced = Reduce(picture);
  // A quick trial tells which filter serves this picture.
  int best = PNG_FILTER_NONE;
  size_t smallest = 0;
  for (const int filters :
       {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP, PNG_FILTER_AVG, PNG_FILTER_PAETH, PNG_ALL_FILTERS}) {
    const size_t size = Write(picture, reduced, filters, 2).size();
    if (size == 0 || (smallest != 0 && size >= smallest)) continue;
    smallest = size;
    best = filters;
  }
  return Write(picture, reduced, best, 9);
}

}  // namespace kvx
