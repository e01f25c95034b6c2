// The processor: one instance of one effect, bound to one frame size. `FindEffectByID` makes them.
#ifndef KVX_PROCESSOR_H_
#define KVX_PROCESSOR_H_

#include <cstdint>
#include <string>

#include "kvx/records.h"

// A frame is rows of 32-bit pixels, bytes in memory order blue, green, red, alpha; row 0 comes first. Steps are bytes
// from row to row, at least 4 * width. Source and destination both have the processor's width and height.
//
// One thread at a time per processor. The owner deletes it through the virtual destructor.
class CBaseFilterProc {
 public:
  CBaseFilterProc(int32_t frameWidth, int32_t frameHeight) : width(frameWidth), height(frameHeight) {}
  CBaseFilterProc(const CBaseFilterProc&) = delete;
  CBaseFilterProc& operator=(const CBaseFilterProc&) = delete;
  virtual ~CBaseFilterProc() = default;

  // Fills `desc` with parameter `index`; leaves it alone if there is no such parameter.
  virtual void GetParamDesc(FilterParamDesc* /*desc*/, int32_t /*index*/) {}

  // Frames per second of the clip.
  virtual void SetFrameRate(double rate) { frameRate = rate; }

  // Renders one frame from `src` to `dst`. `src` is writable: some effects use it as scratch. May throw std::bad_alloc.
  virtual void Process(uint8_t* /*src*/, uint8_t* /*dst*/, int32_t /*srcStep*/, int32_t /*dstStep*/,
                       const ParamValueArray* /*params*/) {}

  int32_t width;
  int32_t height;
  double frameRate = 25.0;
  int32_t currentFrame = 0;  // whoever calls Process writes these two before each frame
  int32_t totalFrames = 0;
  uint64_t reserved0 = 0;
  std::string name;
  uint64_t reserved1 = 0;
};

// Effects that follow the frame count render in `ProcessTimed`; their `Process` does nothing.
class CTimeRelateFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;

  virtual void ProcessTimed(uint8_t* /*src*/, uint8_t* /*dst*/, const ParamValueArray* /*params*/,
                            int32_t /*currentFrameNumber*/, int32_t /*totalFrameCount*/, double /*rate*/,
                            int32_t /*srcStep*/, int32_t /*dstStep*/) {}
};

#endif  // KVX_PROCESSOR_H_
