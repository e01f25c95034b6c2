#include "Source/DelayGrab.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/random.h"
#include "platform/clock.h"

namespace {

constexpr ParamRow kParams[] = {{u"Mode", 0, 1, 4}, {u"BlockSize", 0, 1, 10}};
constexpr uint32_t kFrames = 8;
using Frames = std::array<const uint8_t*, kFrames>;  // [n]: the frame of n frames ago

// How many frames ago, for the block at `row` and `column`, both counted from 1 at the bottom right.
int32_t Age(int32_t mode, int32_t row, int32_t column, int32_t down, int32_t across, Rand& rand) {
  const auto fromMiddle = [](int32_t at, int32_t count) { return std::abs(at - count / 2); };
  switch (mode) {
    case 1: {
      const double u = rand.Next() / 32767.0;
      return Trunc32(u * u * 16);
    }
    case 2:
      return fromMiddle(column, across) / 2;
    case 3:
      return fromMiddle(row, down) / 2;
    case 4: {
      const double x = fromMiddle(column, across);
      const double y = fromMiddle(row, down);
      return static_cast<int32_t>(std::sqrt(x * x + y * y)) >> 1;
    }
    default:
      return 0;
  }
}

void CopySinglePixels(const Frames& frames, const uint8_t* table, FrameView dst) {
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const size_t first = static_cast<size_t>(y) * static_cast<size_t>(dst.width);
      uint8_t* out = dst.Row(y);
      for (int32_t x = 0; x < dst.width; ++x) StorePixel(out, x, LoadPixel(frames[table[first + x]] + 4 * first, x));
    }
  });
}

// Rows and columns beyond the last whole block stay as the destination held them.
void CopyBlocks(const Frames& frames, const uint8_t* table, int32_t across, int32_t down, int32_t size, FrameView dst) {
  ForRowBands(dst.width, 0, down * size, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* ages = table + static_cast<size_t>(y / size) * static_cast<size_t>(across);
      const size_t rowStart = 4 * static_cast<size_t>(y) * static_cast<size_t>(dst.width);
      uint8_t* out = dst.Row(y);
      for (int32_t column = 0, x = 0; column < across; ++column) {
        const uint8_t* in = frames[ages[column]] + rowStart;
        for (const int32_t right = x + size; x < right; ++x) StorePixel(out, x, LoadPixel(in, x));
      }
    }
  });
}

}  // namespace

CDelayGrab::CDelayGrab(int32_t frameWidth, int32_t frameHeight) : CBaseFilterProc(frameWidth, frameHeight) {
  AllocateRing();
}

void CDelayGrab::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(mode_), static_cast<double>(blockSize_)});
}

void CDelayGrab::AllocateRing() {
  ring_.Allocate(PixelCount(width, height) * 4 * kFrames);
}

void CDelayGrab::RebuildTable() {
  tableBuilt_ = false;  // until it stands: memory may run out
  blocksAcross_ = width / blockSize_;
  blocksDown_ = height / blockSize_;
  table_.clear();
  table_.reserve(PixelCount(blocksAcross_, blocksDown_));
  Rand rand;
  rand.Seed(CalendarSeconds());
  for (int32_t row = blocksDown_; row > 0; --row) {
    for (int32_t column = blocksAcross_; column > 0; --column) {
      const int32_t age = Age(mode_, row, column, blocksDown_, blocksAcross_, rand);
      table_.push_back(static_cast<uint8_t>(std::min(age, 7)));
    }
  }
  tableBuilt_ = true;
}

void CDelayGrab::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  const int32_t mode = Trunc32(Param(params, 1));
  const int32_t blockSize = std::max(Trunc32(Param(params, 2)), 1);
  const bool reset = Param(params, 3) == 1.0;
  if (reset) {
    AllocateRing();
    head_ = 0;
  }
  if (!ring_) {
    CopyRows(src, dst, width, height, srcStep, dstStep);
    return;
  }
  if (reset || !tableBuilt_ || mode != mode_ || blockSize != blockSize_) {
    mode_ = mode;
    blockSize_ = blockSize;
    if (!reset) ring_.Clear();
    RebuildTable();
  }

  head_ = (head_ + kFrames - 1) % kFrames;
  const size_t frameBytes = 4 * PixelCount(width, height);
  CopyVisibleInBands(ConstFrameView{src, width, height, srcStep},
                     PackedDest(ring_.Data() + head_ * frameBytes, width, height));
  Frames frames;
  for (uint32_t age = 0; age < kFrames; ++age) frames[age] = ring_.Data() + (head_ + age) % kFrames * frameBytes;
  const FrameView out{dst, width, height, dstStep};
  if (blockSize_ == 1) {
    CopySinglePixels(frames, table_.data(), out);
  } else {
    CopyBlocks(frames, table_.data(), blocksAcross_, blocksDown_, blockSize_, out);
  }
}
