// A poster of rays at half strength. The frame itself does not show through.
#ifndef KVX_SOURCE_GRUNGE_RAY_H_
#define KVX_SOURCE_GRUNGE_RAY_H_

#include <cstdint>

#include "Source/MaterialFile.h"
#include "kvx/processor.h"
#include "platform/image.h"

class CGrungeRay : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;

  // Takes the material of this name from the material directory. Without one frames stay unwritten.
  void SetUp(const char* fileName);

  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t percent_ = 50;  // of the scratch plane; no parameter changes it
  MaterialFile materialFile_;
  ImageHandle frameImage_;
};

#endif  // KVX_SOURCE_GRUNGE_RAY_H_
