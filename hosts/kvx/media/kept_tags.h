#ifndef KVX_HOSTS_KVX_MEDIA_KEPT_TAGS_H_
#define KVX_HOSTS_KVX_MEDIA_KEPT_TAGS_H_

#include <string>

#include "hosts/kvx/media/container_fit.h"
#include "hosts/kvx/media/libav.h"

namespace kvx {

// Reads what the whole file at `path` says of itself, and notes which tags and languages of `written`, which made it,
// are not among that: containers drop what they have no place for without a word. A title and a time of creation are
// left to those who know that they have no place.
void NoteLostTags(const AVFormatContext& written, const ContainerKeeps& keeps, const std::string& path);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_KEPT_TAGS_H_
