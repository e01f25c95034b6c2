#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "hosts/kvx/metadata_formats.h"

namespace kvx {

namespace {

constexpr size_t kSignature = 8;
constexpr size_t kHeaderEnd = kSignature + 25;  // behind IHDR
constexpr size_t kLargestInflated = size_t{64} << 20;
constexpr char kXmpKey[] = "XML:com.adobe.xmp";

uint32_t Big32(std::string_view bytes) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(bytes[static_cast<size_t>(i)]);
  return value;
}

std::string Big32(uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(value >> shift));
  return bytes;
}

std::string Chunk(std::string_view type, std::string_view content) {
  std::string body = std::string(type) + std::string(content);
  const auto sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
  return Big32(static_cast<uint32_t>(content.size())) + body + Big32(static_cast<uint32_t>(sum));
}

std::string Deflate(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string out(size, '\0');
  compress(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  out.resize(size);
  return out;
}

// Empty if damaged or unreasonably large.
std::string Inflate(std::string_view bytes) {
  for (size_t room = 4 * bytes.size() + 1024; room <= kLargestInflated; room *= 4) {
    std::string out(room, '\0');
    uLongf size = room;
    const int status = uncompress(reinterpret_cast<Bytef*>(out.data()), &size,
                                  reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    if (status == Z_OK) {
      out.resize(size);
      return out;
    }
    if (status != Z_BUF_ERROR) break;
  }
  return {};
}

std::string Latin1ToUtf8(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const auto code = static_cast<uint8_t>(c);
    if (code < 0x80) {
      out.push_back(c);
    } else {
      out.push_back(static_cast<char>(0xC0 | code >> 6));
      out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
  }
  return out;
}

// Cuts off and returns what stands before the next zero byte.
std::string_view CutWord(std::string_view& rest) {
  const size_t end = std::min(rest.find('\0'), rest.size());
  const std::string_view word = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return word;
}

void ReadText(std::string_view type, std::string_view content, PictureMetadata& metadata) {
  PictureText text;
  text.key = Latin1ToUtf8(CutWord(content));
  if (type == "tEXt") {
    text.text = Latin1ToUtf8(content);
  } else if (type == "zTXt") {
    if (content.empty()) return;
    text.text = Latin1ToUtf8(Inflate(content.substr(1)));
  } else {
    if (content.size() < 2) return;
    const bool compressed = content[0] == 1;
    content.remove_prefix(2);
    CutWord(content);  // language
    CutWord(content);  // translated key
    text.text = compressed ? Inflate(content) : std::string(content);
  }
  if (text.key == kXmpKey) {
    metadata.xmp = text.text;
  } else {
    metadata.texts.push_back(std::move(text));
  }
}

std::string TextChunk(const std::string& key, const std::string& text) {
  const std::string name = key.empty() ? "Comment" : key.substr(0, 79);
  const auto plain = [](const std::string& s) {
    return std::all_of(s.begin(), s.end(), [](char c) { return static_cast<uint8_t>(c) < 0x80; });
  };
  if (plain(name) && plain(text)) return Chunk("tEXt", name + '\0' + text);
  return Chunk("iTXt", name + std::string("\0\0\0\0\0", 5) + text);
}

uint32_t PerMetre(uint32_t value, Density::Unit unit) {
  if (unit == Density::kPerInch) return static_cast<uint32_t>(std::lround(value / 0.0254));
  return unit == Density::kPerCentimetre ? value * 100 : value;
}

}  // namespace

void ReadPngMetadata(std::string_view file, PictureMetadata& metadata) {
  size_t at = kSignature;
  while (at + 12 <= file.size()) {
    const size_t size = Big32(file.substr(at, 4));
    if (size > file.size() - at - 12) return;
    const std::string_view type = file.substr(at + 4, 4);
    const std::string_view content = file.substr(at + 8, size);
    if (type == "IHDR" && size >= 9) metadata.bitDepth = content[8];
    if (type == "eXIf") metadata.exif = content;
    if (type == "tIME") metadata.time = content;
    if (type == "tEXt" || type == "zTXt" || type == "iTXt") ReadText(type, content, metadata);
    if (type == "gAMA" || type == "cHRM" || type == "sRGB")
      metadata.colorChunks.emplace_back(file.substr(at, size + 12));
    if (type == "iCCP") {
      std::string_view rest = content;
      CutWord(rest);
      if (!rest.empty()) metadata.icc = Inflate(rest.substr(1));
    }
    if (type == "pHYs" && size == 9) {
      metadata.density = {content[8] == 1 ? Density::kPerMetre : Density::kRatio, Big32(content),
                          Big32(content.substr(4))};
    }
    at += size + 12;
  }
}

std::string AddPngMetadata(std::string file, const PictureMetadata& metadata, std::vector<std::string>& lost) {
  std::string chunks;
  if (!metadata.icc.empty()) {
    chunks += Chunk("iCCP", std::string("ICC profile\0\0", 13) + Deflate(metadata.icc));
  } else {
    for (const std::string& chunk : metadata.colorChunks) chunks += chunk;
  }
  const Density& density = metadata.density;
  if (density.unit != Density::kNone) {
    chunks += Chunk("pHYs", Big32(PerMetre(density.x, density.unit)) + Big32(PerMetre(density.y, density.unit)) +
                                (density.unit == Density::kRatio ? '\0' : '\1'));
  }
  if (!metadata.exif.empty()) chunks += Chunk("eXIf", metadata.exif);
  if (!metadata.time.empty()) chunks += Chunk("tIME", metadata.time);
  if (!metadata.xmp.empty()) chunks += Chunk("iTXt", kXmpKey + std::string("\0\0\0\0\0", 5) + metadata.xmp);
  for (const PictureText& text : metadata.texts) chunks += TextChunk(text.key, text.text);
  if (!metadata.photoshop.empty()) lost.emplace_back("IPTC data");
  file.insert(kHeaderEnd, chunks);
  return file;
}

}  // namespace kvx
