#include "framework/material_path.h"

#include <algorithm>
#include <string_view>

#include "kvx/exports.h"

namespace {

constexpr size_t kPathUnits = 1024;
char16_t g_mergeImageDir[kPathUnits];
char16_t g_shaderDir[kPathUnits];

// What does not fit is dropped: such a path leads nowhere anyway.
void Store(char16_t* buffer, std::u16string_view path, std::u16string_view tail) {
  const size_t head = std::min(path.size(), kPathUnits - 1);
  const size_t rest = std::min(tail.size(), kPathUnits - 1 - head);
  std::fill_n(buffer, kPathUnits, u'\0');
  std::copy_n(path.begin(), head, buffer);
  std::copy_n(tail.begin(), rest, buffer + head);
}

}  // namespace

std::u16string MergeImageDir() {
  return g_mergeImageDir;
}
std::u16string MaterialPath(std::string_view fileName) {
  return MergeImageDir().append(fileName.begin(), fileName.end());
}
std::u16string ShaderDir() {
  return g_shaderDir;
}

int32_t SetMergeImagePath(const char16_t* path) {
  std::fill_n(g_mergeImageDir, kPathUnits, u'\0');
  if (!path) return 0;
  Store(g_mergeImageDir, path, u"\\Merge\\");
  Store(g_shaderDir, path, u"\\Shader");
  return 1;
}
