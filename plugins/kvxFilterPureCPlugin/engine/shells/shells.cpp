#include "engine/shells/shells.h"
#include "engine/shells/engine_shell.h"

#include <algorithm>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

// The value as the field's type has it, into the field. Whether it is another than before.
bool Take(EngineRecord& record, const RecordField& field, double value) {
  const auto put = [](auto& place, auto taken) {
    const bool changed = place != taken;
    place = taken;
    return changed;
  };
  if (const auto* whole = std::get_if<int32_t EngineRecord::*>(&field)) return put(record.**whole, Trunc32(value));
  if (const auto* real = std::get_if<float EngineRecord::*>(&field))
    return put(record.**real, static_cast<float>(value));
  if (const auto* byte = std::get_if<uint8_t EngineRecord::*>(&field)) return put(record.**byte, TruncByte(value));
  return false;
}

double ValueOf(const EngineRecord& record, const ShellParam& param) {
  if (const auto* whole = std::get_if<int32_t EngineRecord::*>(&param.field)) return record.**whole;
  if (const auto* real = std::get_if<float EngineRecord::*>(&param.field)) return record.**real;
  if (const auto* byte = std::get_if<uint8_t EngineRecord::*>(&param.field)) return record.**byte;
  return param.constant;
}

}  // namespace

EngineShell::EngineShell(const ShellRow& row, int32_t frameWidth, int32_t frameHeight)
    : CBaseFilterProc(frameWidth, frameHeight), row_(row) {
  EngineCreate(&record_, row.code);
  if (!record_) return;
  for (const ShellStart& start : row.input.start) record_->*start.field = start.value;
}

EngineShell::~EngineShell() {
  EngineFree(record_);
}

void EngineShell::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  if (!desc || !record_ || index < 0 || static_cast<size_t>(index) >= row_.params.size()) return;
  const ShellParam& param = row_.params[static_cast<size_t>(index)];
  DescribeParam(desc, 0, {&param.row, 1}, {ValueOf(*record_, param)});
  desc->index = index;
  if (desc->maximum == kFrameWidth) desc->maximum = width;
  if (desc->maximum == kFrameHeight) desc->maximum = height;
}

void EngineShell::TakeParams(const ParamValueArray* params) {
  const ShellInput& input = row_.input;
  int k = 0;
  bool changed = false;
  for (const RecordField& field : input.fields) {
    const double value = Param(params, ++k);
    changed = Take(*record_, field, input.scaledLevel ? width * value / 640.0 : value) || changed;
  }
  if (changed) record_->dirtyFlags |= input.dirtyOnChange;
  if (input.frameRate) record_->frameRate = static_cast<float>(frameRate);
  if (input.frameNumber) record_->frameNumber = currentFrame;
}

// A routine that fails, or a record that could not be had, leaves a copy of the source or a part of the work: the frame
// counts as done.
void EngineShell::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (record_) TakeParams(params);
  const EngineImage from = MakeEngineImage(src, width, height, srcStep);
  const EngineImage image = MakeEngineImage(dst, width, height, dstStep);
  const auto copy = [&] { CopyRowsInBands({src, width, height, srcStep}, {dst, width, height, dstStep}); };
  // A copy also takes bytes between rows along, and leaves the rest of rows that are longer than the source's.
  const bool spared = src && srcStep == width * 4 && dstStep == width * 4 && EngineSparesCopy(record_);
  if (!spared) copy();
  const bool alike = src && srcStep >= width * 4;
  if (EngineRunFrom(record_, alike ? from : image, image, nullptr) != kEngineDone && spared) copy();
}

CBaseFilterProc* MakeEngineShell(const EffectRow& effect, int32_t width, int32_t height) {
  const auto rows = ShellRows();
  const auto row = std::find_if(rows.begin(), rows.end(), [=](const ShellRow& r) { return r.effectId == effect.id; });
  return row == rows.end() ? nullptr : new EngineShell(*row, width, height);
}
