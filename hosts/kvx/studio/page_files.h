// The page's files, which the build packs into the binary.
#ifndef KVX_HOSTS_KVX_STUDIO_PAGE_FILES_H_
#define KVX_HOSTS_KVX_STUDIO_PAGE_FILES_H_

#include <vector>

namespace kvx {

struct PageFile {
  const char* name;
  const char* type;
  const char* text;
};

const std::vector<PageFile>& PageFiles();

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_PAGE_FILES_H_
