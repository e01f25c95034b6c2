#include "framework/pixel_kernels.h"

#include <algorithm>
#include <cmath>

#include "framework/numeric.h"

// The newest vector set that the library leaves out unless asked: it looks up bytes in tables of 128.
#define HWY_WANT_AVX3_DL
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvx {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void GrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights) {
  GrayRowScalar(src, dst, count, weights);
}
void ColorizeRow(const uint8_t* src, uint8_t* dst, int32_t count, const ColorizeOffsets& offsets) {
  ColorizeRowScalar(src, dst, count, offsets);
}
void SaturateRow(const uint8_t* src, uint8_t* dst, int32_t count, const SaturationWeights& weights) {
  SaturateRowScalar(src, dst, count, weights);
}
void BlendRow(uint8_t* out, const uint8_t* top, const uint8_t* bottom, int32_t count, int32_t alpha) {
  BlendRowScalar(out, top, bottom, count, alpha);
}
void MapRow(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables) {
  MapRowScalar(src, dst, count, tables);
}
void MapGrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights, const ByteTables& tables) {
  MapGrayRowScalar(src, dst, count, weights, tables);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// Words of `count` pixels; what is left over of a vector goes to the scalar form.
template <class D>
HWY_INLINE auto LoadPixels(D d, const uint8_t* pixels) {
  return hn::LoadU(d, reinterpret_cast<const uint32_t*>(pixels));
}
template <class D, class V>
HWY_INLINE void StorePixels(V words, D d, uint8_t* pixels) {
  hn::StoreU(words, d, reinterpret_cast<uint32_t*>(pixels));
}

void GrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights) {
  const hn::ScalableTag<uint32_t> d;
  const auto lanes = static_cast<int32_t>(hn::Lanes(d));
  const auto byte = hn::Set(d, 255);
  const auto alphaMask = hn::Set(d, 0xFF000000u);
  const auto w0 = hn::Set(d, weights.w0);
  const auto w1 = hn::Set(d, weights.w1);
  const auto w2 = hn::Set(d, weights.w2);
  const auto add = hn::Set(d, weights.add);
  const auto multiplier = hn::Set(d, weights.multiplier);
  int32_t x = 0;
  for (; x + lanes <= count; x += lanes) {
    const auto word = LoadPixels(d, src + 4 * x);
    const auto b0 = hn::And(word, byte);
    const auto b1 = hn::And(hn::ShiftRight<8>(word), byte);
    const auto b2 = hn::And(hn::ShiftRight<16>(word), byte);
    const auto sum = hn::Add(hn::Add(hn::Mul(b0, w0), hn::Mul(b1, w1)), hn::Add(hn::Mul(b2, w2), add));
    const auto gray = hn::And(hn::ShiftRightSame(hn::Mul(sum, multiplier), weights.shift), byte);
    const auto rgb = hn::Or(gray, hn::Or(hn::ShiftLeft<8>(gray), hn::ShiftLeft<16>(gray)));
    StorePixels(hn::Or(rgb, hn::And(word, alphaMask)), d, dst + 4 * x);
  }
  GrayRowScalar(src + 4 * x, dst + 4 * x, count - x, weights);
}

void ColorizeRow(const uint8_t* src, uint8_t* dst, int32_t count, const ColorizeOffsets& offsets) {
  const hn::ScalableTag<uint32_t> d;
  const hn::RebindToSigned<decltype(d)> di;
  const auto lanes = static_cast<int32_t>(hn::Lanes(d));
  const auto byte = hn::Set(d, 255);
  const auto alphaMask = hn::Set(d, 0xFF000000u);
  const auto zero = hn::Zero(di);
  const auto top = hn::Set(di, 255);
  int32_t x = 0;
  for (; x + lanes <= count; x += lanes) {
    const auto word = LoadPixels(d, src + 4 * x);
    const auto b = hn::Mul(hn::And(word, byte), hn::Set(d, 7450));
    const auto g = hn::Mul(hn::And(hn::ShiftRight<8>(word), byte), hn::Set(d, 38442));
    const auto r = hn::Mul(hn::And(hn::ShiftRight<16>(word), byte), hn::Set(d, 19668));
    const auto y = hn::BitCast(di, hn::ShiftRight<8>(hn::Add(hn::Add(b, g), hn::Add(r, hn::Set(d, 65535)))));
    const auto channel = [&](int32_t offset) HWY_ATTR {
      const auto v = hn::ShiftRight<8>(hn::Add(y, hn::Set(di, offset)));
      return hn::BitCast(d, hn::Min(hn::Max(v, zero), top));
    };
    const auto rgb = hn::Or(channel(offsets.blue),
                            hn::Or(hn::ShiftLeft<8>(channel(offsets.green)), hn::ShiftLeft<16>(channel(offsets.red))));
    StorePixels(hn::Or(rgb, hn::And(word, alphaMask)), d, dst + 4 * x);
  }
  ColorizeRowScalar(src + 4 * x, dst + 4 * x, count - x, offsets);
}

