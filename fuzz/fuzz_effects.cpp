// The input chooses an effect, a frame size, materials, parameters and times; several frames run on one object. One
// input in eight goes through the runtime's filter, where source and destination may differ in size.
#include <fuzzer/FuzzedDataProvider.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <string>
#include <vector>

#include "codecs/picture.h"
#include "framework/factory/effect_table.h"
#include "framework/random.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "runtime/pure_c_filter.h"
#include "tests/support/fake_host.h"
#include "tests/support/frames.h"

using namespace kvx;

using namespace vizcore;

namespace {

constexpr int kMaterialSets = 4;

// Many effects share all their code and differ by data. So that the corpus holds each of them, each counts by itself,
// by either road.
__attribute__((section("__libfuzzer_extra_counters"))) uint8_t g_seen[2][512];

// Material directories: one with small pictures, one with single pixels, one with broken files; and none at all.
class Materials {
 public:
  Materials() {
    for (const EffectRow& row : EffectRows()) {
      for (const char* file : row.materials) {
        if (!file) continue;
        const std::string name = file;
        Write("0/Merge/" + name, Encoded(name, 24, 16));
        Write("1/Merge/" + name, Encoded(name, 1, 1));
        const std::string whole = Encoded(name, 24, 16);
        Write("2/Merge/" + name, whole.substr(0, whole.size() * 2 / 3));
      }
    }
  }

  void Choose(int set) const {
    const auto path = WidenUtf8((directory_.Path() / std::to_string(set)).string());
    SetMergeImagePath(set < kMaterialSets - 1 ? path->c_str() : nullptr);
  }

 private:
  void Write(const std::string& name, const std::string& content) const { directory_.Write(name, content); }

  static std::string Encoded(const std::string& name, int32_t width, int32_t height) {
    FrameBuffer frame(width, height);
    frame.FillTestPicture(static_cast<uint32_t>(name.size()));
    Picture picture(width, height);
    picture.pixels = frame.Packed();
    return name.ends_with(".png") ? EncodePng(picture) : EncodeJpeg(picture);
  }

  const TemporaryDirectory directory_;
};

int32_t Side(FuzzedDataProvider& bytes) {
  const int32_t largest = bytes.ConsumeIntegral<uint8_t>() < 8 ? 200 : 64;
  return bytes.ConsumeIntegralInRange<int32_t>(1, largest);
}

int32_t Padding(FuzzedDataProvider& bytes) {
  return bytes.ConsumeIntegralInRange<int32_t>(0, 7) * 4;
}

int32_t FrameNumber(FuzzedDataProvider& bytes) {
  return bytes.ConsumeIntegral<uint8_t>() < 240 ? bytes.ConsumeIntegralInRange<int32_t>(-2, 120)
                                                : bytes.ConsumeIntegral<int32_t>();
}

// Mostly what a host's control could give; now and then any double there is.
double Value(FuzzedDataProvider& bytes, const FilterParamDesc& desc) {
  switch (bytes.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      return desc.defaultValue;
    case 1:
      return desc.minimum;
    case 2:
      return desc.maximum;
    case 3:
      return bytes.ConsumeIntegralInRange<int32_t>(-300, 300);
    case 4:
      return bytes.ConsumeIntegral<int32_t>();
    case 5:
      return std::bit_cast<double>(bytes.ConsumeIntegral<uint64_t>());
    default:
      return desc.minimum + (desc.maximum - desc.minimum) * bytes.ConsumeProbability<double>();
  }
}

void FillPicture(FuzzedDataProvider& bytes, FrameBuffer& frame) {
  const auto kind = bytes.ConsumeIntegral<uint8_t>();
  if (kind < 32) {
    frame.Fill(bytes.ConsumeIntegral<uint8_t>());
  } else if (kind < 128) {
    frame.FillOpaquePicture(kind);
  } else {
    frame.FillTestPicture(kind);
  }
}

void Require(bool holds) {
  if (!holds) std::abort();
}

void ReadValues(FuzzedDataProvider& bytes, CBaseFilterProc& processor, ParamValueArray& values) {
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    processor.GetParamDesc(&desc, i);
    values.value[i] = Value(bytes, desc);
  }
}

void RenderFrame(FuzzedDataProvider& bytes, CBaseFilterProc& processor, FrameBuffer& src, FrameBuffer& dst,
                 const ParamValueArray* values) {
  const int32_t number = FrameNumber(bytes);
  const int32_t total = FrameNumber(bytes);
  const bool wildRate = bytes.ConsumeIntegral<uint8_t>() < 16;
  const double rate = wildRate ? std::bit_cast<double>(bytes.ConsumeIntegral<uint64_t>()) : 25.0;
  if (auto* timed = dynamic_cast<CTimeRelateFilter*>(&processor)) {
    timed->ProcessTimed(src.Data(), dst.Data(), values, number, total, rate, src.Step(), dst.Step());
    return;
  }
  processor.SetFrameRate(rate);
  processor.currentFrame = number;
  processor.totalFrames = total;
  processor.Process(src.Data(), dst.Data(), src.Step(), dst.Step(), values);
}

