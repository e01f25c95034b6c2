#include "Source/TVWallFilter.h"

#include "Source/TileRows.h"
#include "framework/numeric.h"
#include "framework/params.h"
#include "platform/stretch.h"

namespace {
constexpr ParamRow kParams[] = {{u"SpliteSize", 0, 2, 8}};
}

void CTVWallFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(split_)});
}

void CTVWallFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                            const ParamValueArray* params) {
  const int32_t split = Trunc32(Param(params, 1));
  const int32_t tileWidth = split > 0 ? width / split : 0;
  const int32_t tileHeight = split > 0 ? height / split : 0;
  if (!tile_ || split != split_) {
    split_ = split;
    tile_.Allocate(4 * PixelCount(tileWidth, tileHeight));
  }
  if (!tile_) return;

  StretchLinear({src, width, height, srcStep}, {tile_.Data(), tileWidth, tileHeight, ptrdiff_t{tileWidth} * 4}, 4);
  LineTile(PackedDest(tile_.Data(), tileWidth, tileHeight));

  const ConstFrameView tile = PackedSource(tile_.Data(), tileWidth, tileHeight);
  const FrameView out{dst, width, height, dstStep};
  const int32_t columns = width / tileWidth;
  const int32_t rows = height / tileHeight;
  for (int32_t y = 0; y < tileHeight; ++y) {
    for (int32_t column = 0; column < columns; ++column) {
      CopyPixels(tile.Row(y), out.Pixel(tileWidth * column, y), tileWidth);
    }
    for (int32_t row = 1; row < rows; ++row) CopyPixels(out.Row(y), out.Row(y + tileHeight * row), tileWidth * columns);
  }
}
