#include "fuzz/catalogue_use.h"

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "boundary/registry.h"
#include "framework/random.h"
#include "tests/support/fake_host.h"

namespace {

constexpr int32_t kRenderedEffects = 4;

FakeProvider g_provider;

// The registry does not come back after `ShutdownKVX`, so a fresh one takes its place.
vizcore::PureCFilter& RenewRegistry() {
  vizcore::PureCFilter* registry = vizcore::PureCFilter::GetInstance();
  std::destroy_at(registry);
  return *std::construct_at(registry);
}

// The first frame goes without values of the host, the second with one for each name.
void AnswerWhatWasAsked(FakeContext& context) {
  for (const std::string& asked : context.asked) {
    const std::string name = asked.substr(0, asked.rfind(' ', asked.rfind(' ') - 1));
    context.numbers[name] = 3;
    context.texts[name] = "file:/picture.png";
  }
}

void RenderTwoFrames(const std::string& guid) {
  KVXEffect* effect = nullptr;
  if (CreateKVXEffect(guid.c_str(), 0, &effect) != kStatusOk) std::abort();  // it stands in the registry
  FrameBuffer src(24, 16, 8);
  FrameBuffer dst(24, 16, 8);
  src.FillTestPicture();
  FakeImage input(src);
  FakeImage output(dst);
  FakeContext context;
  context.input = &input;
  context.output = &output;
  effect->Prepare(&context);
  effect->Render(&context);
  AnswerWhatWasAsked(context);
  ++context.frame;
  effect->Prepare(&context);
  effect->Render(&context);
  if (!src.GuardsIntact() || !dst.GuardsIntact()) std::abort();
  ReleaseKVXEffect(effect);
}

void UseOnce(const std::string& root, const std::string& directory) {
  vizcore::PureCFilter& registry = RenewRegistry();
  g_provider.util.root = root;
  g_provider.util.log.clear();
  g_provider.asked.clear();
  HostStartupRecord host{nullptr, &g_provider};
  PluginStartupInfo info{};
  StartupKVX(&host, &info);
  FakeRegistrar registrar;
  for (int32_t i = 0; RegisterKVXEffect(i, &registrar) == kStatusOk; ++i) {
    if (i < kRenderedEffects) RenderTwoFrames(registry.At(static_cast<size_t>(i))->Guid());
  }
  if (!directory.empty()) RegisterKVXEffectFromConfPath(directory.c_str(), &registrar);
}

}  // namespace

void UseCatalogue(const std::string& root, const std::string& directory) {
  Rand().Seed(1);
  try {
    UseOnce(root, directory);
  } catch (const nlohmann::json::exception&) {
  } catch (const std::invalid_argument&) {
  } catch (const std::out_of_range&) {
  }
}
