#include "Source/Curves.h"

#include <algorithm>
#include <cstring>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"
#include "framework/pixels.h"

namespace {

constexpr ParamRow kParams[] = {
    {u"Channel", 1, 0, 1}, {u"Number", 0, 1, 100}, {u"LineWidth", 0, 1, 100}, {u"NotFillBlack", 1, 0, 1}};

// The grid along one axis: lines of `line` + 1 pixels at every multiple of `pitch`.
struct Grid {
  int32_t pitch;
  int32_t line;

  // A pitch of 0 has no cells.
  bool InCell(int32_t at) const { return pitch > 0 && at % pitch > line; }
};

Grid GridOf(int32_t size, int32_t shrink, int32_t lineWidth) {
  const float length = static_cast<float>(size);
  const int32_t pitch = Trunc32(length - static_cast<float>(shrink) / 100.0f * length);
  const float line = static_cast<float>(pitch) * (static_cast<float>(lineWidth) / 100.0f);
  return {pitch, Trunc32(std::max(1.0f, line))};
}

// Byte 3 of the destination stays as it is.
void DrawGrid(ConstFrameView src, FrameView dst, const uint32_t* cellColumns, const Grid& rows, bool lighten,
              bool keepLines) {
  constexpr uint32_t kColor = 0x00FFFFFF;
  const uint32_t lineMask = keepLines ? kColor : 0;
  // A light cell is half the source and 127: the sum stays within its byte.
  const int shift = lighten ? 1 : 0;
  const uint32_t cellMask = lighten ? 0x007F7F7F : kColor;
  const uint32_t lift = lighten ? 0x007F7F7F : 0;
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    const uint32_t cellRow = rows.InCell(y) ? ~0u : 0;
    for (int32_t x = 0; x < dst.width; ++x) {
      const uint32_t pixel = LoadPixel(in + 4 * x);
      const uint32_t old = LoadPixel(out + 4 * x);
      const uint32_t isCell = cellColumns[x] & cellRow;
      const uint32_t cell = (pixel >> shift & cellMask) + lift;
      const uint32_t color = (cell & isCell) | (pixel & lineMask & ~isCell);
      const uint32_t result = color | (old & ~kColor);
      StorePixel(out + 4 * x, result);
    }
  }
}

}  // namespace

void CCurves::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {static_cast<double>(channel_), static_cast<double>(number_), static_cast<double>(lineWidth_),
                 static_cast<double>(notFillBlack_)});
}

void CCurves::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  channel_ = Trunc32(Param(params, 1));
  number_ = Trunc32(Param(params, 2));
  lineWidth_ = Trunc32(Param(params, 3));
  notFillBlack_ = Trunc32(Param(params, 4));
  const int32_t shrink = ClampInt(WrapSub(number_, 5), 1, 95);
  const Grid columns = GridOf(width, shrink, lineWidth_);
  const Grid rows = GridOf(height, shrink, lineWidth_);
  cellColumns_.resize(static_cast<size_t>(std::max(width, 0)));
  for (int32_t x = 0; x < width; ++x) cellColumns_[static_cast<size_t>(x)] = columns.InCell(x) ? ~0u : 0;
  DrawGrid({src, width, height, srcStep}, {dst, width, height, dstStep}, cellColumns_.data(), rows, channel_ != 0,
           notFillBlack_ != 0);
}
