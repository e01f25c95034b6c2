// Videos through libavformat, libavcodec and libswscale.
#ifndef KVX_HOSTS_KVX_VIDEO_H_
#define KVX_HOSTS_KVX_VIDEO_H_

#include <memory>
#include <string>

#include "hosts/kvx/frame_io.h"

namespace kvx {

// Decodes the best video stream of any file that the libraries read, or of standard input. Frames come upright
// (rotation done) and in full-range BGRA by the stream's own matrix and range.
std::unique_ptr<FrameReader> OpenVideo(const InputOptions& options);

// Encodes by the ending of the name. From a video's reader it takes time stamps, colour tags, audio, subtitles and
// metadata. The file gets its name when it is whole.
std::unique_ptr<FrameWriter> CreateVideo(const OutputOptions& options, const FrameReader& reader, double fps);

// Y4M on standard output.
std::unique_ptr<FrameWriter> CreateY4mWriter(const FrameReader& reader, double fps);

// True if the ending names a container that video can be written to.
bool IsVideoContainer(const std::string& path);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_VIDEO_H_
