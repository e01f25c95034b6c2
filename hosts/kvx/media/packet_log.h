// A video's packets in plain files: their bytes one after another, and beside them a list that says what they are.
#ifndef KVX_HOSTS_KVX_MEDIA_PACKET_LOG_H_
#define KVX_HOSTS_KVX_MEDIA_PACKET_LOG_H_

#include <cstdint>
#include <string>
#include <vector>

#include "hosts/kvx/media/libav.h"
#include "hosts/kvx/output_file.h"

namespace kvx {

struct LoggedPacket {
  int64_t shown = 0;
  int64_t decoded = 0;
  int64_t duration = 0;
  int flags = 0;
  int size = 0;
  std::vector<std::pair<int, int>> sides;  // type and size of what stands behind the packet's own bytes
};

// What a container has to know of the packets.
struct PacketStream {
  ParametersPtr parameters;
  AVRational timeBase{1, 25};
  AVRational rate{25, 1};
  std::string encoder;
};

class PacketLogWriter {
 public:
  // Makes both files in `folder`. Throws Error.
  explicit PacketLogWriter(const std::string& folder);
  void Add(const AVPacket& packet);
  void Finish(const PacketStream& stream);
  int64_t Count() const { return static_cast<int64_t>(packets_.size()); }

 private:
  OutputFile data_;
  OutputFile list_;
  std::vector<LoggedPacket> packets_;
};

struct PacketLog {
  PacketStream stream;
  std::vector<LoggedPacket> packets;  // in the order of decoding
};
// The list. Throws Error.
PacketLog ReadPacketLog(const std::string& folder);

// The files' names, and where they lie.
inline constexpr char kPacketDataName[] = "packets.bin";
inline constexpr char kPacketListName[] = "packets.json";
inline std::string PacketDataPath(const std::string& folder) {
  return folder + "/" + kPacketDataName;
}

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_PACKET_LOG_H_
