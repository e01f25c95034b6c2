// A surfer on water: something unseen races over the surface on a winding course and leaves its wake.
#ifndef KVX_SOURCE_WATER_SUFFER_FILTER_H_
#define KVX_SOURCE_WATER_SUFFER_FILTER_H_

#include <cstdint>

#include "Source/WaterSurface.h"
#include "kvx/processor.h"

class CWaterSuffer : public CBaseFilterProc {
 public:
  CWaterSuffer(int32_t frameWidth, int32_t frameHeight);
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 protected:
  // One pass of drive, picture and wave over the stored destination.
  virtual void WaterStep();

 private:
  void Drive();
  void SineDrop(int32_t x, int32_t y, int32_t r, int32_t amount);

  int32_t damping_ = 4;
  WaterRandom random_;
  int32_t phaseX_;
  int32_t phaseY_;
  int32_t lastX_ = 80;
  int32_t lastY_ = 80;
  WaterSurface surface_;
  uint8_t* destPixels_ = nullptr;
  int32_t destStep_ = 0;
};

#endif  // KVX_SOURCE_WATER_SUFFER_FILTER_H_
