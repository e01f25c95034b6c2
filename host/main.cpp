#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>

#include "commands.h"

namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

int Run(int argc, char** argv) {
  CLI::App app("Video effects on pictures and frames, through the kvx plug-in.", "kvx");
  app.set_version_flag("--version", KVX_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  std::string pluginPath = DefaultPluginPath();
  std::string resourceRoot = DefaultResourceRoot();
  bool verbose = false;
  app.add_option("--plugin", pluginPath, "The plug-in's file");
  app.add_option("--resources", resourceRoot, "The resource directory, with kvx_effect in it");
  app.add_flag("-v,--verbose", verbose, "Show what the plug-in logs");

  std::function<void(Plugin&)> command;

  std::string listPattern;
  bool json = false;
  CLI::App* list = app.add_subcommand("list", "The effects that the catalogue offers");
  list->add_option("PATTERN", listPattern, "Part of a name, or a name with * and ?");
  list->add_flag("--json", json, "As JSON");
  list->callback([&] { command = [&](Plugin& plugin) { ListEffects(plugin, listPattern, json); }; });

  std::string effectName;
  CLI::App* info = app.add_subcommand("info", "One effect and its parameters");
  info->add_option("EFFECT", effectName, "Name, id or GUID")->required();
  info->callback([&] { command = [&](Plugin& plugin) { ShowEffect(plugin.Find(effectName)); }; });

  RenderOptions render;
  int64_t frames = 0;
  std::string renderSize;
  std::string renderPad;
  CLI::App* renderCommand = app.add_subcommand("render", "Render a picture or a sequence through an effect");
  renderCommand->add_option("EFFECT", effectName, "Name, id or GUID")->required();
  renderCommand->add_option("INPUT", render.input, "PNG or JPEG file, sequence (in_%04d.png), or demo")->required();
  renderCommand->add_option("OUTPUT", render.output, "PNG or JPEG file (gets the last frame), or sequence")->required();
  renderCommand
      ->add_option("-p,--param", render.settings, "NAME=VALUE, or NAME=FRAME:VALUE,... with values linear between")
      ->allow_extra_args(false);
  CLI::Option* framesOption =
      renderCommand->add_option("--frames", frames, "Number of frames")->check(CLI::Range(int64_t{1}, int64_t{10000000}));
  renderCommand->add_option("--fps", render.fps, "Frames per second, for effects that follow time")
      ->check(CLI::Range(0.001, 100000.0));
  renderCommand->add_option("--opacity", render.opacity, "Opacity of the effect in percent")->check(CLI::Range(0, 100));
  renderCommand->add_option("--size", renderSize, "Size of the demo, such as 1920x1080");
  renderCommand->add_option("--pad", renderPad, "Fit the input into a transparent frame of this size");
  renderCommand->callback([&] {
    command = [&](Plugin& plugin) {
      if (framesOption->count() > 0) render.frames = frames;
      if (!renderSize.empty()) render.size = ParseFrameSize(renderSize);
      if (!renderPad.empty()) render.pad = ParseFrameSize(renderPad);
      RenderFrames(plugin, plugin.Find(effectName), render);
    };
  });

  ContactSheetOptions sheet;
  std::string sheetSize;
  std::string sheetPad;
  CLI::App* sheetCommand = app.add_subcommand("contact-sheet", "Every effect on one picture");
  sheetCommand->add_option("INPUT", sheet.input, "PNG or JPEG file, sequence, or demo")->required();
  sheetCommand->add_option("OUTPUT", sheet.output, "PNG or JPEG file")->required();
  sheetCommand->add_option("PATTERN", sheet.pattern, "Only effects whose name matches");
  sheetCommand->add_option("--each", sheet.each, "Also write one picture per effect into this directory");
  sheetCommand->add_option("--size", sheetSize, "Size of the demo");
  sheetCommand->add_option("--pad", sheetPad, "Fit the input into a transparent frame of this size");
  sheetCommand->callback([&] {
    command = [&](Plugin& plugin) {
      if (!sheetSize.empty()) sheet.size = ParseFrameSize(sheetSize);
      if (!sheetPad.empty()) sheet.pad = ParseFrameSize(sheetPad);
      RenderContactSheet(plugin, sheet);
    };
  });

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    app.exit(success);
    return kDone;
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kWrongUsage;
  }
  Plugin plugin(pluginPath, resourceRoot, verbose);
  command(plugin);
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kWrongUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kFailed;
  }
}