void RunProcessor(FuzzedDataProvider& bytes, const Materials& materials, int32_t id) {
  const int32_t width = Side(bytes);
  const int32_t height = Side(bytes);
  const auto processor = MakeEffect(id, width, height);
  if (!processor) return;
  ParamValueArray values = Values(id);
  const int frames = bytes.ConsumeIntegralInRange<int>(1, 6);
  for (int frame = 0; frame < frames; ++frame) {
    if (frame == 0 || bytes.ConsumeBool()) ReadValues(bytes, *processor, values);
    FrameBuffer src(width, height, Padding(bytes));
    FrameBuffer dst(width, height, Padding(bytes));
    FillPicture(bytes, src);
    const auto oddity = bytes.ConsumeIntegral<uint8_t>();
    if (oddity == 1) values.effectId = bytes.ConsumeIntegral<int32_t>();
    if (oddity == 2) materials.Choose(bytes.ConsumeIntegralInRange<int>(0, kMaterialSets - 1));
    if (oddity == 3) processor->GetParamDesc(nullptr, 0);
    if (oddity == 4) {
      FilterParamDesc desc{};
      processor->GetParamDesc(&desc, bytes.ConsumeIntegral<int32_t>());
    }
    RenderFrame(bytes, *processor, src, dst, oddity == 5 ? nullptr : &values);
    Require(src.GuardsIntact() && dst.GuardsIntact());
  }
}

NLEParamValue ValueOfKind(ParamKind kind, double value) {
  if (kind == ParamKind::kDouble) return NLEParamValue::Of(value);
  if (kind == ParamKind::kFloat) return NLEParamValue::Of(static_cast<float>(value));
  return NLEParamValue::Of(static_cast<int32_t>(value > -2e9 && value < 2e9 ? value : 0));
}

// What a host says about its image: mostly the truth, sometimes anything that does not claim bytes which are not there.
struct Claim {
  int32_t width, height, step;
};

Claim ClaimOf(FuzzedDataProvider& bytes, const FrameBuffer& frame) {
  if (bytes.ConsumeIntegral<uint8_t>() >= 32) return {frame.Width(), frame.Height(), frame.Step()};
  const int32_t width = bytes.ConsumeIntegralInRange<int32_t>(-2, 2 * frame.Width());
  const int32_t height = bytes.ConsumeIntegralInRange<int32_t>(-2, frame.Height());
  return {width, height, bytes.ConsumeIntegralInRange<int32_t>(-8, frame.Step())};
}

void RunFilter(FuzzedDataProvider& bytes, const EffectPluginInfo& record) {
  const auto description = std::make_shared<NLEFilterInfo>();
  vizcore::NLEPureCFilter filter(description);
  Require(filter.Init(FindEffectByID, &record) == 0);
  const int frames = bytes.ConsumeIntegralInRange<int>(1, 3);
  for (int frame = 0; frame < frames; ++frame) {
    for (int32_t i = 0; i < description->GetParamCount(); ++i) {
      std::shared_ptr<NLEFilterParams> params;
      description->GetParam(params, i);
      char name[64];
      params->GetName(name, sizeof name);
      const double value = Value(bytes, {0, u"", 0, 0, 50, 100});
      filter.SetParamValue(name, params->GetKind(), ValueOfKind(params->GetKind(), value));
    }
    filter.SetCurrentFrame(FrameNumber(bytes));
    filter.SetTotalFrames(FrameNumber(bytes));
    const int32_t width = Side(bytes);
    const int32_t height = Side(bytes);
    const bool same = bytes.ConsumeBool();
    FrameBuffer src(same ? width : Side(bytes), same ? height : Side(bytes), Padding(bytes));
    FrameBuffer dst(width, height, Padding(bytes));
    FillPicture(bytes, src);
    const Claim source = ClaimOf(bytes, src);
    const Claim target = ClaimOf(bytes, dst);
    filter.Render(src.Data(), source.width, source.height, source.step, 0, 0, 0, 0, dst.Data(), target.width,
                  target.height, target.step);
    Require(src.GuardsIntact() && dst.GuardsIntact());
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  PinCalendarSeconds(1);
  cv::setNumThreads(1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Materials materials;
  FuzzedDataProvider bytes(data, size);
  const size_t index = bytes.ConsumeIntegralInRange<size_t>(0, EffectRows().size() - 1);
  materials.Choose(bytes.ConsumeIntegralInRange<int>(0, kMaterialSets - 1));
  Rand().Seed(bytes.ConsumeIntegral<uint8_t>());
  const bool throughFilter = bytes.ConsumeIntegral<uint8_t>() < 32 && index < Records().size();
  g_seen[throughFilter][index % std::size(g_seen[0])] = 1;
  if (throughFilter) {
    RunFilter(bytes, *GetEffectPluginsInfo(static_cast<uint32_t>(index)));
  } else {
    RunProcessor(bytes, materials, EffectRows()[index].id);
  }
  return 0;
}
