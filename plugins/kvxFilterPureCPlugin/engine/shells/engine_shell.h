// A processor without code of its own: a row says which engine code it runs, what it reports and what it takes.
#ifndef KVX_ENGINE_SHELLS_ENGINE_SHELL_H_
#define KVX_ENGINE_SHELLS_ENGINE_SHELL_H_

#include <cstdint>
#include <span>
#include <variant>

#include "engine/engine.h"
#include "framework/params.h"
#include "kvx/processor.h"

// A field of the record. A value goes into it by its type: cut to a whole number, as a float, or as the low byte of the
// cut number.
using RecordField =
    std::variant<std::monostate, int32_t EngineRecord::*, float EngineRecord::*, uint8_t EngineRecord::*>;

// Stands for the frame's width or height as a maximum.
inline constexpr double kFrameWidth = -1;
inline constexpr double kFrameHeight = -2;

// A reported parameter: its default is the field's value, or a constant where there is no field.
struct ShellParam {
  ParamRow row;
  RecordField field;
  double constant = 0;
};

// A value that a fresh record starts with instead of the engine's own.
struct ShellStart {
  int32_t EngineRecord::*field;
  int32_t value;
};

// What a shell takes before the engine runs.
struct ShellInput {
  std::span<const RecordField> fields;  // of parameters 1, 2, ...
  bool scaledLevel = false;             // the level is scaled to the frame's width
  bool frameRate = false;
  bool frameNumber = false;
  uint32_t dirtyOnChange = 0;  // flags that a change of a field sets
  std::span<const ShellStart> start = {};
};

struct ShellRow {
  int32_t effectId;
  code::EngineCode code;
  const ShellInput& input;
  std::span<const ShellParam> params;
};

std::span<const ShellRow> ShellRows();

class EngineShell : public CBaseFilterProc {
 public:
  EngineShell(const ShellRow& row, int32_t frameWidth, int32_t frameHeight);
  ~EngineShell() override;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void TakeParams(const ParamValueArray* params);

  const ShellRow& row_;
  EngineRecord* record_ = nullptr;
};

#endif  // KVX_ENGINE_SHELLS_ENGINE_SHELL_H_
