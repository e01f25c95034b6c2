// The module's one export: a filter for every effect.
#include <framework/mlt.h>

#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <string>

#include "hostkit/shared_plugin.h"
#include "hosts/mlt/effect_renderer.h"
#include "hosts/mlt/frame_order.h"
#include "hosts/mlt/frame_place.h"
#include "hosts/mlt/metadata.h"
#include "hosts/mlt/names.h"
#include "hosts/mlt/values.h"

namespace kvx {

namespace {

constexpr char kTurnName[] = "_kvx_turn";

// Not twice in a row: programs make a project's filters several times over.
void LogError(mlt_service service, const std::string& line) {
  static std::mutex mutex;
  static auto* const last = new std::string;  // threads may outlive static objects
  const std::lock_guard lock(mutex);
  if (line != *last) mlt_log_error(service, "%s\n", line.c_str());
  *last = line;
}

// What hangs on an MLT filter.
class FilterState {
 public:
  explicit FilterState(const EffectInfo& effect) : effect_(effect), renderer_(MakeRenderer(effect)) {}

  static FilterState& Of(mlt_filter filter) { return *static_cast<FilterState*>(filter->child); }

  void Ask(mlt_filter filter, mlt_frame frame) {
    if (!effect_.ordered) return;
    mlt_properties own = mlt_frame_unique_properties(frame, MLT_FILTER_SERVICE(filter));
    const auto destroy = [](void* turn) { delete static_cast<FrameOrder::Turn*>(turn); };
    mlt_properties_set_data(own, kTurnName, order_->Ask().release(), 0, destroy, nullptr);
  }

  // Leaves the image as it is, after a line in the log, if the effect cannot be rendered.
  void Render(mlt_filter filter, mlt_frame frame, RgbaImage image) {
    const FilterPlace place = FindPlace(filter, frame);
    const auto valuesAt = [&](int64_t number) {
      const double milliseconds = place.fps > 0 ? static_cast<double>(number) / place.fps * 1000 : 0;
      KeyframePlace keyframes = place.keyframes;
      keyframes.position -= static_cast<int>(place.frame.frame - number);
      const ServiceLock lock(MLT_FILTER_SERVICE(filter));
      return ReadValues(MLT_FILTER_PROPERTIES(filter), effect_, keyframes, milliseconds);
    };
    FrameOrder::Turn* turn = TurnOf(filter, frame);
    if (turn) turn->Wait();
    try {
      renderer_->Render(image, place.frame, valuesAt);
      Complain(filter, "", "");
    } catch (const Error& error) {
      // A frame number in the line must not make it a new one.
      Complain(filter, error.Kind() == ErrorKind::kFailure ? "failure" : error.what(), error.what());
    } catch (const std::exception& error) {
      Complain(filter, "failure", error.what());
    }
    if (turn) turn->End();
  }

 private:
  class ServiceLock {
   public:
    explicit ServiceLock(mlt_service service) : service_(service) { mlt_service_lock(service_); }
    ~ServiceLock() { mlt_service_unlock(service_); }
    ServiceLock(const ServiceLock&) = delete;
    ServiceLock& operator=(const ServiceLock&) = delete;

   private:
    mlt_service service_;
  };

  FrameOrder::Turn* TurnOf(mlt_filter filter, mlt_frame frame) {
    if (!effect_.ordered) return nullptr;
    mlt_properties own = mlt_frame_get_unique_properties(frame, MLT_FILTER_SERVICE(filter));
    return own ? static_cast<FrameOrder::Turn*>(mlt_properties_get_data(own, kTurnName, nullptr)) : nullptr;
  }

  // Not again for every frame: a line for each new `reason`, none for an empty one.
  void Complain(mlt_filter filter, const std::string& reason, const std::string& line) {
    const std::lock_guard lock(mutex_);
    if (reason == lastReason_) return;
    lastReason_ = reason;
    if (reason.empty()) return;
    LogError(MLT_FILTER_SERVICE(filter), ServiceName(effect_) + ": " + line + "; frames pass unchanged");
  }

  const EffectInfo& effect_;
  const std::unique_ptr<EffectRenderer> renderer_;
  const std::shared_ptr<FrameOrder> order_ = std::make_shared<FrameOrder>();
  std::mutex mutex_;
  std::string lastReason_;
};

int GetImage(mlt_frame frame, uint8_t** image, mlt_image_format* format, int* width, int* height, int) {
  const auto filter = static_cast<mlt_filter>(mlt_frame_pop_service(frame));
  *format = mlt_image_rgba;
  const int error = mlt_frame_get_image(frame, image, format, width, height, 1);
  if (error == 0 && *image && *format == mlt_image_rgba && *width > 0 && *height > 0) {
    FilterState::Of(filter).Render(filter, frame, {*image, *width, *height});
  }
  return error;
}

mlt_frame Process(mlt_filter filter, mlt_frame frame) {
  try {
    FilterState::Of(filter).Ask(filter, frame);
  } catch (const std::exception& error) {
    mlt_log_error(MLT_FILTER_SERVICE(filter), "%s; a frame passes unchanged\n", error.what());
    return frame;
  }
  mlt_frame_push_service(frame, filter);
  mlt_frame_push_get_image(frame, GetImage);
  return frame;
}

// Read once; it must stay as long as the module does.
const EffectList& Effects() {
  static const auto* const effects = new EffectList(DescribedEffects([](const std::string& line) {
    mlt_log_error(nullptr, "kvx: %s; taking the built-in description\n", line.c_str());
  }));
  return *effects;
}

const EffectInfo* FindEffect(const char* service) {
  for (const EffectInfo& effect : Effects().All()) {
    if (ServiceName(effect) == service) return &effect;
  }
  return nullptr;
}

void* MakeFilter(mlt_profile, mlt_service_type, const char* service, const void* argument) {
  const EffectInfo* effect = FindEffect(service);
  mlt_filter filter = effect ? mlt_filter_new() : nullptr;
  if (!filter) return nullptr;
  try {
    filter->child = new FilterState(*effect);
  } catch (const std::exception& error) {
    mlt_log_error(nullptr, "%s: %s\n", service, error.what());
    mlt_filter_close(filter);
    return nullptr;
  }
  filter->process = Process;
  mlt_properties properties = MLT_FILTER_PROPERTIES(filter);
  const auto destroy = [](void* state) { delete static_cast<FilterState*>(state); };
  mlt_properties_set_data(properties, "_kvx_state", filter->child, 0, destroy, nullptr);
  const auto* text = static_cast<const char*>(argument);
  if (text && *text) mlt_properties_set(properties, ArgumentProperty(*effect).c_str(), text);
  return filter;
}

mlt_properties Metadata(mlt_service_type, const char* service, void*) {
  const EffectInfo* effect = FindEffect(service);
  return effect ? MakeMetadata(*effect) : nullptr;
}

}  // namespace

}  // namespace kvx

extern "C" __attribute__((visibility("default"))) MLT_REPOSITORY {
  try {
    for (const kvx::EffectInfo& effect : kvx::Effects().All()) {
      const std::string name = kvx::ServiceName(effect);
      MLT_REGISTER(mlt_service_filter_type, name.c_str(), kvx::MakeFilter);
      MLT_REGISTER_METADATA(mlt_service_filter_type, name.c_str(), kvx::Metadata, nullptr);
    }
  } catch (const std::exception& error) {
    mlt_log_error(nullptr, "kvx: no filters: %s\n", error.what());
  }
}
