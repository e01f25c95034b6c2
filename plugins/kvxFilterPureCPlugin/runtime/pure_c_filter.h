// The runtime filter: one filter description bound to one effect.
#ifndef KVX_RUNTIME_PURE_C_FILTER_H_
#define KVX_RUNTIME_PURE_C_FILTER_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/description/filter_info.h"
#include "kvx/processor.h"

namespace vizcore {

using ProcessorFactory = int32_t (*)(int32_t id, uint32_t width, uint32_t height, CBaseFilterProc** processor);

// Owns the effect's processor and private copies of all parameters by name. One thread at a time per filter.
class NLEPureCFilter {
 public:
  explicit NLEPureCFilter(std::shared_ptr<NLEFilterInfo> description);
  ~NLEPureCFilter();
  NLEPureCFilter(const NLEPureCFilter&) = delete;
  NLEPureCFilter& operator=(const NLEPureCFilter&) = delete;

  // Merges the catalogue's parameters with those that the processor reports and adds "alpha", the opacity in percent.
  // What the description lacks is added to it too. 0, or 1 if an argument is null or the factory gives no processor.
  // `record` must outlive the filter.
  int32_t Init(ProcessorFactory factory, const EffectPluginInfo* record);

  int32_t SetCurrentFrame(int32_t frame);
  int32_t SetTotalFrames(int32_t count);

  // 0, or 2 if no parameter has this name. The kind is not used.
  int32_t SetParamValue(const std::string& name, ParamKind kind, const NLEParamValue& value);
  bool GetParamValue(const std::string& name, NLEParamValue& out) const;

  // One source frame to one destination frame, steps in bytes. The processor is made for the destination's size; a new
  // size makes a new processor, and what the old one remembered is lost. Source and destination may share memory. 0, or
  // 1 for failure, for which a processor that throws, for lack of memory say, counts; what it has written by then
  // stands.
  int32_t Render(uint8_t* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep, int32_t reserved0,
                 int32_t reserved1, int32_t reserved2, int32_t reserved3, uint8_t* dst, int32_t dstWidth,
                 int32_t dstHeight, int32_t dstStep);

 private:
  void DescribeByProcessor(CBaseFilterProc& processor, int32_t& paramCount);
  void AddParam(std::shared_ptr<NLEFilterParams> params, const std::string& name, int32_t& paramCount);
  ParamValueArray GatherValues();
  bool MakeProcessor(int32_t width, int32_t height, int32_t step);
  uint8_t* CopySource(const uint8_t* src, size_t given, size_t step, size_t wanted);
  int32_t Opacity() const;
  void RunProcessor(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray& values);

  std::unique_ptr<CBaseFilterProc> processor_;
  ProcessorFactory factory_ = nullptr;
  const EffectPluginInfo* record_ = nullptr;
  std::shared_ptr<NLEFilterInfo> description_;
  std::map<std::string, std::shared_ptr<NLEFilterParams>> params_;
  int32_t frameWidth_ = 0;
  int32_t frameHeight_ = 0;
  int32_t totalFrames_ = 0;
  int32_t currentFrame_ = 0;
  uint8_t productTable_[256][256];  // a * b / 255 cut; part of the class, though nothing reads it
  std::vector<uint8_t> ownSource_;  // the source, where the one given will not do
};

}  // namespace vizcore

#endif  // KVX_RUNTIME_PURE_C_FILTER_H_
