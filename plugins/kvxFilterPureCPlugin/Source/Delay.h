// Shows the picture of some time ago.
#ifndef KVX_SOURCE_DELAY_H_
#define KVX_SOURCE_DELAY_H_

#include <cstdint>
#include <list>
#include <memory>

#include "kvx/processor.h"

class CDelay : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  struct Frame {
    double time;
    std::unique_ptr<uint8_t[]> pixels;
  };
  void Remember(double time, const uint8_t* src, std::unique_ptr<uint8_t[]> spare);

  double delay_ = 0;         // in the unit of the frames' times
  std::list<Frame> frames_;  // in the order of their arrival
};

#endif  // KVX_SOURCE_DELAY_H_
