// Background fills, for a picture that does not cover its frame: the middle of the frame, scaled up and treated, shows
// where the frame is transparent.
#ifndef KVX_SOURCE_BGF_COMMON_H_
#define KVX_SOURCE_BGF_COMMON_H_

#include <cstdint>
#include <vector>

#include "framework/frame.h"
#include "kvx/processor.h"

// The box in the middle of the frame that becomes the background: inclusive limits, inside the frame.
struct FillBox {
  int32_t left, top, right, bottom;

  int32_t Width() const { return right - left + 1; }
  int32_t Height() const { return bottom - top + 1; }
};

// What a fill knows besides the picture.
struct FillInput {
  float level;  // the fourth parameter
  int32_t currentFrame;
};

// One fill of the family.
struct FillVariant {
  const char16_t* levelName;
  double patternLevel;
  int32_t bgLuminance;
  bool blurBefore;
  // Paints bytes 0 to 2 of the box in place.
  void (*patternRoutine)(FrameView box, const FillInput& input) = nullptr;
  // In place of it: within the place of the box the background is not blurred.
  bool sharpMiddle = false;
};

class BGFCommon : public CBaseFilterProc {
 public:
  BGFCommon(int32_t frameWidth, int32_t frameHeight, const FillVariant& variant);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  const FillVariant& variant_;
  // Packed frames. The box lies in their upper left corners.
  std::vector<uint8_t> boxBuffer_;
  std::vector<uint8_t> sharpBuffer_;  // of fills with a sharp middle only
};

#endif  // KVX_SOURCE_BGF_COMMON_H_
