#include "catalogue/description/filter_info.h"

#include <cstring>

namespace vizcore {

namespace {
std::string Key(const char* prefix, int32_t index) {
  return prefix + std::to_string(index) + "]";
}
}  // namespace

void NLEFilterInfo::GetGuid(char* out) const {
  std::memcpy(out, guid_.c_str(), guid_.size() + 1);
}
void NLEFilterInfo::GetName(char* out) const {
  std::memcpy(out, name_.c_str(), name_.size() + 1);
}

void NLEFilterInfo::SetMarkers(int32_t a, int32_t b, int32_t c) {
  markerA_ = a;
  markerB_ = b;
  markerC_ = c;
}

void NLEFilterInfo::AddParam(int32_t index, std::shared_ptr<NLEFilterParams> params) {
  const std::lock_guard lock(mutex_);
  params_[Key("Param[", index)] = std::move(params);
}

void NLEFilterInfo::AddTexture(int32_t index, const std::string& text) {
  const std::lock_guard lock(mutex_);
  const std::string key = Key("Texture[", index);
  textures_[key] = {key, text};
}

void NLEFilterInfo::GetParam(std::shared_ptr<NLEFilterParams>& out, int32_t index) const {
  const std::lock_guard lock(mutex_);
  const auto found = params_.find(Key("Param[", index));
  out = found == params_.end() ? nullptr : found->second;
}

std::string NLEFilterInfo::GetTexture(int32_t index) const {
  const std::lock_guard lock(mutex_);
  const auto found = textures_.find(Key("Texture[", index));
  return found == textures_.end() ? std::string() : found->second.second;
}

}  // namespace vizcore
