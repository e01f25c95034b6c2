#include "Source/3DGrid.h"

#include <algorithm>

#include "Source/ByteOffsets.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Depth", 0, 0, 100}, {u"Size", 0, 0, 100}};

// How a row or a column lies in its cell of `size`. The remainders are those of C: -1 % size is -1.
struct Place {
  bool leading;   // one behind a multiple
  bool trailing;  // two before a multiple
  bool inner;     // neither a multiple nor right before one

  Place(int32_t at, int32_t size)
      : leading((at - 1) % size == 0), trailing((at + 2) % size == 0), inner(at % size != 0 && (at + 1) % size != 0) {}
  int Kind() const { return leading | trailing << 1 | inner << 2; }
};

// Rows are tested before columns.
int32_t OffsetAt(const Place& row, const Place& column, int32_t lower, int32_t raise) {
  if (row.leading && column.inner) return lower;
  if (row.trailing && column.inner) return raise;
  if (column.leading && row.inner) return raise;
  if (column.trailing && row.inner) return lower;
  return 0;
}

ByteOffsets OffsetLine(const Place& row, int32_t width, int32_t size, int32_t lower, int32_t raise) {
  ByteOffsets line(4 * static_cast<size_t>(width), 0);
  for (int32_t x = 0; x < width; ++x) {
    std::fill_n(&line[4 * static_cast<size_t>(x)], 3,
                static_cast<int16_t>(OffsetAt(row, Place(x, size), lower, raise)));
  }
  return line;
}

void Bevel(ConstFrameView src, FrameView dst, int32_t size, int32_t lower, int32_t raise) {
  ByteOffsets lines[8];  // by kind of row
  for (int32_t y = 0; y < dst.height; ++y) {
    const Place row(y, size);
    ByteOffsets& line = lines[row.Kind()];
    if (line.empty()) line = OffsetLine(row, dst.width, size, lower, raise);
    AddOffsets(src.Row(y), line, dst.Row(y));
  }
}

}  // namespace

void C3DGrid::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {depth_, size_});
}

void C3DGrid::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  depth_ = Param(params, 1);
  size_ = Param(params, 2);
  if (width <= 0 || height <= 0) return;
  const int32_t size =
      size_ > 2 ? Trunc32(static_cast<float>(size_) * (static_cast<float>(width) / static_cast<float>(width))) : 2;
  // Beyond 255 an offset says no more.
  const auto offset = [](double depth) { return ClampInt(Trunc32(depth), -255, 255); };
  Bevel(ConstFrameView{src, width, height, srcStep}, FrameView{dst, width, height, dstStep}, size, offset(-depth_),
        offset(depth_));
}