void SaturateRow(const uint8_t* src, uint8_t* dst, int32_t count, const SaturationWeights& weights) {
  const hn::ScalableTag<double> df;
  const hn::Rebind<uint32_t, decltype(df)> d;
  const hn::Rebind<int32_t, decltype(df)> di;
  const auto lanes = static_cast<int32_t>(hn::Lanes(df));
  const auto byte = hn::Set(d, 255);
  const auto alphaMask = hn::Set(d, 0xFF000000u);
  const auto s = hn::Set(df, weights.s);
  int32_t x = 0;
  for (; x + lanes <= count; x += lanes) {
    const auto word = LoadPixels(d, src + 4 * x);
    const auto b0 = hn::BitCast(di, hn::And(word, byte));
    const auto b1 = hn::BitCast(di, hn::And(hn::ShiftRight<8>(word), byte));
    const auto b2 = hn::BitCast(di, hn::And(hn::ShiftRight<16>(word), byte));
    const auto sum = hn::Add(hn::Add(hn::Mul(b0, hn::Set(di, weights.w0)), hn::Mul(b1, hn::Set(di, weights.w1))),
                             hn::Mul(b2, hn::Set(di, weights.w2)));
    const auto gray = hn::PromoteTo(df, hn::ShiftRight<16>(sum));
    const auto channel = [&](auto bytes) HWY_ATTR {
      // Product and sum apart: a fused form would round once where the definition rounds twice.
      auto v = hn::DemoteTo(di, hn::Add(hn::Mul(hn::PromoteTo(df, bytes), s), gray));
      if (weights.clamp) v = hn::Min(hn::Max(v, hn::Zero(di)), hn::Set(di, 255));
      return hn::And(hn::BitCast(d, v), byte);
    };
    const auto rgb = hn::Or(channel(b0), hn::Or(hn::ShiftLeft<8>(channel(b1)), hn::ShiftLeft<16>(channel(b2))));
    StorePixels(hn::Or(rgb, hn::And(word, alphaMask)), d, dst + 4 * x);
  }
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
  // GCC 12 leaves it out here, and the doubles of all later code would run at half their speed.
  _mm256_zeroupper();
#endif
  SaturateRowScalar(src + 4 * x, dst + 4 * x, count - x, weights);
}

