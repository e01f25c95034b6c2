// The picture in a ring of small copies of itself.
#ifndef KVX_SOURCE_TEH_ROXX_FILTER_H_
#define KVX_SOURCE_TEH_ROXX_FILTER_H_

#include <cstdint>
#include <vector>

#include "kvx/processor.h"

class CTehRoxxFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  std::vector<uint8_t> tile_;
};

#endif  // KVX_SOURCE_TEH_ROXX_FILTER_H_
