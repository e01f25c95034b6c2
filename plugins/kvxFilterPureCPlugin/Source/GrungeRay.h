// A poster of rays at half strength. The frame itself does not show through.
#ifndef KVX_SOURCE_GRUNGE_RAY_H_
#define KVX_SOURCE_GRUNGE_RAY_H_

#include <cstdint>
#include <string>

#include "MaterialFile.h"
#include "image.h"
#include "kvx/processor.h"

class CGrungeRay : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;

  // Takes the material of this name from the material directory. Without one frames stay unwritten.
  void SetUp(const std::u16string& fileName);

  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t percent_ = 50;  // of the scratch plane; no parameter changes it
  MaterialFile materialFile_;
  ImageHandle frameImage_;
};

CBaseFilterProc* MakeGrungeRay(int32_t id, int32_t width, int32_t height);

#endif  // KVX_SOURCE_GRUNGE_RAY_H_
