// What a container can hold.
#ifndef KVX_HOSTS_KVX_MEDIA_CONTAINER_FIT_H_
#define KVX_HOSTS_KVX_MEDIA_CONTAINER_FIT_H_

#include <string>

#include "hosts/kvx/media/libav.h"

namespace kvx {

// Found out by trying: a header with this stream alone is written into memory. `reason` says why not, if it is known.
bool ContainerTakes(const AVOutputFormat& container, const AVCodecParameters& stream, AVRational timeBase,
                    std::string& reason);

// What it keeps of what is said about a file and its streams.
struct ContainerKeeps {
  bool tags = false;          // of the file: title, time of creation
  bool languages = false;     // of streams
  bool titles = false;        // of streams
  bool dispositions = false;  // of streams: default, forced
  bool chapters = false;
  bool timecode = false;
};
ContainerKeeps KeepsOf(const AVOutputFormat& container);

// mp4, mov and their kin.
bool IsMovFamily(const AVOutputFormat& container);

// The encoder of sound, or of subtitles as text, that is usual for the container; null if there is none.
const AVCodec* UsualAudioEncoder(const AVOutputFormat& container);
const AVCodec* UsualSubtitleEncoder(const AVOutputFormat& container);

// The one rate of sound that it holds; 0 if it holds several.
int OnlySampleRate(const AVOutputFormat& container);

// True for subtitles that are text, not pictures.
bool IsTextSubtitle(AVCodecID id);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_CONTAINER_FIT_H_
