// A video's frames, upright and in BGRA, and on the side the packets of its other streams.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_READER_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_READER_H_

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/media_input.h"
#include "hosts/kvx/media/pixels.h"
#include "hosts/kvx/media/source_media.h"

namespace kvx {

class Deinterlacer;

// Where a frame lies, by its second in the clip, to the part that --start and --end choose.
enum class PartSide { kBefore, kWithin, kBehind };
PartSide SideOfPart(const InputOptions& options, double clipSeconds);

class VideoReader : public FrameReader {
 public:
  // Throws Error if there is no video in it that can be decoded.
  VideoReader(std::unique_ptr<InputFile> file, const InputOptions& options);
  ~VideoReader() override;

  bool Read(Frame& frame) override;
  std::optional<int64_t> Count() const override;
  void Abandon() override { input_.Abandon(); }
  int64_t FirstPlace() const override;
  double Rate() const override { return av_q2d(media_.rate); }
  std::vector<std::string> Files() const override;
  std::vector<std::string> Damage() const override;
  const SourceMedia* Media() const override { return &media_; }

  // Instead of Read, where the frames come from elsewhere: the streams beside the video alone. The first frame that was
  // chosen has this stamp. Then, for each frame, the second of the result at which it is shown; the number of frames at
  // the end.
  void BeginBeside(int64_t firstStamp);
  void PassBeside(double seconds);
  void EndBeside(int64_t frames);

 private:
  // How the first frame of a range is reached: the next way where one does not serve.
  enum class Approach {
    kSeek,  // to the key frame before it
    kSkip,  // from the beginning, without decoding until that key frame
    kDecode,
  };

  void OpenDecoder();
  void Describe();
  void SeekToStart();
  void SeekToRange();
  bool IsBeforeKey();  // asked for each packet of the video until the range's key frame comes
  bool Rewind(Approach approach);
  bool BeginsAsPlanned(int64_t stamp);
  bool ReadBeside();
  int64_t Step() const { return std::max<int64_t>(1, av_rescale_q(1, av_inv_q(media_.rate), stream_->time_base)); }
  void BeginResult(int64_t stamp, double clipSeconds);
  int64_t FirstOfStream() const { return stream_->start_time == AV_NOPTS_VALUE ? 0 : stream_->start_time; }

  bool NextDecoded();  // into decoded_
  bool NextShown();    // the same, deinterlaced if that is wanted
  bool ReadPacket();   // one more into packet_; false at the end of the file
  void KeepSidePacket();
  void ReleaseSidePackets(double until);  // seconds of the file
  void ReadSideStreamsToEnd();
  void EndSideStreams();
  void NoteWhatIsLost();
  int64_t PromisedFrames() const;
  void Convert(Picture& picture);
  double FileSeconds(int64_t stamp) const { return Seconds(stamp, stream_->time_base); }

  InputOptions options_;
  MediaInput input_;
  std::string name_;
  AVStream* stream_ = nullptr;
  SourceMedia media_;
  CodecPtr codec_;
  PacketPtr packet_ = NewPacket();
  AvFramePtr decoded_ = NewAvFrame();
  std::unique_ptr<Deinterlacer> deinterlacer_;
  PixelConverter converter_;
  FrameSize size_{0, 0};  // of the first frame, before it is turned
  int quarterTurns_ = 0;  // clockwise
  Picture stored_;        // before it is turned

  double fileStart_ = 0;   // seconds at which the file begins
  double resultZero_ = 0;  // seconds of the file that are 0 in the result
  int64_t next_ = 0;
  int64_t firstStamp_ = 0;
  int64_t firstPlace_ = 0;
  int64_t fallback_ = 0;  // the stamp of the next frame if it has none
  bool ended_ = false;
  int64_t lastShown_ = 0;
  bool awaitsKey_ = false;
  Approach approach_ = Approach::kSeek;

  std::deque<PacketPtr> pending_;  // side packets that are not released yet
  int64_t packetsRead_ = 0;        // of the video
  int64_t lastVideoStamp_ = -1;    // when its packets are decoded
  int64_t packetsBroken_ = 0;
  int64_t framesBroken_ = 0;
  int64_t complaintsBefore_ = 0;  // of the decoder, about frames that nobody wanted
  double reached_ = 0;            // seconds of the file up to which any packet went
  bool fileEnded_ = false;
  std::string readError_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_READER_H_
