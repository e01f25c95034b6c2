// Composite looks that are arithmetic on each pixel alone.
#include <algorithm>

#include "engine/composite_looks.h"
#include "engine/curve.h"
#include "engine/engine_internal.h"

// The loops are plain and without branches, and are compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel_looks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace pixel_looks {
namespace HWY_NAMESPACE {
namespace {

int32_t Less(int32_t a, int32_t b) {
  return a < b ? a : b;
}
int32_t More(int32_t a, int32_t b) {
  return a < b ? b : a;
}

int32_t Screened(int32_t a, int32_t t) {
  return 255 - (((255 - a) * (255 - t)) >> 8);
}
int32_t HardBlended(int32_t a, int32_t t) {
  const int32_t dark = (a * t) >> 7;
  const int32_t light = 255 - (((255 - a) * (255 - t)) >> 7);
  return t < 128 ? dark : light;
}

// v / 100, v / 10 and v / 5 for v from 0 to 40000.
int32_t Hundredth(int32_t v) {
  return static_cast<int32_t>(static_cast<uint32_t>(v) * 5243 >> 19);
}
int32_t Tenth(int32_t v) {
  return static_cast<int32_t>(static_cast<uint32_t>(v) * 52429 >> 19);
}
int32_t Fifth(int32_t v) {
  return static_cast<int32_t>(static_cast<uint32_t>(v) * 52429 >> 18);
}

struct Colors {
  int32_t b, g, r;
};

// Each pixel's colours through `map`, which gives 0 to 255; alpha stays.
template <typename Map>
HWY_INLINE void MapColors(uint8_t* pixels, int32_t count, Map map) {
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(pixels + 4 * x);
    const Colors made = map(Colors{static_cast<int32_t>(pixel & 255), static_cast<int32_t>(pixel >> 8 & 255),
                                   static_cast<int32_t>(pixel >> 16 & 255)});
    StorePixel(pixels + 4 * x, (pixel & kAlphaByte) | static_cast<uint32_t>(made.r) << 16 |
                                   static_cast<uint32_t>(made.g) << 8 | static_cast<uint32_t>(made.b));
  }
}

// Takes from every channel a share of the colour's purity. The purest channel gives most; where green leads, all give
// more evenly.
HWY_INLINE Colors ReducePurity(Colors c) {
  const int32_t distance = More(More(c.b, c.g), c.r) - Less(Less(c.b, c.g), c.r);
  const bool redLeads = (c.r >= c.g) & (c.r >= c.b);
  const bool greenLeads = !redLeads & (c.g >= c.b);
  const int32_t tenth = Tenth(distance), fifth = Fifth(distance);
  const int32_t b = greenLeads ? tenth : redLeads ? distance >> 4 : distance >> 2;
  const int32_t g = greenLeads ? fifth : distance >> 3;
  const int32_t r = greenLeads ? tenth : redLeads ? distance >> 2 : distance >> 4;
  return {More(c.b - ((b * (255 - c.b)) >> 8), 0), More(c.g - ((g * (255 - c.g)) >> 8), 0),
          More(c.r - ((r * (255 - c.r)) >> 8), 0)};
}

}  // namespace

// A part of the way to grey.
void SimpleElegantRow(uint8_t* pixels, int32_t count) {
  constexpr int32_t kGrayShare = 122;  // of 256: 0.48, cut
  constexpr int32_t kColorShare = 256 - kGrayShare;
  MapColors(pixels, count, [](Colors c) HWY_ATTR {
    const int32_t gray = ((306 * c.r + 601 * c.g + 117 * c.b + 512) >> 10) * kGrayShare;
    return Colors{(c.b * kColorShare + gray) >> 8, (c.g * kColorShare + gray) >> 8, (c.r * kColorShare + gray) >> 8};
  });
}

