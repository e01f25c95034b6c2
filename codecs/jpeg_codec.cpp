#include <turbojpeg.h>

#include <memory>

#include "codecs/codec_impl.h"

namespace kvx {

namespace {

struct HandleCloser {
  void operator()(void* handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

// Stray bytes between markers do no harm to the picture; every other warning means that part of it is missing.
bool IsHarmless(tjhandle handle) {
  return tjGetErrorCode(handle) == TJERR_WARNING &&
         std::string_view(tjGetErrorStr2(handle)).find("extraneous bytes") != std::string_view::npos;
}

// Every block of 8 by 8 pixels costs at least a bit, unless it is coded arithmetically. So a small file with a huge
// claim is known before the claim costs memory.
bool CanHold(std::string_view bytes, int64_t pixels) {
  const auto has = [bytes](std::string_view marker) { return bytes.find(marker) != std::string_view::npos; };
  return pixels / (64 * 8) <= static_cast<int64_t>(bytes.size()) || has("\xFF\xC9") || has("\xFF\xCA");
}

}  // namespace

bool DecodeJpeg(std::string_view bytes, Picture& picture, std::string& error) {
  const Handle handle(tjInitDecompress());
  if (!handle) {
    error = "out of memory";
    return false;
  }
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto size = static_cast<unsigned long>(bytes.size());
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colorSpace = 0;
  if (tjDecompressHeader3(handle.get(), data, size, &width, &height, &subsampling, &colorSpace) != 0 &&
      !IsHarmless(handle.get())) {
    error = std::string("broken JPEG: ") + tjGetErrorStr2(handle.get());
    return false;
  }
  if (colorSpace == TJCS_CMYK || colorSpace == TJCS_YCCK) {
    error = "a CMYK JPEG, which is not supported";
    return false;
  }
  if (!CheckPictureSize(width, height, error)) return false;
  if (!CanHold(bytes, int64_t{width} * height)) {
    error = "broken JPEG: the file is cut short";
    return false;
  }
  picture = Picture(width, height);
  if (tjDecompress2(handle.get(), data, size, picture.pixels.data(), width, picture.Step(), height, TJPF_BGRA,
                    TJFLAG_LIMITSCANS) != 0 &&
      !IsHarmless(handle.get())) {
    error = std::string("broken JPEG: ") + tjGetErrorStr2(handle.get());
    return false;
  }
  return true;
}

std::string EncodeJpeg(const Picture& picture, int quality) {
  const Handle handle(tjInitCompress());
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  std::string out;
  if (handle && tjCompress2(handle.get(), picture.pixels.data(), picture.width, picture.Step(), picture.height,
                            TJPF_BGRA, &bytes, &size, TJSAMP_444, quality, 0) == 0) {
    out.assign(reinterpret_cast<char*>(bytes), size);
  }
  tjFree(bytes);
  return out;
}

}  // namespace kvx
