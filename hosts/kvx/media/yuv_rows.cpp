#include "hosts/kvx/media/yuv_rows.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "media/yuv_rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvx {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using D32 = hn::ScalableTag<int32_t>;
using V32 = hn::Vec<D32>;
using D32u = hn::RebindToUnsigned<D32>;
using D16 = hn::Rebind<uint16_t, D32>;  // a pair of columns each
using D8 = hn::Rebind<uint8_t, D32>;

// The most columns that one step takes: what is left over of a row goes through buffers of this length.
constexpr size_t kMostColumns = 2 * hn::MaxLanes(D32());

V32 LoadBytes(const uint8_t* bytes) {
  return hn::PromoteTo(D32(), hn::LoadU(D8(), bytes));
}

void StoreBytes(V32 values, uint8_t* bytes) {
  hn::StoreU(hn::DemoteTo(D8(), values), D8(), bytes);  // saturates
}

// The low bytes of two vectors as neighbours.
void StorePairs(V32 even, V32 odd, uint8_t* bytes) {
  const D32 d;
  const V32 most = hn::Set(d, 255);
  const V32 low = hn::Min(hn::Max(even, hn::Zero(d)), most);
  const V32 high = hn::Min(hn::Max(odd, hn::Zero(d)), most);
  const auto pairs = hn::DemoteTo(D16(), hn::Or(low, hn::ShiftLeft<8>(high)));
  hn::StoreU(pairs, D16(), reinterpret_cast<uint16_t*>(bytes));
}

struct Colors {
  V32 red, green, blue;
};

// What the differences add to a pixel, rounding included.
Colors ColorsOf(V32 u, V32 v, const YuvToRgb& by) {
  const D32 d;
  const V32 middle = hn::Set(d, 128), half = hn::Set(d, 4096);
  u = hn::Sub(u, middle);
  v = hn::Sub(v, middle);
  return {hn::Add(hn::Mul(v, hn::Set(d, by.vToRed)), half),
          hn::Add(hn::Add(hn::Mul(u, hn::Set(d, by.uToGreen)), hn::Mul(v, hn::Set(d, by.vToGreen))), half),
          hn::Add(hn::Mul(u, hn::Set(d, by.uToBlue)), half)};
}

V32 Pixel(V32 y, const Colors& colors, const YuvToRgb& by) {
  const D32 d;
  y = hn::Mul(hn::Sub(y, hn::Set(d, by.black)), hn::Set(d, by.y));
  const auto channel = [&](V32 color) {
    const V32 value = hn::ShiftRight<13>(hn::Add(y, color));
    return hn::Min(hn::Max(value, hn::Zero(d)), hn::Set(d, 255));
  };
  const V32 green = hn::ShiftLeft<8>(channel(colors.green));
  const V32 red = hn::ShiftLeft<16>(channel(colors.red));
  const V32 opaque = hn::Set(d, static_cast<int32_t>(0xFF000000u));
  return hn::Or(hn::Or(channel(colors.blue), green), hn::Or(red, opaque));
}

// A step of two columns for every lane. The differences of both are one.
void ToBgraHalved(const uint8_t* y, const uint8_t* u, const uint8_t* v, const YuvToRgb& by, uint8_t* bgra) {
  const D32 d;
  const auto pairs = hn::PromoteTo(d, hn::LoadU(D16(), reinterpret_cast<const uint16_t*>(y)));
  const V32 even = hn::And(pairs, hn::Set(d, 255));
  const V32 odd = hn::ShiftRight<8>(pairs);
  const Colors colors = ColorsOf(LoadBytes(u), LoadBytes(v), by);
  const D32u out;
  hn::StoreInterleaved2(hn::BitCast(out, Pixel(even, colors, by)), hn::BitCast(out, Pixel(odd, colors, by)), out,
                        reinterpret_cast<uint32_t*>(bgra));
}

void ToBgraWhole(const uint8_t* y, const uint8_t* u, const uint8_t* v, const YuvToRgb& by, uint8_t* bgra) {
  const V32 pixel = Pixel(LoadBytes(y), ColorsOf(LoadBytes(u), LoadBytes(v), by), by);
  hn::StoreU(pixel, D32(), reinterpret_cast<int32_t*>(bgra));
}

