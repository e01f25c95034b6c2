#include "hosts/kvx/media/video_pieces.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "hostkit/error.h"
#include "hosts/kvx/media/cuts.h"
#include "hosts/kvx/media/frame_index.h"
#include "hosts/kvx/media/packet_log.h"
#include "hosts/kvx/media/video.h"
#include "hosts/kvx/media/video_encoder.h"
#include "hosts/kvx/media/video_file.h"
#include "hosts/kvx/media/video_reader.h"

namespace kvx {

namespace {

// So many frames are decoded to see that the packets tell the truth.
constexpr size_t kFramesTried = 32;
// A deinterlacer looks at the frames around.
constexpr size_t kDeinterlacerReach = 3;

// Begins a result, to the point where its first packet would come, and gives its clock.
FrameClock TryVideo(const OutputOptions& options, const FrameReader& reader, double fps, const Picture& first,
                    std::string& pixelFormat) {
  VideoFile file(options, reader.Media());
  VideoEncoder encoder(options, file.Format(), reader.Media(), RateOf(reader.Media(), fps));
  file.PlanSideStreams();
  encoder.Open(first);
  pixelFormat = av_get_pix_fmt_name(encoder.Context().pix_fmt);
  return encoder.Clock();
}

// Goes over the frames that are chosen and offers the places where they may be cut.
class CutSearch {
 public:
  CutSearch(const CutWish& wish, std::optional<FrameClock> clock) : picker_(wish), clock_(clock) {}
  // In order. `apart`: this frame can be told from the one before by its stamp.
  void Offer(Cut cut, int64_t timestamp, bool apart) {
    cut.frame = frames_++;
    if (clock_) {
      const FrameClock::Slot slot = clock_->Next(timestamp, 1);
      apart = apart && slot.shown;
      cut.resultStamp = slot.stamp;
    }
    if (apart || cut.frame == 0) picker_.Offer(cut);
  }
  int64_t Frames() const { return frames_; }
  std::vector<Cut> Cuts() const { return picker_.Pick(frames_); }

 private:
  CutPicker picker_;
  std::optional<FrameClock> clock_;  // of a result that is a video
  int64_t frames_ = 0;
};

// Empty, or why not.
std::string SearchVideo(const InputOptions& input, const std::vector<int64_t>& tried, const ClipPlan& plan,
                        CutSearch& search) {
  FrameIndex index(input.path);
  std::deque<FrameIndex::Entry> recent;
  const size_t reach = input.deinterlace ? kDeinterlacerReach : 0;
  FrameIndex::Entry entry;
  while ((!input.frames || search.Frames() < *input.frames) && index.Next(entry)) {
    const double seconds = Seconds(entry.stamp - index.FirstOfStream(), index.TimeBase());
    recent.push_back(entry);
    if (recent.size() > reach + 1) recent.pop_front();
    const PartSide side = SideOfPart(input, seconds);
    if (side == PartSide::kBefore) continue;
    if (side == PartSide::kBehind) break;
    const auto number = static_cast<size_t>(search.Frames());
    if (number < tried.size() && tried[number] != entry.stamp) return "its packets do not tell its frames";
    const FrameIndex::Entry& from = recent.front();
    const bool apart = recent.size() < 2 || recent[recent.size() - 2].stamp < entry.stamp;
    search.Offer({0, entry.stamp, from.keyStamp, from.keyDecoded, 0},
                 entry.stamp - plan.firstStamp + plan.firstTimestamp, apart && from.afterKey);
  }
  if (search.Frames() < static_cast<int64_t>(tried.size())) return "its packets do not tell its frames";
  return index.Trouble();
}

}  // namespace

ClipPlan PlanClip(const InputOptions& input, std::unique_ptr<FrameReader> reader, const OutputOptions& output,
                  const CutWish& wish, const std::function<void(Frame&, int64_t totalFrames)>& render) {
  const SourceMedia* media = reader->Media();
  const bool cuts = wish.pieces != 1;
  ClipPlan plan;
  plan.frames = reader->Count().value_or(0);
  plan.totalFrames = plan.frames > 0 ? reader->FirstPlace() + plan.frames : 0;
  Frame first;
  if (!reader->Read(first)) throw Error(fmt::format("{}: there are no frames in it", input.path));
  plan.size = {first.picture.width, first.picture.height};
  plan.firstTimestamp = first.timestamp;
  const auto stampOf = [&](const Frame& frame) {
    return media ? frame.timestamp + std::llround(media->partStart / av_q2d(media->timeBase)) : frame.timestamp;
  };
  plan.firstStamp = stampOf(first);
  std::vector<int64_t> tried = {plan.firstStamp};
  Frame more;
  while (media && cuts && tried.size() < kFramesTried && reader->Read(more)) tried.push_back(stampOf(more));

  render(first, plan.totalFrames);
  std::optional<FrameClock> clock;
  if (IsVideoName(output.path)) {
    clock = TryVideo(output, *reader, input.fps, first.picture, plan.pixelFormat);
  } else {
    OpenWriter(output, *reader, input.fps);
  }
  plan.cuts = {Cut{}};
  if (!cuts) return plan;
  CutSearch search(wish, clock);
  if (media) {
    // The libraries' index of a long clip is large; one at a time is enough.
    reader.reset();
    plan.whole = SearchVideo(input, tried, plan, search);
    if (!plan.whole.empty()) return plan;
  } else {
    for (int64_t i = 0; i < plan.frames; ++i) search.Offer({}, i, true);
  }
  plan.frames = search.Frames();
  plan.cuts = search.Cuts();
  return plan;
}

namespace {

class VideoPieceWriter : public FrameWriter {
 public:
  VideoPieceWriter(const OutputOptions& options, const FrameReader& reader, double fps, const PieceBounds& bounds,
                   const std::string& folder)
      : media_(reader.Media()),
        format_(av_guess_format(nullptr, options.path.c_str(), nullptr)),
        encoder_(options, *format_, media_, RateOf(media_, fps)),
        bounds_(bounds),
        log_(folder) {
    if (bounds_.resultStamp) encoder_.Resume(bounds_.firstTimestamp, *bounds_.resultStamp);
  }
  void Write(const Frame& frame) override {
    if (!encoder_.IsOpen()) encoder_.Open(frame.picture);
    encoder_.Encode(frame, Sink());
    // The file that is put together takes them from the input.
    if (media_) media_->packets->TakeAll();
  }
  void Finish() override {
    if (!encoder_.IsOpen()) throw Error("there are no frames to write");
    if (bounds_.until) encoder_.FillUntil(*bounds_.until, Sink());
    encoder_.Finish(Sink());
    const AVCodecContext& codec = encoder_.Context();
    log_.Finish({encoder_.Parameters(), codec.time_base, codec.framerate, codec.codec->name});
  }

 private:
  VideoEncoder::Sink Sink() {
    return [this](AVPacket& packet) { log_.Add(packet); };
  }

  const SourceMedia* media_;
  const AVOutputFormat* format_;
  VideoEncoder encoder_;
  PieceBounds bounds_;
  PacketLogWriter log_;
};

}  // namespace

std::unique_ptr<FrameWriter> CreateVideoPiece(const OutputOptions& output, const FrameReader& reader, double fps,
                                              const PieceBounds& bounds, const std::string& folder) {
  return std::make_unique<VideoPieceWriter>(output, reader, fps, bounds, folder);
}

std::vector<std::string> VideoPieceFiles() {
  return {kPacketDataName, kPacketListName};
}

}  // namespace kvx
