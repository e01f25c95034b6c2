// Radial zoom blur.
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"

// All of this file is compiled once for each vector target. Wide vectors take blocks of columns, others runs of them.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "warp_explosion.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace warp_explosion {
namespace HWY_NAMESPACE {

namespace {

// Columns that read neighbouring columns.
struct Run {
  int32_t x;
  int32_t from;
  int32_t length;
};

// Samples of one 8.8 scale: how many there are, and what each column reads.
struct Zoom {
  int32_t scale;
  int32_t samples;
  std::vector<Run> runs;  // empty where blocks are drawn
};

int32_t Scaled(int32_t at, int32_t center, int32_t scale, int32_t size) {
  return ClampInt((((at - center) * scale) >> 8) + center, 0, size - 1);
}

// The samples lie so close that neighbours share an 8.8 scale: some 185 samples of a pixel are 25 reads.
std::vector<Zoom> MakeZooms(int32_t taps, const EngineImage& frame) {
  const int32_t step = static_cast<int32_t>((static_cast<int64_t>(taps) << 16) /
                                            (static_cast<int64_t>(std::max(frame.width, frame.height)) * (taps - 1)));
  std::vector<Zoom> zooms;
  for (int32_t i = 0; i < 2 * taps - 1; ++i) {
    const int32_t scale = (65536 + (taps - 1 + i) * step) >> 8;
    if (zooms.empty() || zooms.back().scale != scale) zooms.push_back({scale, 0, {}});
    ++zooms.back().samples;
  }
  return zooms;
}

void MakeRuns(std::vector<Zoom>& zooms, int32_t cx, int32_t width) {
  for (Zoom& zoom : zooms) {
    for (int32_t x = 0; x < width; ++x) {
      const int32_t from = Scaled(x, cx, zoom.scale, width);
      if (!zoom.runs.empty() && zoom.runs.back().from + zoom.runs.back().length == from) {
        ++zoom.runs.back().length;
      } else {
        zoom.runs.push_back({x, from, 1});
      }
    }
  }
}

// Four pixels at a time: a run may write beyond its end, as the next one writes over that. `out` has room for three
// more.
void ReadRow(const Zoom& zoom, const uint8_t* row, int32_t width, uint8_t* out) {
  for (const Run& run : zoom.runs) {
    const uint8_t* from = row + 4 * static_cast<ptrdiff_t>(run.from);
    uint8_t* to = out + 4 * static_cast<ptrdiff_t>(run.x);
    if (run.from + run.length + 3 <= width) {
      for (int32_t i = 0; i < run.length; i += 4) std::memcpy(to + 4 * i, from + 4 * i, 16);
    } else {
      for (int32_t i = 0; i < run.length; ++i) StorePixel(to + 4 * i, LoadPixel(from + 4 * i));
    }
  }
}

// `Sum` holds (2 * taps - 1) * 255.
template <typename Sum>
void DrawExplosion(const std::vector<Zoom>& zooms, int32_t taps, int32_t cy, const EngineImage& frame,
                   const EngineImage& copy, int32_t first, int32_t last) {
  const size_t bytes = static_cast<size_t>(frame.width) * 4;
  std::vector<uint8_t> zoomed(bytes + 12);
  std::vector<Sum> sums(bytes);
  // Half a part of the divisor keeps the product above the whole numbers that it must not fall below.
  const float part = 1.0f / static_cast<float>(taps);
  for (int32_t y = first; y < last; ++y) {
    std::fill(sums.begin(), sums.end(), Sum{0});
    for (const Zoom& zoom : zooms) {
      ReadRow(zoom, copy.Row(Scaled(y, cy, zoom.scale, frame.height)), frame.width, zoomed.data());
      const Sum samples = static_cast<Sum>(zoom.samples);
      for (size_t i = 0; i < bytes; ++i) sums[i] = static_cast<Sum>(sums[i] + samples * zoomed[i]);
    }
    for (size_t i = 0; i < bytes; ++i) {
      const float half = static_cast<float>(static_cast<int32_t>(sums[i] >> 1));
      zoomed[i] = static_cast<uint8_t>(static_cast<int32_t>((half + 0.5f) * part));
    }
    StoreColors(frame.Row(y), zoomed.data(), frame.width);
  }
}

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::Vec<hn::ScalableTag<uint32_t>>;
constexpr int32_t kBlock = HWY_LANES(uint32_t);

// Lane i is that of number place[i] of `low` and, from kBlock on, of `high`.
HWY_INLINE Words Pick(Words low, Words high, Words place) {
#if HWY_TARGET <= HWY_AVX3
  return Words{_mm512_permutex2var_epi32(low.raw, place.raw, high.raw)};
#else
  const Words fromLow{_mm256_permutevar8x32_epi32(low.raw, place.raw)};
  const Words fromHigh{_mm256_permutevar8x32_epi32(high.raw, place.raw)};
  const hn::ScalableTag<uint32_t> d;
  return hn::IfThenElse(hn::Lt(place, hn::Set(d, kBlock)), fromLow, fromHigh);
#endif
}

// What the columns of a block read lies within two blocks from `first` on.
struct BlockReads {
  int32_t first;
  uint8_t place[kBlock];
};

int32_t BlockBegin(int32_t block, int32_t width) {
  return std::min(block * kBlock, width - kBlock);
}

// All blocks of the first zoom, then those of the next. Empty if the frame is too narrow or a zoom too far for blocks.
std::vector<BlockReads> MakeBlocks(const std::vector<Zoom>& zooms, int32_t cx, int32_t width) {
  std::vector<BlockReads> made;
  if (width < 2 * kBlock) return made;
  const int32_t blocks = (width + kBlock - 1) / kBlock;
  for (const Zoom& zoom : zooms) {
    for (int32_t block = 0; block < blocks; ++block) {
      const int32_t begin = BlockBegin(block, width);
      BlockReads reads;
      reads.first = std::min(Scaled(begin, cx, zoom.scale, width), width - 2 * kBlock);
      for (int32_t i = 0; i < kBlock; ++i) {
        const int32_t place = Scaled(begin + i, cx, zoom.scale, width) - reads.first;
        if (place >= 2 * kBlock) return {};
        reads.place[i] = static_cast<uint8_t>(place);
      }
      made.push_back(reads);
    }
  }
  return made;
}

// Zooms whose samples add up within 16 bits.
struct Batch {
  size_t begin, end;
};

std::vector<Batch> MakeBatches(const std::vector<Zoom>& zooms) {
  std::vector<Batch> batches;
  int32_t samples = 0;
  for (size_t i = 0; i < zooms.size(); ++i) {
    samples += zooms[i].samples;
    if (batches.empty() || samples > UINT16_MAX / 255) {
      batches.push_back({i, i});
      samples = zooms[i].samples;
    }
    batches.back().end = i + 1;
  }
  return batches;
}

// A colour's mean as in the other form.
HWY_INLINE Words MeanOf(Words sums, float part) {
  const hn::ScalableTag<uint32_t> d;
  const hn::RebindToSigned<decltype(d)> di;
  const hn::RebindToFloat<decltype(d)> df;
  const auto half = hn::ConvertTo(df, hn::BitCast(di, hn::ShiftRight<1>(sums)));
  const auto mean = hn::Mul(hn::Add(half, hn::Set(df, 0.5f)), hn::Set(df, part));
  return hn::And(hn::BitCast(d, hn::ConvertTo(di, mean)), hn::Set(d, 255));
}

// A block of columns through all zooms, its sums in registers: blue and red in one word, green in another.
HWY_NOINLINE void DrawBlocks(const std::vector<Zoom>& zooms, const std::vector<BlockReads>& reads, int32_t taps,
                             int32_t cy, const EngineImage& frame, const EngineImage& copy, int32_t first,
                             int32_t last) {
  const hn::ScalableTag<uint32_t> d;
  const hn::Repartition<uint16_t, decltype(d)> d16;
  const hn::Rebind<uint8_t, decltype(d)> d8;
  const size_t blocks = reads.size() / zooms.size();
  const std::vector<Batch> batches = MakeBatches(zooms);
  const float part = 1.0f / static_cast<float>(taps);
  const Words low = hn::Set(d, 0xFFFF);
  std::vector<const uint8_t*> rows(zooms.size());
  for (int32_t y = first; y < last; ++y) {
    for (size_t i = 0; i < zooms.size(); ++i) rows[i] = copy.Row(Scaled(y, cy, zooms[i].scale, frame.height));
    for (size_t block = 0; block < blocks; ++block) {
      Words blue = hn::Zero(d), green = blue, red = blue;
      for (const Batch& batch : batches) {
        auto even = hn::Zero(d16), odd = even;
        for (size_t i = batch.begin; i < batch.end; ++i) {
          const BlockReads& read = reads[i * blocks + block];
          const auto* from = reinterpret_cast<const uint32_t*>(rows[i] + 4 * static_cast<ptrdiff_t>(read.first));
          const Words place = hn::PromoteTo(d, hn::LoadU(d8, read.place));
          const auto pixels = hn::BitCast(d16, Pick(hn::LoadU(d, from), hn::LoadU(d, from + kBlock), place));
          const auto samples = hn::Set(d16, static_cast<uint16_t>(zooms[i].samples));
          even = hn::Add(even, hn::Mul(hn::And(pixels, hn::Set(d16, 255)), samples));
          odd = hn::Add(odd, hn::Mul(hn::ShiftRight<8>(pixels), samples));
        }
        blue = hn::Add(blue, hn::And(hn::BitCast(d, even), low));
        red = hn::Add(red, hn::ShiftRight<16>(hn::BitCast(d, even)));
        green = hn::Add(green, hn::And(hn::BitCast(d, odd), low));
      }
      const int32_t begin = BlockBegin(static_cast<int32_t>(block), frame.width);
      auto* out = reinterpret_cast<uint32_t*>(frame.Row(y) + 4 * static_cast<ptrdiff_t>(begin));
      const Words greenRed = hn::Or(hn::ShiftLeft<8>(MeanOf(green, part)), hn::ShiftLeft<16>(MeanOf(red, part)));
      const Words colors = hn::Or(MeanOf(blue, part), greenRed);
      hn::StoreU(hn::Or(hn::And(hn::LoadU(d, out), hn::Set(d, kAlphaByte)), colors), d, out);
    }
  }
}

#endif

int32_t Explosion(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int32_t taps = std::max((Percent(record.radius) * frame.width) >> 10, 5);
  const int32_t cx = CenterX(record, frame), cy = CenterY(record, frame);
  std::vector<Zoom> zooms = MakeZooms(taps, frame);
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
  const std::vector<BlockReads> reads = MakeBlocks(zooms, cx, frame.width);
  if (!reads.empty()) {
    ForRowBands(frame.width, 0, frame.height,
                [&](int32_t first, int32_t last) { DrawBlocks(zooms, reads, taps, cy, frame, copy, first, last); });
    return kEngineDone;
  }
#endif
  MakeRuns(zooms, cx, frame.width);
  const auto draw = (2 * taps - 1) * 255 <= UINT16_MAX ? DrawExplosion<uint16_t> : DrawExplosion<uint32_t>;
  ForRowBands(frame.width, 0, frame.height,
              [&](int32_t first, int32_t last) { draw(zooms, taps, cy, frame, copy, first, last); });
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> Routines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kExplosion, Explosion}};
  return kRoutines;
}

}  // namespace HWY_NAMESPACE
}  // namespace warp_explosion
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace warp_explosion {
HWY_EXPORT(Routines);
}  // namespace warp_explosion

std::span<const WarpRoutine> ExplosionRoutines() {
  using namespace warp_explosion;
  return HWY_DYNAMIC_DISPATCH(Routines)();
}

#endif  // HWY_ONCE
