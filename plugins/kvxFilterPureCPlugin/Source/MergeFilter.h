// Frame and material through a two-input routine of the engine. The effects differ by code and material file alone.
#ifndef KVX_SOURCE_MERGE_FILTER_H_
#define KVX_SOURCE_MERGE_FILTER_H_

#include <cstdint>

#include "Source/MaterialFile.h"
#include "engine/engine.h"
#include "kvx/processor.h"
#include "platform/image.h"

class CMergeFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  ~CMergeFilter() override;

  // Takes the engine code and the material of this name from the material directory. Without a material (no name, no
  // such file, no picture in it) frames show the source, except for the code that needs none.
  void SetUp(uint32_t code, const char* fileName);

  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void TakeParams(const ParamValueArray* params);
  void MountMaterial();

  EngineRecord* engine_ = nullptr;
  MaterialFile materialFile_;
  ImageHandle material_;  // at the frame's size, last row first; null without material
};

#endif  // KVX_SOURCE_MERGE_FILTER_H_
