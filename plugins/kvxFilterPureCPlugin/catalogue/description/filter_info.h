// The description of one filter: identity, parameters, textures. Shared by the registry and all filters of its GUID.
#ifndef KVX_DESCRIPTION_FILTER_INFO_H_
#define KVX_DESCRIPTION_FILTER_INFO_H_

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "catalogue/description/param_value.h"

namespace vizcore {

// The two maps are guarded by a mutex, because `NLEPureCFilter::Init` adds to a description that other filters may be
// reading. Parameter objects do not change once added.
class NLEFilterInfo {
 public:
  void SetGuid(std::string guid) { guid_ = std::move(guid); }
  void SetName(std::string name) { name_ = std::move(name); }
  // Copy the text and a NUL; the caller's buffer must hold them.
  void GetGuid(char* out) const;
  void GetName(char* out) const;
  const std::string& Guid() const { return guid_; }
  const std::string& Name() const { return name_; }

  int32_t GetParamCount() const { return paramCount_; }
  void SetParamCount(int32_t count) { paramCount_ = count; }
  int32_t GetTextureCount() const { return textureCount_; }
  void SetTextureCount(int32_t count) { textureCount_ = count; }
  // Not 0 for an effect that moves on a still source.
  int32_t GetDynamic() const { return dynamic_; }
  void SetDynamic(int32_t dynamic) { dynamic_ = dynamic; }
  // Written when the effect is found, and textures when a catalogue names them; nothing in the plug-in reads either.
  void SetMarkers(int32_t a, int32_t b, int32_t c);
  int32_t GetMarkerA() const { return markerA_; }
  int32_t GetMarkerB() const { return markerB_; }
  int32_t GetMarkerC() const { return markerC_; }

  // Stores under the index, replacing what stood there. The count is the caller's to raise.
  void AddParam(int32_t index, std::shared_ptr<NLEFilterParams> params);
  void AddTexture(int32_t index, const std::string& text);
  // Empty if the index has no entry.
  void GetParam(std::shared_ptr<NLEFilterParams>& out, int32_t index) const;
  // Empty if the index has no entry.
  std::string GetTexture(int32_t index) const;

 private:
  std::string guid_;
  std::string name_;
  std::atomic<int32_t> markerA_{0};
  std::atomic<int32_t> markerB_{0};
  std::atomic<int32_t> markerC_{0};
  int32_t textureCount_ = 0;
  std::atomic<int32_t> paramCount_{0};
  int32_t dynamic_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, std::pair<std::string, std::string>> textures_;  // "Texture[i]": key and path text
  std::map<std::string, std::shared_ptr<NLEFilterParams>> params_;       // "Param[i]"
};

}  // namespace vizcore

#endif  // KVX_DESCRIPTION_FILTER_INFO_H_
