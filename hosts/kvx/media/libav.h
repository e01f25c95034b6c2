// Objects of the media libraries, owned; their failures as Error.
#ifndef KVX_HOSTS_KVX_MEDIA_LIBAV_H_
#define KVX_HOSTS_KVX_MEDIA_LIBAV_H_

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace kvx {

struct PacketDeleter {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct AvFrameDeleter {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct CodecDeleter {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct ParametersDeleter {
  void operator()(AVCodecParameters* p) const { avcodec_parameters_free(&p); }
};
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using AvFramePtr = std::unique_ptr<AVFrame, AvFrameDeleter>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecDeleter>;
using ParametersPtr = std::unique_ptr<AVCodecParameters, ParametersDeleter>;

// Keys and values.
class Dictionary {
 public:
  Dictionary() = default;
  explicit Dictionary(const AVDictionary* from) { av_dict_copy(&dictionary_, from, 0); }
  Dictionary(const Dictionary& other) : Dictionary(other.dictionary_) {}
  Dictionary(Dictionary&& other) noexcept : dictionary_(std::exchange(other.dictionary_, nullptr)) {}
  Dictionary& operator=(Dictionary other) noexcept {
    std::swap(dictionary_, other.dictionary_);
    return *this;
  }
  ~Dictionary() { av_dict_free(&dictionary_); }

  // Empty if it is not there.
  std::string Get(const char* key) const {
    const AVDictionaryEntry* entry = av_dict_get(dictionary_, key, nullptr, 0);
    return entry ? entry->value : "";
  }
  void Set(const char* key, const std::string& value) { av_dict_set(&dictionary_, key, value.c_str(), 0); }
  void CopyTo(AVDictionary** to) const { av_dict_copy(to, dictionary_, 0); }
  AVDictionary** Raw() { return &dictionary_; }

 private:
  AVDictionary* dictionary_ = nullptr;
};

// From now on the libraries print nothing, or everything if `verbose`. Their last complaint in this thread is kept.
void CatchLibraryLog(bool verbose);
bool LibrariesAreVerbose();
void ForgetComplaint();
// How often a decoder of video has complained so far, in any thread: some conceal damage and say so nowhere else.
int64_t VideoDecoderComplaints();
// ": what they said", or empty.
std::string LastComplaint();

// Returns `code`, or throws Error with `what` and the library's reason if it is one.
int CheckAv(int code, const std::string& what);
std::string AvErrorText(int code);

// Throws std::bad_alloc for null.
template <typename T>
T* CheckAlloc(T* object) {
  if (!object) throw std::bad_alloc();
  return object;
}

inline PacketPtr NewPacket() {
  return PacketPtr(CheckAlloc(av_packet_alloc()));
}
inline AvFramePtr NewAvFrame() {
  return AvFramePtr(CheckAlloc(av_frame_alloc()));
}

inline double Seconds(int64_t stamp, AVRational timeBase) {
  return static_cast<double>(stamp) * av_q2d(timeBase);
}

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_LIBAV_H_
