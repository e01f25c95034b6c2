// Tone effects that send bytes 0 to 2 of every pixel through one table of 256 entries.
#ifndef KVX_SOURCE_TONE_TABLE_H_
#define KVX_SOURCE_TONE_TABLE_H_

#include <array>
#include <cstdint>

#include "kvx/processor.h"

using ToneTable = std::array<uint8_t, 256>;

class CBrightness : public CBaseFilterProc {
 public:
  CBrightness(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t level_ = 54;
  ToneTable table_;
};

class CContrast : public CBaseFilterProc {
 public:
  CContrast(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t level_ = 60;
  ToneTable table_;
};

class CGamma : public CBaseFilterProc {
 public:
  CGamma(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double gamma_ = 50.0;  // the parameter before the first frame, the parameter / 50 after it
  ToneTable table_;
};

class CThresHold : public CBaseFilterProc {
 public:
  CThresHold(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  uint8_t threshold_ = 100;
  ToneTable table_;
};

#endif  // KVX_SOURCE_TONE_TABLE_H_