void BlendRow(uint8_t* out, const uint8_t* top, const uint8_t* bottom, int32_t count, int32_t alpha) {
  const hn::ScalableTag<uint8_t> d8;
  const hn::RepartitionToWide<decltype(d8)> d16;
  const hn::Repartition<uint32_t, decltype(d8)> d32;
  const auto pixelsPerVector = static_cast<int32_t>(hn::Lanes(d32));
  const auto divide255 = [&](auto v) HWY_ATTR {
    return hn::ShiftRight<8>(hn::Add(hn::Add(v, hn::ShiftRight<8>(v)), hn::Set(d16, 128)));
  };
  const auto a = hn::Set(d16, static_cast<uint16_t>(alpha));
  const auto b = hn::Set(d16, static_cast<uint16_t>(255 - alpha));
  const auto low = hn::Set(d16, 255);
  const auto opaque = hn::BitCast(d8, hn::Set(d32, 0xFF000000u));
  // Even and odd bytes by themselves: bytes 0 and 2 of every pixel, bytes 1 and 3.
  int32_t x = 0;
  for (; x + pixelsPerVector <= count; x += pixelsPerVector) {
    const auto t = hn::LoadU(d8, top + 4 * x);
    const auto u = hn::LoadU(d8, bottom + 4 * x);
    const auto topAlpha = hn::ShiftRight<24>(hn::BitCast(d32, t));
    const auto alphaPairs = hn::BitCast(d16, hn::Or(topAlpha, hn::ShiftLeft<16>(topAlpha)));
    const auto weight = divide255(hn::Mul(alphaPairs, a));
    const auto colors = hn::BitCast(d16, hn::Or(t, opaque));
    const auto ground = hn::BitCast(d16, u);
    const auto even =
        hn::Add(divide255(hn::Mul(hn::And(ground, low), b)), divide255(hn::Mul(hn::And(colors, low), weight)));
    const auto odd = hn::Add(divide255(hn::Mul(hn::ShiftRight<8>(ground), b)),
                             divide255(hn::Mul(hn::ShiftRight<8>(colors), weight)));
    const auto result = hn::Or(hn::And(even, low), hn::ShiftLeft<8>(odd));
    hn::StoreU(hn::BitCast(d8, result), d8, out + 4 * x);
  }
  BlendRowScalar(out + 4 * x, top + 4 * x, bottom + 4 * x, count - x, alpha);
}

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2

using Bytes = hn::Vec<hn::ScalableTag<uint8_t> >;

// A table in registers, as many bytes looked up at once as a vector has.
class VectorTable {
 public:
  explicit VectorTable(const uint8_t* table) {
#if HWY_TARGET <= HWY_AVX3_DL
    for (size_t i = 0; i < 4; ++i) quarters_[i] = hn::LoadU(d_, table + 64 * i);
#else
    for (size_t i = 0; i < 16; ++i) {
      sixteenths_[i] = hn::LoadDup128(d_, table + 16 * i);
      if (i % 8) sixteenths_[i] = hn::Xor(sixteenths_[i], hn::LoadDup128(d_, table + 16 * (i - 1)));
    }
#endif
  }

  HWY_INLINE Bytes operator[](Bytes index) const {
#if HWY_TARGET <= HWY_AVX3_DL
    const Bytes low{_mm512_permutex2var_epi8(quarters_[0].raw, index.raw, quarters_[1].raw)};
    const Bytes high{_mm512_permutex2var_epi8(quarters_[2].raw, index.raw, quarters_[3].raw)};
    return hn::IfThenElse(hn::Lt(index, hn::Set(d_, 128)), low, high);
#else
    // Each sixteenth holds its difference to the one before. An index takes part in its own and all before it, which
    // leaves its own entry; as a number below 0 it takes part in none.
    const hn::RebindToSigned<decltype(d_)> di;
    const auto step = hn::Set(di, 16);
    auto low = hn::BitCast(di, index), high = hn::Xor(low, hn::Set(di, -128));
    Bytes found = hn::Zero(d_);
    for (size_t i = 0; i < 8; ++i) {
      const Bytes below = hn::TableLookupBytesOr0(sixteenths_[i], hn::BitCast(d_, low));
      const Bytes above = hn::TableLookupBytesOr0(sixteenths_[8 + i], hn::BitCast(d_, high));
      found = hn::Xor(found, hn::Xor(below, above));
      low = hn::SaturatedSub(low, step);
      high = hn::SaturatedSub(high, step);
    }
    return found;
#endif
  }

 private:
  hn::ScalableTag<uint8_t> d_;
#if HWY_TARGET <= HWY_AVX3_DL
  Bytes quarters_[4];
#else
  Bytes sixteenths_[16];
#endif
};

