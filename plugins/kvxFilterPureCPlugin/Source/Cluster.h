// Every pixel in the colour of the nearest of some random points, by place and colour.
#ifndef KVX_SOURCE_CLUSTER_H_
#define KVX_SOURCE_CLUSTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CCluster : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double count_ = 20;
  double weight_ = 0.1;  // of place against colour, parameter / 100
};

#endif  // KVX_SOURCE_CLUSTER_H_
