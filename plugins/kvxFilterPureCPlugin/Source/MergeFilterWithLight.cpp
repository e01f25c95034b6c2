#include "Source/MergeFilterWithLight.h"

#include <mutex>
#include <numeric>

#include "Source/ToneTable.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"
#include "framework/pixel_kernels.h"
#include "framework/pixels.h"

namespace {

// The spelling is meant: hosts and catalogues know the parameters so.
constexpr ParamRow kAdaptiveParams[] = {
    {u"ColorLevleMin", 0, 0, 255}, {u"ColorLevleMax", 0, 0, 255}, {u"AdustConstarst", 0, -127, 127}};

constexpr int32_t kFirstId = 357;
constexpr int32_t kNoLevel = INT32_MIN;  // what no parameter has: the first frame builds the levels
constexpr double kLastContrast = 30;     // never moves on, so that only this contrast leaves the table as it is

// One pair of tables for all objects of the process: an object that has nothing to rebuild takes what another one
// built. Until a contrast other than the last one comes, the contrast table is black.
std::mutex g_tableLock;
ByteTable g_levels{};
ByteTable g_contrast{};

// The parabola through (0, 0), (255, 255) and (510, 0): -x * x / 255 + 2 * x, cut to an integer.
constexpr ByteTable MakeLightTable() {
  ByteTable table{};
  for (int32_t x = 0; x < 256; ++x) table[static_cast<size_t>(x)] = static_cast<uint8_t>((510 * x - x * x) / 255);
  return table;
}
constexpr ByteTable kLightTable = MakeLightTable();

ByteTable LevelsTable(int32_t low, int32_t high) {
  const double slope = WrapSub(high, low) / 255.0;
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) table[static_cast<size_t>(i)] = TruncByte(i * slope + low);
  return table;
}

// Each channel through a table of its own; opaque.
void MapOpaque(ConstFrameView src, FrameView dst, const ByteTables& tables) {
  for (int32_t y = 0; y < dst.height; ++y) {
    uint8_t* out = dst.Row(y);
    MapRow(src.Row(y), out, dst.width, tables);
    for (int32_t x = 0; x < dst.width; ++x) StorePixel(out, x, LoadPixel(out, x) | kAlphaByte);
  }
}

void LiftChannel(ConstFrameView src, FrameView dst, int channel) {
  ByteTable same;
  std::iota(same.begin(), same.end(), uint8_t{0});
  const auto tableOf = [&](int c) { return c == channel ? kLightTable.data() : same.data(); };
  MapOpaque(src, dst, {tableOf(0), tableOf(1), tableOf(2)});
}

}  // namespace

CMergeFilterWithLight::CMergeFilterWithLight(int32_t frameWidth, int32_t frameHeight, LightMode mode)
    : CBaseFilterProc(frameWidth, frameHeight), mode_(mode), levelMin_(kNoLevel), levelMax_(kNoLevel) {}

void CMergeFilterWithLight::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  if (mode_ == LightMode::kAdaptive) DescribeParam(desc, index, kAdaptiveParams, {35, 230, 50});
}

void CMergeFilterWithLight::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                                    const ParamValueArray* params) {
  if (!src || !dst) return;
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  if (mode_ != LightMode::kAdaptive) return LiftChannel(in, out, static_cast<int>(mode_));

  ByteTable both;
  {
    const std::lock_guard lock(g_tableLock);
    if (Param(params, 1) != levelMin_ || Param(params, 2) != levelMax_) {
      levelMin_ = Trunc32(Param(params, 1));
      levelMax_ = Trunc32(Param(params, 2));
      g_levels = LevelsTable(levelMin_, levelMax_);
    }
    if (Param(params, 3) != kLastContrast) g_contrast = ContrastTable(Trunc32(Param(params, 3)));
    for (size_t i = 0; i < both.size(); ++i) both[i] = g_contrast[g_levels[i]];
  }
  MapOpaque(in, out, {both.data(), both.data(), both.data()});
}

CBaseFilterProc* MakeMergeFilterWithLight(const EffectRow& row, int32_t width, int32_t height) {
  const int32_t mode = row.id - kFirstId;
  if (mode < 0 || mode > static_cast<int32_t>(LightMode::kAdaptive)) return nullptr;
  return new CMergeFilterWithLight(width, height, static_cast<LightMode>(mode));
}
