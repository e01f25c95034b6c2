#include "Source/Mosaics.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"XBlockSize", 0, 1, 100}, {u"YBlockSize", 0, 1, 100}};

// Adds the rows of one band, byte by byte.
void SumColumns(ConstFrameView src, int32_t top, int32_t bottom, std::vector<uint32_t>& sums) {
  std::fill(sums.begin(), sums.end(), 0);
  for (int32_t y = top; y < bottom; ++y) {
    const uint8_t* in = src.Row(y);
    for (size_t i = 0; i < sums.size(); ++i) sums[i] += in[i];
  }
}

// Rows of blocks from `begin` to `end` - 1. The blocks at right and bottom have what the full ones leave.
void DrawBlocks(ConstFrameView src, FrameView dst, int32_t blockWidth, int32_t blockHeight, int32_t begin,
                int32_t end) {
  const size_t rowBytes = static_cast<size_t>(dst.width) * 4;
  std::vector<uint32_t> sums(rowBytes);
  for (int32_t row = begin; row < end; ++row) {
    const int32_t top = row * blockHeight;
    const int32_t bottom = std::min(top + blockHeight, dst.height);
    SumColumns(src, top, bottom, sums);
    uint8_t* first = dst.Row(top);
    for (int32_t left = 0; left < dst.width; left += blockWidth) {
      const int32_t right = std::min(left + blockWidth, dst.width);
      uint64_t total[4] = {};
      for (int32_t x = left; x < right; ++x) {
        for (int c = 0; c < 4; ++c) total[c] += sums[static_cast<size_t>(x) * 4 + static_cast<size_t>(c)];
      }
      const uint64_t pixels = static_cast<uint64_t>(right - left) * static_cast<uint64_t>(bottom - top);
      uint8_t mean[4];
      for (int c = 0; c < 4; ++c) mean[c] = static_cast<uint8_t>(total[c] / pixels);
      for (int32_t x = left; x < right; ++x) std::memcpy(first + static_cast<ptrdiff_t>(x) * 4, mean, 4);
    }
    for (int32_t y = top + 1; y < bottom; ++y) std::memcpy(dst.Row(y), first, rowBytes);
  }
}

void Mosaic(ConstFrameView src, FrameView dst, int32_t blockWidth, int32_t blockHeight) {
  if (dst.Empty()) return;
  ForRowBands(int64_t{dst.width} * blockHeight, 0, (dst.height - 1) / blockHeight + 1,
              [=](int32_t begin, int32_t end) { DrawBlocks(src, dst, blockWidth, blockHeight, begin, end); });
}

}  // namespace

void CMosaics::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {blockWidth_ - 1.0, blockHeight_ - 1.0});
}

void CMosaics::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  blockWidth_ = Trunc32(Param(params, 1) + 1);
  blockHeight_ = Trunc32(Param(params, 2) + 1);
  // A block of no size counts as one pixel, one beyond the frame as the frame.
  Mosaic(PackedSource(src, width, height), PackedDest(dst, width, height), ClampInt(blockWidth_, 1, std::max(width, 1)),
         ClampInt(blockHeight_, 1, std::max(height, 1)));
}