void ToBgra(const uint8_t* y, const uint8_t* u, const uint8_t* v, int shift, const YuvToRgb& by, uint8_t* bgra,
            size_t width) {
  const size_t step = hn::Lanes(D32()) << shift;
  const auto convert = shift == 1 ? ToBgraHalved : ToBgraWhole;
  size_t x = 0;
  for (; x + step <= width; x += step) convert(y + x, u + (x >> shift), v + (x >> shift), by, bgra + 4 * x);
  if (x == width) return;
  uint8_t rest[3][kMostColumns] = {}, out[4 * kMostColumns];
  std::memcpy(rest[0], y + x, width - x);
  std::memcpy(rest[1], u + (x >> shift), (width - x) >> shift);
  std::memcpy(rest[2], v + (x >> shift), (width - x) >> shift);
  convert(rest[0], rest[1], rest[2], by, out);
  std::memcpy(bgra + 4 * x, out, 4 * (width - x));
}

// Samples with 6 more bits than a byte: weighted channels, from 16 or 128 on.
template <int kFrom>
V32 Sample(V32 pixel, const int32_t (&weights)[3]) {
  const D32 d;
  const V32 byte = hn::Set(d, 255);
  const V32 red = hn::And(hn::ShiftRight<16>(pixel), byte);
  const V32 green = hn::And(hn::ShiftRight<8>(pixel), byte);
  const V32 sum = hn::Add(hn::Add(hn::Mul(red, hn::Set(d, weights[0])), hn::Mul(green, hn::Set(d, weights[1]))),
                          hn::Mul(hn::And(pixel, byte), hn::Set(d, weights[2])));
  return hn::ShiftRight<9>(hn::Add(sum, hn::Set(d, (kFrom << 15) + 256)));
}

// Both take samples with 7 more bits.
V32 SpreadLuma(V32 y) {
  const D32 d;
  y = hn::Mul(hn::Min(y, hn::Set(d, 30189)), hn::Set(d, 19077));
  return hn::ShiftRight<14>(hn::Sub(y, hn::Set(d, 39057361)));
}
V32 SpreadColor(V32 c) {
  const D32 d;
  c = hn::Mul(hn::Min(c, hn::Set(d, 30775)), hn::Set(d, 4663));
  return hn::ShiftRight<12>(hn::Sub(c, hn::Set(d, 9289992)));
}

V32 RoundToByte(V32 sample) {
  return hn::ShiftRight<7>(hn::Add(sample, hn::Set(D32(), 64)));
}

V32 Luma(V32 pixel, const RgbToYuv& by) {
  const V32 y = hn::ShiftLeft<1>(Sample<16>(pixel, by.y));
  return RoundToByte(by.fullRange ? SpreadLuma(y) : y);
}

void LumaPart(const uint8_t* bgra, const RgbToYuv& by, uint8_t* y) {
  const D32 d;
  V32 even = hn::Zero(d), odd = even;
  hn::LoadInterleaved2(d, reinterpret_cast<const int32_t*>(bgra), even, odd);
  StorePairs(Luma(even, by), Luma(odd, by), y);
}

bool ToLuma(const uint8_t* bgra, const RgbToYuv& by, uint8_t* y, size_t width) {
  const D32 d;
  const size_t step = 2 * hn::Lanes(d);
  V32 all = hn::Set(d, -1);
  size_t x = 0;
  for (; x + step <= width; x += step) {
    V32 even = hn::Zero(d), odd = even;
    hn::LoadInterleaved2(d, reinterpret_cast<const int32_t*>(bgra + 4 * x), even, odd);
    all = hn::And(all, hn::And(even, odd));
    StorePairs(Luma(even, by), Luma(odd, by), y + x);
  }
  bool opaque = hn::AllTrue(d, hn::Eq(hn::ShiftRight<24>(all), hn::Set(d, -1)));
  if (x == width) return opaque;
  uint8_t rest[4 * kMostColumns] = {}, out[kMostColumns];
  std::memcpy(rest, bgra + 4 * x, 4 * (width - x));
  LumaPart(rest, by, out);
  std::memcpy(y + x, out, width - x);
  for (; x < width; ++x) opaque = opaque && bgra[4 * x + 3] == 255;
  return opaque;
}

