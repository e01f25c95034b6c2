// Colour effects that compute every pixel from itself alone.
#ifndef KVX_SOURCE_POINT_COLOR_H_
#define KVX_SOURCE_POINT_COLOR_H_

#include <cstdint>

#include "kvx/processor.h"

class CPrimaries : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double factor_ = 10;
};

class CExtractsRGB : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t r_ = 0, g_ = 0, b_ = 0;
};

class CColorDistanceFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t r_ = 44, g_ = 21, b_ = 89;
};

class CCoolBlue : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

#endif  // KVX_SOURCE_POINT_COLOR_H_
