#include "Source/EdgeLight.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "framework/numeric.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "EdgeLight.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace edge_light {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void RelightRow(const uint8_t* in, const uint8_t* edges, uint8_t* out, int32_t count, const EdgeLight& light) {
  RelightRowScalar(in, edges, out, count, light);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<double>;
using V = hn::Vec<D>;

// Whole numbers stay doubles throughout, so that all lanes and masks are of one kind.

// The channel `shift` bits up in each word.
template <class Words>
HWY_INLINE V Channel(D d, Words words, int shift) {
  const hn::Rebind<int32_t, D> di;
  const hn::Rebind<uint32_t, D> du;
  return hn::PromoteTo(d, hn::BitCast(di, hn::And(hn::ShiftRightSame(words, shift), hn::Set(du, 255))));
}

// In degrees, cut; `range` is not 0 but where `flat`.
template <class Mask>
HWY_INLINE V HueOf(D d, V s0, V s1, V s2, V high, V range, Mask flat) {
  const V zero = hn::Zero(d);
  const auto first = hn::Eq(high, s0), second = hn::Eq(high, s1);
  const V spread = hn::IfThenElse(first, hn::Sub(s1, s2), hn::IfThenElse(second, hn::Sub(s2, s0), hn::Sub(s0, s1)));
  const V base = hn::IfThenElse(first, zero, hn::IfThenElse(second, hn::Set(d, 120), hn::Set(d, 240)));
  const V turn = hn::IfThenElse(hn::And(first, hn::Lt(spread, zero)), hn::Set(d, 360), zero);
  const V sector = hn::Div(hn::Mul(spread, hn::Set(d, 60)), hn::IfThenElse(flat, hn::Set(d, 1), range));
  return hn::Add(hn::Trunc(hn::Add(sector, base)), turn);
}

// The luminance that a pixel gets at its edge strength.
HWY_INLINE V LightOf(D d, V strength, V luminance, const EdgeLight& light) {
  const V lifted = hn::Add(luminance, hn::Mul(strength, hn::Set(d, light.upscale)));
  const V raised = hn::Trunc(hn::Min(hn::Max(lifted, hn::Zero(d)), hn::Set(d, 255)));
  const V weak = light.redscale > 0 ? hn::Trunc(hn::Mul(luminance, hn::Set(d, 1 - light.redscale))) : strength;
  return hn::IfThenElse(hn::Gt(strength, hn::Set(d, static_cast<double>(light.limit))), raised, weak);
}

// As HueByte, before the cut. Products and sums apart: a fused form would round once where the definition rounds twice.
HWY_INLINE V HueLevel(D d, V place, V p, V q) {
  const V rise = hn::Mul(hn::Sub(q, p), hn::Set(d, 6));
  const V ramp = hn::Add(hn::Mul(rise, place), p);
  const V v =
      hn::IfThenElse(hn::Lt(place, hn::Set(d, 1.0 / 6)), ramp, hn::IfThenElse(hn::Lt(place, hn::Set(d, 0.5)), q, p));
  const V inRange = hn::IfThenElseZero(hn::Lt(v, hn::Set(d, 2147483648.0)), v);
  return hn::Min(hn::Max(inRange, hn::Zero(d)), hn::Set(d, 255));
}