// The last blend takes the inverted channel, and so ends in a tinted negative of the lifted picture: meant to.
void BeautifyRow(uint8_t* pixels, int32_t count) {
  MapColors(pixels, count, [](Colors c) HWY_ATTR {
    const int32_t luma = Luma255(c.b, c.g, c.r);
    const Colors pure = ReducePurity({Screened(c.b, luma), Screened(c.g, luma), Screened(c.r, luma)});
    const auto over = [luma](int32_t strength, int32_t v)
                          HWY_ATTR { return HardBlended(255 - (((255 - luma) * strength) >> 8), 255 - v); };
    return Colors{over(200, pure.b), over(194, pure.g), over(160, pure.r)};
  });
}

// Selective colour: reds, yellows, shadows and highlights each move the channels by shares that the channel itself
// limits.
void GloamingRow(uint8_t* pixels, int32_t count) {
  MapColors(pixels, count, [](Colors c) HWY_ATTR {
    const int32_t b = c.b, g = c.g, r = c.r;
    const int32_t hi = More(More(b, g), r);
    const int32_t lo = Less(Less(b, g), r);
    const int32_t mid = b + g + r - hi - lo;
    const int32_t restB = 255 - b, restG = 255 - g, restR = 255 - r;
    // Where a group has no part its measure is 0, and so are its shares.
    const int32_t e = hi == r ? hi - mid : 0;
    const int32_t f = lo == b ? mid - lo : 0;
    const int32_t k = hi < 128 ? 255 - 2 * hi : 0;
    const int32_t l = (hi >= 128) & (lo >= 129) ? 2 * lo - 255 : 0;
    const int32_t dr = Less(Hundredth(38 * e), (e * restR) >> 8) + Less(Hundredth(28 * f), (f * restR) >> 8) +
                       Less(Hundredth(6 * k), (k * restR) >> 8) - Less(Hundredth(2 * l), (l * r) >> 8);
    const int32_t dg = Less(Hundredth(3 * l), (l * restG) >> 8) - Less(Tenth(e), (e * g) >> 8) -
                       Less(Hundredth(5 * f), (f * g) >> 8) - Less(Hundredth(7 * k), (k * g) >> 8);
    const int32_t db = Less(Fifth(e), (e * restB) >> 8) - Less(f >> 2, (f * b) >> 8) +
                       Less(Hundredth(9 * k), (k * restB) >> 8) + Less(Hundredth(3 * l), (l * restB) >> 8);
    return Colors{Less(More(b + db, 0), 255), Less(More(g + dg, 0), 255), Less(More(r + dr, 0), 255)};
  });
}

}  // namespace HWY_NAMESPACE
}  // namespace pixel_looks
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace pixel_looks {
HWY_EXPORT(SimpleElegantRow);
HWY_EXPORT(BeautifyRow);
HWY_EXPORT(GloamingRow);
}  // namespace pixel_looks

int32_t SimpleElegant(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  using namespace pixel_looks;
  ForEachCopiedRow(from, image, [width = image.width](int32_t, uint8_t* row) {
    HWY_DYNAMIC_DISPATCH(SimpleElegantRow)(row, width);
  });
  return kEngineDone;
}

int32_t Beautify(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  using namespace pixel_looks;
  ForEachCopiedRow(from, image, [width = image.width](int32_t, uint8_t* row) {
    HWY_DYNAMIC_DISPATCH(BeautifyRow)(row, width);
  });
  return kEngineDone;
}

int32_t Gloaming(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  using namespace pixel_looks;
  static const CurveSet kCurves = {MakeCurve(CurveKnots{54, 102, 145, 184, 221}),
                                   MakeCurve(CurveKnots{0, 74, 142, 201, 255}),
                                   MakeCurve(CurveKnots{0, 92, 166, 215, 255})};
  ForEachCopiedRow(from, image, [width = image.width](int32_t, uint8_t* row) {
    HWY_DYNAMIC_DISPATCH(GloamingRow)(row, width);
    MapRow(row, row, width, {kCurves.blue.data(), kCurves.green.data(), kCurves.red.data()});
  });
  return kEngineDone;
}

#endif  // HWY_ONCE
