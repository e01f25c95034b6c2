// Every id that the factory serves, over sizes, steps, parameters and frames, between guard zones. What the address and
// undefined-behaviour sanitizers do not see here, no host will see either.
#include <gtest/gtest.h>

#include <limits>

#include "framework/factory/effect_table.h"
#include "tests/support/frames.h"

namespace {

struct Size {
  int32_t width, height;
};

constexpr Size kSizes[] = {{1, 1}, {2, 1},  {1, 2},  {3, 2},   {2, 5},   {1, 19},  {23, 1},
                           {7, 7}, {16, 9}, {9, 16}, {33, 12}, {64, 48}, {101, 37}};
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Values that a host's controls can give, then values that nobody should.
std::vector<ParamValueArray> ValueSets(int32_t id, CBaseFilterProc& processor) {
  ParamValueArray defaults = Values(id), minimum = Values(id), maximum = Values(id);
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    processor.GetParamDesc(&desc, i);
    defaults.value[i] = desc.defaultValue;
    minimum.value[i] = desc.minimum;
    maximum.value[i] = desc.maximum;
  }
  std::vector<ParamValueArray> sets = {defaults, minimum, maximum};
  for (const double value : {0.0, 1.0, 3.5, 50.0, 99.0, -1.0, 256.0, -1e6, 1e6, 1e10, -1e10, 1e300, -1e300, kInfinity,
                             -kInfinity, kNan, 1e-300}) {
    ParamValueArray set = Values(id);
    for (double& element : set.value) element = value;
    sets.push_back(set);
  }
  for (uint32_t seed = 1; seed <= 6; ++seed) {  // mixed
    ParamValueArray set = Values(id);
    uint32_t s = seed * 2654435761u;
    for (double& element : set.value) {
      s = s * 1664525u + 1013904223u;
      constexpr double kMixed[] = {0, 1, 2, 7, 40, 60, 100, 255, 640, -20, 1e9, kNan, 0.25, 0.75, 3, 12};
      element = kMixed[s >> 28];
    }
    sets.push_back(set);
  }
  return sets;
}

class Sweep : public testing::TestWithParam<int32_t> {};

TEST_P(Sweep, StaysWithinItsBuffers) {
  const int32_t id = GetParam();
  constexpr struct {
    int32_t frame, total;
  } kTimes[] = {
      {0, 30},         {1, 30}, {29, 30}, {15, 30}, {40, 30}, {-5, 30}, {0, 0}, {0, 1}, {INT32_MAX, INT32_MAX},
      {INT32_MIN, -1}, {7, 10}};
  for (const Size size : kSizes) {
    for (const int32_t padding : {0, 20}) {
      const auto processor = MakeEffect(id, size.width, size.height);
      ASSERT_TRUE(processor);
      FrameBuffer src(size.width, size.height, padding), dst(size.width, size.height, padding);
      uint32_t seed = 1;
      size_t time = 0;
      for (const ParamValueArray& values : ValueSets(id, *processor)) {
        for (int repeat = 0; repeat < 2; ++repeat) {
          src.FillTestPicture(seed++);
          const auto& at = kTimes[time++ % std::size(kTimes)];
          RunFrame(*processor, src, dst, values, at.frame, at.total);
        }
        ASSERT_TRUE(src.GuardsIntact() && dst.GuardsIntact()) << size.width << " by " << size.height;
      }
    }
  }
}

// A processor that never rendered must die in peace, and so must one of a size that it cannot render.
TEST_P(Sweep, BearsUnusualLives) {
  const int32_t id = GetParam();
  MakeEffect(id, 16384, 2);
  if (const auto empty = MakeEffect(id, 0, 0)) {
    FrameBuffer pixel(1, 1);
    RunFrame(*empty, pixel, pixel, Values(id));
  }
}

std::vector<int32_t> ServedIds() {
  std::vector<int32_t> ids;
  for (const EffectRow& row : EffectRows()) {
    if (row.make) ids.push_back(row.id);
  }
  return ids;
}

INSTANTIATE_TEST_SUITE_P(EveryId, Sweep, testing::ValuesIn(ServedIds()), testing::PrintToStringParamName());

}  // namespace