void RelightRow(const uint8_t* in, const uint8_t* edges, uint8_t* out, int32_t count, const EdgeLight& light) {
  const D d;
  const hn::Rebind<uint32_t, D> du;
  const hn::Rebind<int32_t, D> di;
  const auto lanes = static_cast<int32_t>(hn::Lanes(d));
  const V zero = hn::Zero(d), one = hn::Set(d, 1), half = hn::Set(d, 0.5), two = hn::Set(d, 2);
  const V third = hn::Set(d, 1.0 / 3), limit = hn::Set(d, static_cast<double>(light.limit));
  int32_t x = 0;
  for (; x + lanes <= count; x += lanes) {
    const auto edge = hn::LoadU(du, reinterpret_cast<const uint32_t*>(edges + 4 * x));
    const V e0 = Channel(d, edge, 0), e1 = Channel(d, edge, 8), e2 = Channel(d, edge, 16);
    const V strength = hn::Trunc(hn::Mul(hn::Add(hn::Min(hn::Min(e0, e1), e2), hn::Max(hn::Max(e0, e1), e2)), half));
    const auto pixel = hn::LoadU(du, reinterpret_cast<const uint32_t*>(in + 4 * x));
    const V s0 = Channel(d, pixel, 0), s1 = Channel(d, pixel, 8), s2 = Channel(d, pixel, 16);
    const V high = hn::Max(hn::Max(s0, s1), s2);
    const V low = hn::Min(hn::Min(s0, s1), s2);
    const V sum = hn::Add(high, low);
    const V range = hn::Sub(high, low);
    const auto flat = hn::Eq(range, zero);

    const V l = LightOf(d, strength, hn::Mul(sum, half), light);
    const auto dark = hn::Lt(l, half);
    const V saturated = hn::Div(range, hn::IfThenElse(dark, sum, hn::Sub(two, sum)));
    const V saturation = hn::IfThenElse(flat, zero, saturated);
    const V q = hn::IfThenElse(dark, hn::Mul(hn::Add(saturation, one), l),
                               hn::Sub(hn::Add(l, saturation), hn::Mul(l, saturation)));
    const V p = hn::Sub(hn::Mul(two, l), q);
    const V place = hn::Div(HueOf(d, s0, s1, s2, high, range, flat), hn::Set(d, 360));
    const V ahead = hn::Add(place, third);
    const V behind = hn::Sub(place, third);

    // A pixel that stays takes its own bytes.
    const auto stays = light.redscale <= 0 ? hn::Not(hn::Gt(l, limit)) : hn::Lt(one, zero);
    const V v0 = HueLevel(d, hn::IfThenElse(hn::Gt(ahead, one), hn::Sub(ahead, one), ahead), p, q);
    const V v1 = HueLevel(d, place, p, q);
    const V v2 = HueLevel(d, hn::IfThenElse(hn::Lt(behind, zero), hn::Add(behind, one), behind), p, q);
    const auto b0 = hn::BitCast(du, hn::DemoteTo(di, hn::IfThenElse(stays, s0, v0)));
    const auto b1 = hn::BitCast(du, hn::DemoteTo(di, hn::IfThenElse(stays, s1, v1)));
    const auto b2 = hn::BitCast(du, hn::DemoteTo(di, hn::IfThenElse(stays, s2, v2)));
    const auto alpha = hn::And(pixel, hn::Set(du, 0xFF000000u));
    const auto word = hn::Or(hn::Or(b0, hn::ShiftLeft<8>(b1)), hn::Or(hn::ShiftLeft<16>(b2), alpha));
    hn::StoreU(word, du, reinterpret_cast<uint32_t*>(out + 4 * x));
  }
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2
  // GCC 12 may leave it out here, and the doubles of all later code would run at half their speed.
  _mm256_zeroupper();
#endif
  RelightRowScalar(in + 4 * x, edges + 4 * x, out + 4 * x, count - x, light);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace edge_light
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace {

// As CLAMP0255(Trunc32(value)), in floats.
uint8_t ByteOf(double value) {
  const double inRange = value < 2147483648.0 ? value : 0;
  const double positive = inRange > 0 ? inRange : 0;
  return static_cast<uint8_t>(static_cast<int32_t>(positive < 255 ? positive : 255));
}

// A colour byte by its place on the hue circle: a ramp from p to q, then q, then p. There is no ramp back from q to p.
uint8_t HueByte(double place, double p, double q) {
  return ByteOf(place < 1.0 / 6 ? (q - p) * 6 * place + p : place < 0.5 ? q : p);
}

// The colour of `in` at luminance `l`. Bytes are not brought to 0..1 and the saturation is therefore negative for all
// but the darkest pixels: the look depends on it. `high` and `low` are the greatest and least of the three bytes.
void Relight(const uint8_t* in, uint8_t* out, int32_t high, int32_t low, int32_t l) {
  int32_t hue = 0;
  double saturation = 0;
  if (high != low) {
    const int32_t s0 = in[0], s1 = in[1], s2 = in[2];
    const double d = high - low;
    const bool first = high == s0, second = high == s1;
    const int32_t spread = first ? s1 - s2 : second ? s2 - s0 : s0 - s1;
    const int32_t base = first ? 0 : second ? 120 : 240;
    hue = static_cast<int32_t>(spread * 60 / d + base) + (first && spread < 0 ? 360 : 0);
    saturation = d / (l <= 0.5 ? high + low : 2 - (high + low));
  }
  const double q = l < 0.5 ? (saturation + 1) * l : l + saturation - l * saturation;
  const double p = 2.0 * l - q;
  const double place = hue / 360.0;
  const double ahead = place + 1.0 / 3;
  const double behind = place - 1.0 / 3;
  out[0] = HueByte(ahead > 1 ? ahead - 1 : ahead, p, q);
  out[1] = HueByte(place, p, q);
  out[2] = HueByte(behind < 0 ? behind + 1 : behind, p, q);
}

}  // namespace

void RelightRowScalar(const uint8_t* in, const uint8_t* edges, uint8_t* out, int32_t count, const EdgeLight& light) {
  const auto [limit, upscale, redscale] = light;
  for (int32_t x = 0; x < count; ++x, in += 4, edges += 4, out += 4) {
    const int32_t strength = (std::min({edges[0], edges[1], edges[2]}) + std::max({edges[0], edges[1], edges[2]})) / 2;
    const int32_t high = std::max({in[0], in[1], in[2]});
    const int32_t low = std::min({in[0], in[1], in[2]});
    const double luminance = (high + low) * 0.5;
    int32_t l = strength;
    if (static_cast<float>(strength) > limit) {
      l = CLAMP0255(Trunc32(luminance + strength * upscale));
    } else if (redscale > 0) {
      l = Trunc32(luminance * (1 - redscale));
    }
    if (redscale <= 0 && !(static_cast<float>(static_cast<uint8_t>(l)) > limit)) {
      std::memcpy(out, in, 3);
    } else {
      Relight(in, out, high, low, l);
    }
    out[3] = in[3];
  }
}

namespace edge_light {
HWY_EXPORT(RelightRow);
}  // namespace edge_light

void RelightRow(const uint8_t* in, const uint8_t* edges, uint8_t* out, int32_t count, const EdgeLight& light) {
  using namespace edge_light;
  // Beyond this, and for NaN, luminances leave the 32-bit range, which vectors do not know.
  const bool common = std::fabs(light.upscale) < 1e6 && std::fabs(light.redscale) < 1e6;
  if (!common) return RelightRowScalar(in, edges, out, count, light);
  HWY_DYNAMIC_DISPATCH(RelightRow)(in, edges, out, count, light);
}

#endif  // HWY_ONCE
