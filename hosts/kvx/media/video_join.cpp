#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <deque>
#include <fstream>

#include "hostkit/error.h"
#include "hosts/kvx/media/packet_log.h"
#include "hosts/kvx/media/video.h"
#include "hosts/kvx/media/video_file.h"
#include "hosts/kvx/media/video_pieces.h"
#include "hosts/kvx/media/video_reader.h"

namespace kvx {

namespace {

// Every encoder begins anew with what it holds back, so that at a seam packets would be decoded before those that they
// follow. One encoder's order is that of showing, delayed by as many frames as it ever holds back.
class DecodingOrder {
 public:
  // Pieces in order.
  void Learn(const std::vector<LoggedPacket>& packets) {
    if (packets.empty()) return;
    const int64_t first = std::min_element(packets.begin(), packets.end(), ShownBefore)->shown;
    size_t delay = 0;
    while (delay < packets.size() && packets[delay].decoded < first) ++delay;
    if (delay > delay_ || !learned_) {
      early_.clear();
      for (size_t i = 0; i < delay; ++i) early_.push_back(packets[i].decoded - first);
      delay_ = delay;
    }
    learned_ = true;
  }

  void Begin(const std::vector<LoggedPacket>& packets) {
    const bool first = shown_.empty() && early_.size() == delay_ && !begun_;
    std::vector<int64_t> stamps;
    for (const LoggedPacket& packet : packets) stamps.push_back(packet.shown);
    std::sort(stamps.begin(), stamps.end());
    if (first && !stamps.empty()) {
      for (const int64_t early : early_) shown_.push_back(stamps.front() + early);
    }
    begun_ = true;
    shown_.insert(shown_.end(), stamps.begin(), stamps.end());
  }
  // When the next packet is decoded.
  int64_t Next(const LoggedPacket& packet) {
    if (delay_ == 0) return packet.decoded;
    const int64_t decoded = shown_.front();
    shown_.pop_front();
    return decoded;
  }

 private:
  static bool ShownBefore(const LoggedPacket& a, const LoggedPacket& b) { return a.shown < b.shown; }

  size_t delay_ = 0;
  std::vector<int64_t> early_;  // of the first packets, from the first frame on
  std::deque<int64_t> shown_;   // of the packets that are known, in order, behind those of the beginning
  bool learned_ = false;
  bool begun_ = false;
};

bool SameStream(const PacketStream& a, const PacketStream& b) {
  const AVCodecParameters& p = *a.parameters;
  const AVCodecParameters& q = *b.parameters;
  return p.codec_id == q.codec_id && p.format == q.format && p.width == q.width && p.height == q.height &&
         av_cmp_q(a.timeBase, b.timeBase) == 0 && p.extradata_size == q.extradata_size &&
         std::equal(p.extradata, p.extradata + p.extradata_size, q.extradata);
}

// A piece's packets with their bytes.
class PacketData {
 public:
  explicit PacketData(const std::string& folder) : path_(PacketDataPath(folder)), file_(path_, std::ios::binary) {
    if (!file_) throw Error(fmt::format("{}: cannot be read", path_));
  }
  PacketPtr Read(const LoggedPacket& logged) {
    PacketPtr packet = NewPacket();
    CheckAv(av_new_packet(packet.get(), logged.size), path_);
    ReadBytes(packet->data, logged.size);
    for (const auto& [type, size] : logged.sides) {
      const auto kind = static_cast<AVPacketSideDataType>(type);
      ReadBytes(CheckAlloc(av_packet_new_side_data(packet.get(), kind, static_cast<size_t>(size))), size);
    }
    packet->pts = logged.shown;
    packet->duration = logged.duration;
    packet->flags = logged.flags;
    return packet;
  }
  uint32_t Checksum() const { return checksum_; }

 private:
  void ReadBytes(uint8_t* bytes, int size) {
    if (!file_.read(reinterpret_cast<char*>(bytes), size)) throw Error(fmt::format("{}: ends too early", path_));
    checksum_ = static_cast<uint32_t>(crc32(checksum_, bytes, static_cast<uInt>(size)));
  }

  std::string path_;
  std::ifstream file_;
  uint32_t checksum_ = 0;
};

}  // namespace

void JoinVideo(const VideoJoin& join) {
  DecodingOrder order;
  PacketStream stream;
  for (const std::string& folder : join.folders) {
    PacketLog log = ReadPacketLog(folder);
    if (!stream.parameters)
      stream = std::move(log.stream);
    else if (!SameStream(stream, log.stream)) {
      throw Error(fmt::format("{}: its video is of another kind than the first piece's: the pieces do not fit together",
                              folder));
    }
    order.Learn(log.packets);
  }
  const std::unique_ptr<FrameReader> reader = OpenReader(join.input);
  auto* video = dynamic_cast<VideoReader*>(reader.get());
  VideoFile file(join.output, reader->Media());
  file.PlanSideStreams();
  if (video) video->BeginBeside(join.firstStamp);
  file.Start(*stream.parameters, stream.timeBase, stream.rate, stream.encoder);
  for (size_t i = 0; i < join.folders.size(); ++i) {
    const PacketLog log = ReadPacketLog(join.folders[i]);
    PacketData data(join.folders[i]);
    order.Begin(log.packets);
    for (const LoggedPacket& logged : log.packets) {
      const PacketPtr packet = data.Read(logged);
      packet->dts = order.Next(logged);
      if (video) video->PassBeside(Seconds(logged.shown, stream.timeBase));
      file.WriteVideo(*packet, stream.timeBase);
      file.WriteQueued();
    }
    join.check(i, data.Checksum());
  }
  if (video) video->EndBeside(join.frames);
  file.Close();
  file.Commit();
}

}  // namespace kvx
