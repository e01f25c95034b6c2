// Videos through the media libraries: the only header of this folder that others need.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_H_

#include <memory>
#include <string>
#include <vector>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/input_file.h"

namespace kvx {

// Lets the libraries print what they have to say.
void SetMediaVerbose(bool verbose);

// Decodes the best video stream of any file or pipe that the libraries read. Frames come upright (rotation done) and in
// full-range BGRA by the stream's own matrix and range.
std::unique_ptr<FrameReader> OpenVideo(std::unique_ptr<InputFile> file, const InputOptions& options);

// Encodes by the ending of the name. From a video's reader it takes time stamps, colour tags, the other streams and
// metadata. The file gets its name when it is whole.
std::unique_ptr<FrameWriter> CreateVideo(const OutputOptions& options, const FrameReader& reader, double fps);

// Y4M on standard output.
std::unique_ptr<FrameWriter> CreateY4mWriter(const FrameReader& reader, double fps);

// True if the ending names a container that video can be written to.
bool IsVideoContainer(const std::string& path);

// Names of the encoders of video that this build of the libraries has.
std::vector<std::string> VideoEncoders();

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_H_
