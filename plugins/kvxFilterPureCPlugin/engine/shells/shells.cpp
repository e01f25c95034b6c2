#include "engine/shells/shells.h"
#include "engine/shells/engine_shell.h"

#include <algorithm>

#include "framework/numeric.h"
#include "framework/params.h"

EngineShell::EngineShell(const ShellRow& row, int32_t frameWidth, int32_t frameHeight)
    : CBaseFilterProc(frameWidth, frameHeight), row_(row) {
  EngineCreate(&record_, row.code);
  if (!record_) return;
  if (row.code == 61) {  // snow
    record_->direction = 1;
    record_->level = 20;
    record_->radius = 80;
  } else if (row.code == 62) {  // bubbles
    record_->direction = 1;
    record_->radius = 20;
    record_->level = 30;
  }
}

EngineShell::~EngineShell() {
  EngineFree(record_);
}

double EngineShell::DefaultOf(const ShellParam& param) const {
  switch (param.field) {
    case ShellField::kConstant:
      return param.constant;
    case ShellField::kLevel:
      return record_->level;
    case ShellField::kRadius:
      return record_->radius;
    case ShellField::kPosX:
      return record_->posX;
    case ShellField::kPosY:
      return record_->posY;
    case ShellField::kPointX:
      return record_->pointX;
    case ShellField::kPointY:
      return record_->pointY;
    case ShellField::kColorRed:
      return record_->colorRed;
    case ShellField::kColorGreen:
      return record_->colorGreen;
    case ShellField::kColorBlue:
      return record_->colorBlue;
    case ShellField::kDirection:
      return record_->direction;
    case ShellField::kRectLeft:
      return record_->rectLeft;
    case ShellField::kRectTop:
      return record_->rectTop;
    case ShellField::kRectRight:
      return record_->rectRight;
    case ShellField::kRectBottom:
      return record_->rectBottom;
  }
  return 0;
}

void EngineShell::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  if (!desc || !record_ || index < 0 || static_cast<size_t>(index) >= row_.params.size()) return;
  const ShellParam& param = row_.params[static_cast<size_t>(index)];
  DescribeParam(desc, 0, {&param.row, 1}, {DefaultOf(param)});
  desc->index = index;
  if (desc->maximum == kFrameWidth) desc->maximum = width;
  if (desc->maximum == kFrameHeight) desc->maximum = height;
}

void EngineShell::TakeParams(const ParamValueArray* params) {
  EngineRecord& record = *record_;
  const auto integer = [params](int k) { return Trunc32(Param(params, k)); };
  switch (row_.group) {
    case ShellGroup::kLevel:
      record.level = integer(1);
      break;
    case ShellGroup::kScaledLevel:
      record.level = Trunc32(width * Param(params, 1) / 640.0);
      break;
    case ShellGroup::kStar:
      record.level = integer(1);
      record.frameRate = static_cast<float>(frameRate);
      break;
    case ShellGroup::kParticles:
      record.level = integer(1);
      record.direction = integer(2);
      record.radius = integer(3);
      record.frameRate = static_cast<float>(frameRate);
      break;
    case ShellGroup::kPoint:
      record.pointX = static_cast<float>(Param(params, 1));
      record.pointY = static_cast<float>(Param(params, 2));
      record.radius = integer(3);
      break;
    case ShellGroup::kColor:
      record.colorRed = TruncByte(Param(params, 1));
      record.colorGreen = TruncByte(Param(params, 2));
      record.colorBlue = TruncByte(Param(params, 3));
      break;
    case ShellGroup::kSpot:
      record.posX = integer(1);
      record.posY = integer(2);
      record.radius = integer(3);
      record.level = integer(4);
      break;
    case ShellGroup::kMapLevel:
      if (integer(1) != record.posX || integer(2) != record.posY || integer(3) != record.level) {
        record.dirtyFlags = kDirtyAll;
      }
      record.posX = integer(1);
      record.posY = integer(2);
      record.level = integer(3);
      break;
    case ShellGroup::kDirected:
      record.level = integer(1);
      record.direction = integer(2);
      break;
    case ShellGroup::kDrop:
      record.posX = integer(1);
      record.posY = integer(2);
      record.level = integer(3);
      break;
    case ShellGroup::kMapRadius:
      if (integer(1) != record.posX || integer(2) != record.posY || integer(3) != record.radius) {
        record.posX = integer(1);
        record.posY = integer(2);
        record.radius = integer(3);
        record.dirtyFlags |= kDirtyMap;
      }
      break;
    case ShellGroup::kNone:
    case ShellGroup::kVignette:
    case ShellGroup::kBadSignal:
      break;
  }
}

void EngineShell::TakeLateParams(const ParamValueArray* params) {
  if (row_.group == ShellGroup::kVignette) record_->level = Trunc32(Param(params, 1));
  if (row_.group == ShellGroup::kBadSignal) {
    record_->frameRate = static_cast<float>(frameRate);
    record_->frameNumber = currentFrame;
  }
}

// A routine that fails, or a record that could not be had, leaves a copy of the source or a part of the work: the frame
// counts as done.
void EngineShell::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (record_) {
    TakeParams(params);
    TakeLateParams(params);
  }
  const EngineImage from = MakeEngineImage(src, width, height, srcStep);
  const EngineImage image = MakeEngineImage(dst, width, height, dstStep);
  const auto copy = [&] { CopyRows(src, dst, width, height, srcStep, dstStep); };
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
