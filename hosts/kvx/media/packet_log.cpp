#include "hosts/kvx/media/packet_log.h"

#include <fmt/format.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "hostkit/error.h"
#include "hosts/kvx/input_file.h"

namespace kvx {

namespace {

using nlohmann::json;

// Tells only how well the encoder did.
constexpr AVPacketSideDataType kUnneeded = AV_PKT_DATA_QUALITY_STATS;

json Pair(AVRational number) {
  return {number.num, number.den};
}

AVRational RationalOf(const json& pair) {
  return {pair.at(0).get<int>(), pair.at(1).get<int>()};
}

std::string Hex(const uint8_t* bytes, int size) {
  std::string text;
  for (int i = 0; i < size; ++i) text += fmt::format("{:02x}", bytes[i]);
  return text;
}

// Numbers that are listed with the parameters by name.
struct NamedNumber {
  const char* name;
  int AVCodecParameters::*number;
};
constexpr NamedNumber kNumbers[] = {
    {"format", &AVCodecParameters::format},
    {"width", &AVCodecParameters::width},
    {"height", &AVCodecParameters::height},
    {"profile", &AVCodecParameters::profile},
    {"level", &AVCodecParameters::level},
    {"codedBits", &AVCodecParameters::bits_per_coded_sample},
    {"rawBits", &AVCodecParameters::bits_per_raw_sample},
    {"videoDelay", &AVCodecParameters::video_delay},
};

json ToJson(const PacketStream& stream) {
  const AVCodecParameters& par = *stream.parameters;
  json to = {{"encoder", stream.encoder},
             {"codec", avcodec_get_name(par.codec_id)},
             {"tag", par.codec_tag},
             {"bitRate", par.bit_rate},
             {"sampleAspect", Pair(par.sample_aspect_ratio)},
             {"fieldOrder", static_cast<int>(par.field_order)},
             {"range", static_cast<int>(par.color_range)},
             {"primaries", static_cast<int>(par.color_primaries)},
             {"transfer", static_cast<int>(par.color_trc)},
             {"matrix", static_cast<int>(par.color_space)},
             {"chroma", static_cast<int>(par.chroma_location)},
             {"timeBase", Pair(stream.timeBase)},
             {"rate", Pair(stream.rate)},
             {"extradata", Hex(par.extradata, par.extradata_size)}};
  for (const NamedNumber& named : kNumbers) to[named.name] = par.*named.number;
  return to;
}

void TakeExtradata(const std::string& hex, AVCodecParameters& par) {
  const size_t size = hex.size() / 2;
  if (size == 0) return;
  par.extradata = static_cast<uint8_t*>(CheckAlloc(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE)));
  par.extradata_size = static_cast<int>(size);
  for (size_t i = 0; i < size; ++i) {
    par.extradata[i] = static_cast<uint8_t>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
  }
}

PacketStream FromJson(const json& from) {
  PacketStream stream;
  stream.parameters.reset(CheckAlloc(avcodec_parameters_alloc()));
  AVCodecParameters& par = *stream.parameters;
  const AVCodecDescriptor* codec = avcodec_descriptor_get_by_name(from.at("codec").get<std::string>().c_str());
  if (!codec) throw Error(fmt::format("the codec {} is not known here", from.at("codec").get<std::string>()));
  par.codec_type = AVMEDIA_TYPE_VIDEO;
  par.codec_id = codec->id;
  par.codec_tag = from.at("tag");
  par.bit_rate = from.at("bitRate");
  par.sample_aspect_ratio = RationalOf(from.at("sampleAspect"));
  par.field_order = static_cast<AVFieldOrder>(from.at("fieldOrder").get<int>());
  par.color_range = static_cast<AVColorRange>(from.at("range").get<int>());
  par.color_primaries = static_cast<AVColorPrimaries>(from.at("primaries").get<int>());
  par.color_trc = static_cast<AVColorTransferCharacteristic>(from.at("transfer").get<int>());
  par.color_space = static_cast<AVColorSpace>(from.at("matrix").get<int>());
  par.chroma_location = static_cast<AVChromaLocation>(from.at("chroma").get<int>());
  for (const NamedNumber& named : kNumbers) par.*named.number = from.at(named.name);
  TakeExtradata(from.at("extradata"), par);
  stream.timeBase = RationalOf(from.at("timeBase"));
  stream.rate = RationalOf(from.at("rate"));
  stream.encoder = from.at("encoder");
  return stream;
}

std::string PacketListPath(const std::string& folder) {
  return folder + "/" + kPacketListName;
}

}  // namespace

PacketLogWriter::PacketLogWriter(const std::string& folder)
    : data_(PacketDataPath(folder), false), list_(PacketListPath(folder), false) {}

void PacketLogWriter::Add(const AVPacket& packet) {
  LoggedPacket logged{packet.pts, packet.dts, packet.duration, packet.flags, packet.size, {}};
  const auto write = [&](const uint8_t* bytes, size_t size) {
    data_.Write({reinterpret_cast<const char*>(bytes), size});
  };
  write(packet.data, static_cast<size_t>(packet.size));
  for (int i = 0; i < packet.side_data_elems; ++i) {
    const AVPacketSideData& side = packet.side_data[i];
    if (side.type == kUnneeded) continue;
    logged.sides.emplace_back(side.type, static_cast<int>(side.size));
    write(side.data, side.size);
  }
  packets_.push_back(std::move(logged));
}

void PacketLogWriter::Finish(const PacketStream& stream) {
  data_.Commit();
  // A line for each packet: shown, decoded, duration, flags, size, and type and size of what stands behind it.
  list_.Write("{\"stream\": " + ToJson(stream).dump() + ",\n\"packets\": [\n");
  for (size_t i = 0; i < packets_.size(); ++i) {
    const LoggedPacket& packet = packets_[i];
    json row = {packet.shown, packet.decoded, packet.duration, packet.flags, packet.size};
    for (const auto& [type, size] : packet.sides) row.insert(row.end(), {type, size});
    list_.Write(row.dump() + (i + 1 < packets_.size() ? ",\n" : "\n"));
  }
  list_.Write("]}\n");
  list_.Commit();
}

PacketLog ReadPacketLog(const std::string& folder) {
  const std::string path = PacketListPath(folder);
  InputFile file(path);
  try {
    const json list = json::parse(file.ReadAll(kLargestSmallFile));
    PacketLog log;
    log.stream = FromJson(list.at("stream"));
    for (const json& row : list.at("packets")) {
      LoggedPacket packet{row.at(0), row.at(1), row.at(2), row.at(3), row.at(4), {}};
      for (size_t i = 5; i + 1 < row.size(); i += 2)
        packet.sides.emplace_back(row[i].get<int>(), row[i + 1].get<int>());
      log.packets.push_back(std::move(packet));
    }
    return log;
  } catch (const json::exception& error) {
    throw Error(fmt::format("{}: damaged: {}", path, error.what()));
  }
}

}  // namespace kvx
