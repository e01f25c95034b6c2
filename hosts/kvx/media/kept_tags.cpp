#include "hosts/kvx/media/kept_tags.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "hostkit/text.h"
#include "hosts/kvx/notes.h"

namespace kvx {

namespace {

constexpr size_t kMostNamed = 8;

struct InputDeleter {
  void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};

template <typename Use>
void ForEachTag(const AVDictionary* tags, Use use) {
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) use(entry->key, entry->value);
}

// Some containers give a tag another name, some change how a value is written: either will do.
class Said {
 public:
  explicit Said(const AVFormatContext& file) {
    Take(file.metadata);
    for (unsigned i = 0; i < file.nb_streams; ++i) Take(file.streams[i]->metadata);
  }
  bool Holds(const std::string& key, const std::string& value) const {
    return names_.count(Lower(key)) > 0 || values_.count(value) > 0;
  }

 private:
  void Take(const AVDictionary* tags) {
    ForEachTag(tags, [this](const char* key, const char* value) {
      names_.insert(Lower(key));
      values_.insert(value);
    });
  }

  std::set<std::string> names_, values_;
};

void NoteLanguages(const AVFormatContext& written, const AVFormatContext& read) {
  if (written.nb_streams != read.nb_streams) return;
  for (unsigned i = 0; i < written.nb_streams; ++i) {
    const std::string language = Dictionary(written.streams[i]->metadata).Get("language");
    if (language.empty() || language == "und" || !Dictionary(read.streams[i]->metadata).Get("language").empty())
      continue;
    const char* type = av_get_media_type_string(written.streams[i]->codecpar->codec_type);
    Note(fmt::format("{} stream {}: its language ({}) is not kept by this kind of file", type ? type : "a", i,
                     language));
  }
}

}  // namespace

void NoteLostTags(const AVFormatContext& written, const ContainerKeeps& keeps, const std::string& path) {
  AVFormatContext* opened = nullptr;
  if (avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, nullptr) < 0) return;
  const std::unique_ptr<AVFormatContext, InputDeleter> read(opened);
  const PacketPtr first = NewPacket();
  av_read_frame(opened, first.get());  // some say it in front of their first packet
  const Said said(*read);
  std::vector<std::string> lost;
  ForEachTag(written.metadata, [&](const std::string& key, const std::string& value) {
    const bool named = !keeps.tags && (key == "title" || key == "creation_time");
    if (key != "encoder" && !named && !said.Holds(key, value)) lost.push_back(key);
  });
  if (lost.size() > kMostNamed) {
    const size_t more = lost.size() - kMostNamed;
    lost.resize(kMostNamed);
    lost.push_back(fmt::format("{} more", more));
  }
  if (!lost.empty()) Note(fmt::format("tags of the file that this kind does not keep: {}", fmt::join(lost, ", ")));
  if (keeps.languages) NoteLanguages(written, *read);
}

}  // namespace kvx