void MapRow(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables) {
  const hn::ScalableTag<uint8_t> d;
  const auto lanes = static_cast<int32_t>(hn::Lanes(d));
  int32_t x = 0;
  if (count >= lanes) {
    const VectorTable table0(tables.table0);
    const VectorTable table1(tables.table1);
    const VectorTable table2(tables.table2);
    for (; x + lanes <= count; x += lanes) {
      Bytes bytes0, bytes1, bytes2, bytes3;
      hn::LoadInterleaved4(d, src + 4 * x, bytes0, bytes1, bytes2, bytes3);
      hn::StoreInterleaved4(table0[bytes0], table1[bytes1], table2[bytes2], bytes3, d, dst + 4 * x);
    }
  }
  MapRowScalar(src + 4 * x, dst + 4 * x, count - x, tables);
}

void MapGrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights, const ByteTables& tables) {
  const hn::ScalableTag<uint8_t> d;
  const hn::RepartitionToWide<decltype(d)> d16;
  const auto lanes = static_cast<int32_t>(hn::Lanes(d));
  int32_t x = 0;
  if (count >= lanes) {
    const auto word = [&](uint32_t value) HWY_ATTR { return hn::Set(d16, static_cast<uint16_t>(value)); };
    const auto w0 = word(weights.w0), w1 = word(weights.w1), w2 = word(weights.w2), add = word(weights.add);
    const auto low = word(255);
    const auto grayOf = [&](auto b0, auto b1, auto b2) HWY_ATTR {
      const auto sum = hn::Add(hn::Add(hn::Mul(b0, w0), hn::Mul(b1, w1)), hn::Add(hn::Mul(b2, w2), add));
      return hn::And(hn::ShiftRightSame(sum, weights.shift), low);
    };
    const auto even = [&](Bytes bytes) HWY_ATTR { return hn::And(hn::BitCast(d16, bytes), low); };
    const auto odd = [&](Bytes bytes) HWY_ATTR { return hn::ShiftRight<8>(hn::BitCast(d16, bytes)); };
    const VectorTable table0(tables.table0);
    const VectorTable table1(tables.table1);
    const VectorTable table2(tables.table2);
    for (; x + lanes <= count; x += lanes) {
      Bytes bytes0, bytes1, bytes2, bytes3;
      hn::LoadInterleaved4(d, src + 4 * x, bytes0, bytes1, bytes2, bytes3);
      const auto evens = grayOf(even(bytes0), even(bytes1), even(bytes2));
      const auto odds = grayOf(odd(bytes0), odd(bytes1), odd(bytes2));
      const Bytes gray = hn::BitCast(d, hn::Or(evens, hn::ShiftLeft<8>(odds)));
      hn::StoreInterleaved4(table0[gray], table1[gray], table2[gray], bytes3, d, dst + 4 * x);
    }
  }
  MapGrayRowScalar(src + 4 * x, dst + 4 * x, count - x, weights, tables);
}

#else

// Shorter vectors gain nothing over plain look-ups.
void MapRow(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables) {
  MapRowScalar(src, dst, count, tables);
}
void MapGrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights, const ByteTables& tables) {
  MapGrayRowScalar(src, dst, count, weights, tables);
}

#endif
#endif

}  // namespace HWY_NAMESPACE
}  // namespace kvx
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kvx {
HWY_EXPORT(GrayRow);
HWY_EXPORT(ColorizeRow);
HWY_EXPORT(SaturateRow);
HWY_EXPORT(BlendRow);
HWY_EXPORT(MapRow);
HWY_EXPORT(MapGrayRow);
}  // namespace kvx

void GrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights) {
  using namespace kvx;
  HWY_DYNAMIC_DISPATCH(GrayRow)(src, dst, count, weights);
}

void GrayRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights) {
  for (int32_t x = 0; x < count; ++x, src += 4, dst += 4) {
    const uint8_t alpha = src[3];
    dst[0] = dst[1] = dst[2] = static_cast<uint8_t>(weights(src[0], src[1], src[2]));
    dst[3] = alpha;
  }
}

void ColorizeRow(const uint8_t* src, uint8_t* dst, int32_t count, const ColorizeOffsets& offsets) {
  using namespace kvx;
  HWY_DYNAMIC_DISPATCH(ColorizeRow)(src, dst, count, offsets);
}

void ColorizeRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const ColorizeOffsets& offsets) {
  for (int32_t x = 0; x < count; ++x, src += 4, dst += 4) {
    const int32_t y = (7450 * src[0] + 38442 * src[1] + 19668 * src[2] + 65535) >> 8;
    dst[3] = src[3];
    dst[0] = static_cast<uint8_t>(std::clamp((y + offsets.blue) >> 8, 0, 255));
    dst[1] = static_cast<uint8_t>(std::clamp((y + offsets.green) >> 8, 0, 255));
    dst[2] = static_cast<uint8_t>(std::clamp((y + offsets.red) >> 8, 0, 255));
  }
}

void SaturateRow(const uint8_t* src, uint8_t* dst, int32_t count, const SaturationWeights& weights) {
  using namespace kvx;
  // Beyond this, and for NaN, values leave the 32-bit range, where vectors saturate and the definition does not.
  if (!(std::fabs(weights.s) < 1e6)) return SaturateRowScalar(src, dst, count, weights);
  HWY_DYNAMIC_DISPATCH(SaturateRow)(src, dst, count, weights);
}

void SaturateRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const SaturationWeights& weights) {
  for (int32_t x = 0; x < count; ++x, src += 4, dst += 4) {
    const int32_t sum =
        WrapAdd(WrapAdd(WrapMul(src[2], weights.w2), WrapMul(src[1], weights.w1)), WrapMul(src[0], weights.w0));
    const double gray = sum >> 16;
    const uint8_t alpha = src[3];
    for (int c = 0; c < 3; ++c) {
      const int32_t v = Trunc32(src[c] * weights.s + gray);
      dst[c] = static_cast<uint8_t>(weights.clamp ? CLAMP0255(v) : v);
    }
    dst[3] = alpha;
  }
}

void BlendRow(uint8_t* out, const uint8_t* top, const uint8_t* bottom, int32_t count, int32_t alpha) {
  using namespace kvx;
  HWY_DYNAMIC_DISPATCH(BlendRow)(out, top, bottom, count, alpha);
}

void BlendRowScalar(uint8_t* out, const uint8_t* top, const uint8_t* bottom, int32_t count, int32_t alpha) {
  const auto divide255 = [](uint32_t x) { return (x + (x >> 8) + 128) >> 8; };
  const auto a = static_cast<uint32_t>(alpha);
  const uint32_t b = 255 - a;
  for (int32_t x = 0; x < count; ++x, out += 4, top += 4, bottom += 4) {
    const uint32_t weight = divide255(top[3] * a);
    for (int c = 0; c < 3; ++c) out[c] = static_cast<uint8_t>(divide255(bottom[c] * b) + divide255(top[c] * weight));
    out[3] = static_cast<uint8_t>(divide255(bottom[3] * b) + divide255(255 * weight));
  }
}

void MapRow(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables) {
  using namespace kvx;
  HWY_DYNAMIC_DISPATCH(MapRow)(src, dst, count, tables);
}

void MapRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables) {
  for (int32_t x = 0; x < count; ++x, src += 4, dst += 4) {
    const uint8_t byte0 = tables.table0[src[0]];
    const uint8_t byte1 = tables.table1[src[1]];
    const uint8_t byte2 = tables.table2[src[2]];
    dst[3] = src[3];
    dst[0] = byte0;
    dst[1] = byte1;
    dst[2] = byte2;
  }
}

void MapGrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights, const ByteTables& tables) {
  using namespace kvx;
  // The vector form has sums of 16 bits.
  if (weights.multiplier != 1 || 255 * (weights.w0 + weights.w1 + weights.w2) + weights.add >= 65536) {
    GrayRow(src, dst, count, weights);
    return MapRow(dst, dst, count, tables);
  }
  HWY_DYNAMIC_DISPATCH(MapGrayRow)(src, dst, count, weights, tables);
}

void MapGrayRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights,
                      const ByteTables& tables) {
  for (int32_t x = 0; x < count; ++x, src += 4, dst += 4) {
    const uint8_t gray = static_cast<uint8_t>(weights(src[0], src[1], src[2]));
    dst[3] = src[3];
    dst[0] = tables.table0[gray];
    dst[1] = tables.table1[gray];
    dst[2] = tables.table2[gray];
  }
}

#endif  // HWY_ONCE
