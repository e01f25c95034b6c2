// The effect object that a host drives frame by frame.
#ifndef KVX_BOUNDARY_EFFECT_OBJECT_H_
#define KVX_BOUNDARY_EFFECT_OBJECT_H_

#include <memory>

#include "catalogue/description/filter_info.h"
#include "kvx/host.h"
#include "runtime/pure_c_filter.h"

namespace vizcore {

class KVXPureCPluginFilterEffect : public KVXEffect {
 public:
  explicit KVXPureCPluginFilterEffect(std::shared_ptr<NLEFilterInfo> description);

  // 4 for an empty pointer, which changes nothing; otherwise 0.
  int32_t SetFilter(std::shared_ptr<NLEPureCFilter> filter);

  int32_t Prepare(HostRenderContext* context) override;
  int32_t Render(HostRenderContext* context) override;

 private:
  void FetchParams(HostRenderContext& context);
  void FetchParam(HostRenderContext& context, int64_t frame, int32_t index);

  std::shared_ptr<NLEPureCFilter> filter_;
  std::shared_ptr<NLEFilterInfo> description_;
};

}  // namespace vizcore

#endif  // KVX_BOUNDARY_EFFECT_OBJECT_H_
