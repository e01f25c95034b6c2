// Entry of the module: reads what effects there are, without loading them, and registers an element for each.
#include <gst/gst.h>

#include <filesystem>

#include "hostkit/effects.h"
#include "hostkit/locate.h"
#include "hostkit/shared_plugin.h"
#include "hosts/gstreamer/video_effect.h"

#define PACKAGE "kvx"

namespace {

// GStreamer keeps a list of elements and asks the module again when one of these has changed.
void DependOn(GstPlugin* module, const std::string& description) {
  const std::filesystem::path path(description);
  const std::string directory = path.parent_path().string();
  const std::string file = path.filename().string();
  const char* variables[] = {"KVX_RESOURCES", nullptr};
  const char* directories[] = {directory.c_str(), nullptr};
  const char* files[] = {file.c_str(), nullptr};
  gst_plugin_add_dependency(module, variables, directories, files, GST_PLUGIN_DEPENDENCY_FLAG_NONE);
}

gboolean Init(GstPlugin* module) {
  const std::string root = kvx::DefaultResourceRoot();
  DependOn(module, kvx::DescriptionPath(root));
  // The elements' types refer to it for as long as the process lives.
  // If the description is damaged they say on opening what is wrong with the resources.
  static const auto* const effects = new kvx::EffectList(kvx::DescribedEffects(
      [](const std::string& line) { GST_CAT_WARNING(kvx::DebugCategory(), "%s", line.c_str()); }));
  bool done = true;
  for (const kvx::EffectInfo& effect : effects->All()) done = kvx::RegisterEffect(module, effect) && done;
  return done;
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, kvx, "Video effects on the CPU, exact to the byte", Init,
                  KVX_VERSION, "MIT/X11", "kvx", "kvx")
