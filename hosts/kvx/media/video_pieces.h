// A clip that is rendered in pieces, by as many processes as there are: where it may be cut, the writer of one piece,
// and the file that is put together from all. Frames, stamps and everything beside the frames come out as from one run.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_PIECES_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_PIECES_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/kvx/frame_io.h"

namespace kvx {

// How many pieces are wanted. One of the two is 0.
struct CutWish {
  int64_t pieces = 0;
  int64_t framesPerPiece = 0;
};

// Where a piece begins. Stamps of a video count in its time base, those of the result in its encoder's.
struct Cut {
  int64_t frame = 0;  // counted from the first that is chosen
  int64_t stamp = 0;
  int64_t keyStamp = 0;
  int64_t keyDecoded = 0;
  int64_t resultStamp = 0;
};

struct ClipPlan {
  int64_t frames = 0;          // that are chosen; as far as it is known where the clip is one piece
  int64_t totalFrames = 0;     // what effects are told
  int64_t firstStamp = 0;      // of the first frame that is chosen: in the video,
  int64_t firstTimestamp = 0;  // and from the start of the result
  FrameSize size{0, 0};
  std::string pixelFormat;  // of the result, if it is a video
  std::vector<Cut> cuts;    // the first at frame 0
  std::string whole;        // why the clip is not cut, if it was to be
};

// Reads the packets of a video once. `reader` is that of the input, from which nothing was read. `render` renders the
// first frame: what comes out decides the pixel format of a video. Whatever a run would refuse before its first frame
// is refused now. Throws Error.
ClipPlan PlanClip(const InputOptions& input, std::unique_ptr<FrameReader> reader, const OutputOptions& output,
                  const CutWish& wish, const std::function<void(Frame&, int64_t totalFrames)>& render);

// What the writer of a piece of a video has to know beside the encoder's options.
struct PieceBounds {
  int64_t firstTimestamp = 0;          // of the clip's first frame
  std::optional<int64_t> resultStamp;  // of the piece's first frame; nothing for the first piece
  std::optional<int64_t> until;        // where the next piece begins; nothing for the last one
};

// Writes packets into files of the folder, which must be there.
std::unique_ptr<FrameWriter> CreateVideoPiece(const OutputOptions& output, const FrameReader& reader, double fps,
                                              const PieceBounds& bounds, const std::string& folder);

// The files of such a folder, by their names.
std::vector<std::string> VideoPieceFiles();

struct VideoJoin {
  InputOptions input;  // without a range
  OutputOptions output;
  double fps = 25;
  int64_t firstStamp = 0;
  int64_t frames = 0;
  std::vector<std::string> folders;  // of the pieces, in order
  // Asked once all of a piece was read: throws Error if its checksum is another one.
  std::function<void(size_t piece, uint32_t checksum)> check;
};

// Puts the packets into one file and beside them what the input has beside its frames. Nothing is encoded again. The
// file has its name when it is whole. Throws Error, and then there is no such file.
void JoinVideo(const VideoJoin& join);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_PIECES_H_
