// Tone effects that send bytes 0 to 2 of every pixel through one table of 256 entries.
#ifndef KVX_SOURCE_TONE_TABLE_H_
#define KVX_SOURCE_TONE_TABLE_H_

#include <cstdint>

#include "framework/pixels.h"
#include "kvx/processor.h"

// Moves bytes away from 128 for a level above 0, towards it below; 0 changes nothing. `level` may be any.
ByteTable ContrastTable(int32_t level);

class CBrightness : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t level_ = 54;
};

class CContrast : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t level_ = 60;
};

class CGamma : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double gamma_ = 50.0;  // the parameter before the first frame, the parameter / 50 after it
};

class CThresHold : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  uint8_t threshold_ = 100;
};

#endif  // KVX_SOURCE_TONE_TABLE_H_