// A sample of colour with 7 more bits: of one column, or of two.
template <bool kHalved>
V32 ColorSample(const uint8_t* bgra, const int32_t (&weights)[3], bool fullRange) {
  const D32 d;
  V32 sample = hn::Zero(d);
  if constexpr (kHalved) {
    V32 even = hn::Zero(d), odd = even;
    hn::LoadInterleaved2(d, reinterpret_cast<const int32_t*>(bgra), even, odd);
    sample = hn::Add(Sample<128>(even, weights), Sample<128>(odd, weights));
  } else {
    sample = hn::ShiftLeft<1>(Sample<128>(hn::LoadU(d, reinterpret_cast<const int32_t*>(bgra)), weights));
  }
  return fullRange ? SpreadColor(sample) : sample;
}

template <bool kHalved>
void ColorPart(const uint8_t* first, const uint8_t* second, const RgbToYuv& by, uint8_t* u, uint8_t* v) {
  V32 sampleU = ColorSample<kHalved>(first, by.u, by.fullRange);
  V32 sampleV = ColorSample<kHalved>(first, by.v, by.fullRange);
  if (!second) {
    StoreBytes(RoundToByte(sampleU), u);
    StoreBytes(RoundToByte(sampleV), v);
    return;
  }
  const V32 half = hn::Set(D32(), 128);
  sampleU = hn::Add(sampleU, ColorSample<kHalved>(second, by.u, by.fullRange));
  sampleV = hn::Add(sampleV, ColorSample<kHalved>(second, by.v, by.fullRange));
  StoreBytes(hn::ShiftRight<8>(hn::Add(sampleU, half)), u);
  StoreBytes(hn::ShiftRight<8>(hn::Add(sampleV, half)), v);
}

void ToColor(const uint8_t* first, const uint8_t* second, int shift, const RgbToYuv& by, uint8_t* u, uint8_t* v,
             size_t width) {
  const size_t step = hn::Lanes(D32()) << shift;
  const auto convert = shift == 1 ? ColorPart<true> : ColorPart<false>;
  size_t x = 0;
  for (; x + step <= width; x += step) {
    convert(first + 4 * x, second ? second + 4 * x : nullptr, by, u + (x >> shift), v + (x >> shift));
  }
  if (x == width) return;
  uint8_t rest[2][4 * kMostColumns] = {}, outU[kMostColumns], outV[kMostColumns];
  std::memcpy(rest[0], first + 4 * x, 4 * (width - x));
  if (second) std::memcpy(rest[1], second + 4 * x, 4 * (width - x));
  convert(rest[0], second ? rest[1] : nullptr, by, outU, outV);
  std::memcpy(u + (x >> shift), outU, (width - x) >> shift);
  std::memcpy(v + (x >> shift), outV, (width - x) >> shift);
}

}  // namespace HWY_NAMESPACE
}  // namespace kvx
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvx {

HWY_EXPORT(ToBgra);
HWY_EXPORT(ToLuma);
HWY_EXPORT(ToColor);

void YuvRowToBgra(const uint8_t* y, const uint8_t* u, const uint8_t* v, int shift, const YuvToRgb& by, uint8_t* bgra,
                  size_t width) {
  HWY_DYNAMIC_DISPATCH(ToBgra)(y, u, v, shift, by, bgra, width);
}
bool BgraRowToLuma(const uint8_t* bgra, const RgbToYuv& by, uint8_t* y, size_t width) {
  return HWY_DYNAMIC_DISPATCH(ToLuma)(bgra, by, y, width);
}
void BgraRowToColor(const uint8_t* first, const uint8_t* second, int shift, const RgbToYuv& by, uint8_t* u, uint8_t* v,
                    size_t width) {
  HWY_DYNAMIC_DISPATCH(ToColor)(first, second, shift, by, u, v, width);
}

}  // namespace kvx
#endif
