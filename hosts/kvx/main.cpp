#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>

#include "hostkit/locate.h"
#include "hostkit/recipe.h"
#include "hosts/kvx/commands.h"
#include "hosts/kvx/gallery.h"

namespace kvx {
namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

// What every subcommand can be told.
struct Common {
  std::string pluginPath = DefaultPluginPath();
  std::string resourceRoot = DefaultResourceRoot();
  bool verbose = false;
};

PluginOptions OptionsOf(const Common& common) {
  PluginOptions options;
  options.path = common.pluginPath;
  options.resourceRoot = common.resourceRoot;
  if (common.verbose) {
    options.log = [](int32_t level, const std::string& line) {
      std::fprintf(stderr, "plug-in [%d]: %s\n", level, line.c_str());
    };
  }
  return options;
}

using Command = std::function<bool(Plugin&)>;

void AddList(CLI::App& app, Command& command) {
  auto options = std::make_shared<ListOptions>();
  CLI::App* sub = app.add_subcommand("list", "The effects that the catalogue offers");
  sub->add_option("PATTERN", options->pattern, "Part of a name, or a name with * and ?");
  sub->add_option("--family", options->family, "Only families whose name matches");
  sub->add_flag("--moving", options->moving, "Only effects that move on a still source");
  sub->add_flag("--with-material", options->withMaterial, "Only effects that use a picture of the resources");
  sub->add_flag("--json", options->json, "As JSON");
  sub->callback([&command, options] {
    command = [options](Plugin& plugin) {
      ListEffects(plugin, *options);
      return true;
    };
  });
}

void AddInfo(CLI::App& app, Command& command) {
  auto name = std::make_shared<std::string>();
  CLI::App* sub = app.add_subcommand("info", "One effect and its parameters");
  sub->add_option("EFFECT", *name, "Name, id or GUID")->required();
  sub->callback([&command, name] {
    command = [name](Plugin& plugin) {
      ShowEffect(plugin.Effects().Find(*name));
      return true;
    };
  });
}

// The effects of a run: one positional EFFECT with -p, several -e, or a recipe.
struct ChainWords {
  std::vector<std::string> words;     // positional
  std::vector<std::string> settings;  // -p
  std::vector<std::string> effects;   // -e
  std::string recipe;
  double opacity = 100;

  void AddTo(CLI::App& sub) {
    sub.add_option("-p,--param", settings, "NAME=VALUE, or NAME=FRAME:VALUE,... with values linear between")
        ->allow_extra_args(false);
    sub.add_option("-e,--effect", effects, "One more effect of a chain: NAME or NAME:PARAM=VALUE;PARAM=VALUE")
        ->allow_extra_args(false);
    sub.add_option("--opacity", opacity, "Opacity of the effect in percent")->check(CLI::Range(0, 100));
  }
  // `files` is how many words follow the effect.
  Chain Build(Plugin& plugin, size_t files) {
    Chain chain;
    if (!recipe.empty()) {
      if (!effects.empty() || !settings.empty()) throw UsageError("--recipe goes without -e and -p");
      chain = ReadRecipe(plugin.Effects(), recipe);
    }
    for (const std::string& text : effects) chain.AddText(plugin.Effects(), text);
    if (chain.Empty()) {
      if (words.size() != files + 1) throw UsageError("an effect, the input and the output are wanted");
      chain.Add(plugin.Effects().Find(words.front()), settings, opacity);
      words.erase(words.begin());
    } else if (!effects.empty() && !settings.empty()) {
      throw UsageError("with -e, parameters stand behind the effect: -e \"NAME:PARAM=VALUE\"");
    }
    if (words.size() != files)
      throw UsageError(files == 2 ? "an input and an output are wanted" : "an output is wanted");
    return chain;
  }
};

void AddRender(CLI::App& app, Command& command) {
  struct Words {
    ChainWords chain;
    RenderOptions options;
    int64_t frames = 0;
    double start = 0, end = 0;
    int crf = 0;
    std::string size, pad, raw;
  };
  auto words = std::make_shared<Words>();
  CLI::App* sub = app.add_subcommand("render", "Render a picture, a sequence or a video through effects");
  sub->add_option("EFFECT INPUT OUTPUT", words->chain.words,
                  "EFFECT is a name, id or GUID (not given with -e or --recipe); INPUT and OUTPUT are pictures, "
                  "sequences (in_%04d.png), videos or - for a pipe; INPUT may be demo");
  words->chain.AddTo(*sub);
  sub->add_option("--recipe", words->chain.recipe, "File with the effects");
  auto* frames =
      sub->add_option("--frames", words->frames, "Number of frames")->check(CLI::Range(int64_t{1}, int64_t{10000000}));
  sub->add_option("--fps", words->options.input.fps, "Frames per second of what has no rate of its own")
      ->check(CLI::Range(0.001, 100000.0));
  sub->add_option("--size", words->size, "Size of the demo, such as 1920x1080");
  sub->add_option("--pad", words->pad, "Fit the input into a transparent frame of this size");
  auto* start =
      sub->add_option("--start", words->start, "Seconds to leave out at the beginning")->check(CLI::NonNegativeNumber);
  auto* end = sub->add_option("--end", words->end, "Second at which to end")->check(CLI::NonNegativeNumber);
  sub->add_option("--codec", words->options.output.codec, "Encoder of a video");
  auto* crf = sub->add_option("--crf", words->crf, "Quality of a video: lower is better")->check(CLI::Range(0, 63));
  sub->add_flag("--overwrite", words->options.output.overwrite, "Replace an existing video");
  sub->add_option("--raw", words->raw, "Pipes carry raw BGRA frames of this size instead of Y4M");
  sub->add_option("-j,--jobs", words->options.jobs, "Threads that render")->check(CLI::Range(1, 256));
  sub->add_flag("-q,--quiet", words->options.quiet, "No progress line");
  sub->add_option("--progress", words->options.progressFile, "Write progress as key=value blocks into this file");
  sub->callback([=, &command] {
    command = [=](Plugin& plugin) {
      RenderOptions& options = words->options;
      const Chain chain = words->chain.Build(plugin, 2);
      options.input.path = words->chain.words[0];
      options.output.path = words->chain.words[1];
      if (frames->count() > 0) options.input.frames = words->frames;
      if (start->count() > 0) options.input.start = words->start;
      if (end->count() > 0) options.input.end = words->end;
      if (crf->count() > 0) options.output.crf = words->crf;
      if (!words->size.empty()) options.input.demoSize = ParseFrameSize(words->size);
      if (!words->pad.empty()) options.pad = ParseFrameSize(words->pad);
      if (!words->raw.empty()) {
        options.input.rawSize = ParseFrameSize(words->raw);
        options.output.rawPipe = true;
      }
      return RenderFrames(plugin, chain, options);
    };
  });
}

void AddRecipe(CLI::App& app, Command& command) {
  CLI::App* sub = app.add_subcommand("recipe", "Write or check a file of effects");
  sub->require_subcommand(1);
  auto chainWords = std::make_shared<ChainWords>();
  CLI::App* write = sub->add_subcommand("write", "Write a recipe");
  write->add_option("EFFECT FILE", chainWords->words, "EFFECT is not given with -e")->required();
  chainWords->AddTo(*write);
  write->callback([=, &command] {
    command = [=](Plugin& plugin) {
      const Chain chain = chainWords->Build(plugin, 1);
      WriteRecipe(chain, chainWords->words.front());
      return true;
    };
  });
  auto file = std::make_shared<std::string>();
  CLI::App* check = sub->add_subcommand("check", "Check a recipe");
  check->add_option("FILE", *file)->required();
  check->callback([=, &command] {
    command = [=](Plugin& plugin) {
      const Chain chain = ReadRecipe(plugin.Effects(), *file);
      std::printf("%s: %zu effects, nothing wrong\n", file->c_str(), chain.Links().size());
      return true;
    };
  });
}

void AddSheets(CLI::App& app, Command& command) {
  auto sheet = std::make_shared<ContactSheetOptions>();
  auto sheetSize = std::make_shared<std::string>();
  auto sheetPad = std::make_shared<std::string>();
  CLI::App* contact = app.add_subcommand("contact-sheet", "Every effect on one picture");
  contact->add_option("INPUT", sheet->input, "Picture, sequence, video or demo")->required();
  contact->add_option("OUTPUT", sheet->output, "PNG or JPEG file")->required();
  contact->add_option("PATTERN", sheet->pattern, "Only effects whose name matches");
  contact->add_option("--each", sheet->each, "Also write one picture per effect into this directory");
  contact->add_option("--size", *sheetSize, "Size of the demo");
  contact->add_option("--pad", *sheetPad, "Fit the input into a transparent frame of this size");
  contact->callback([=, &command] {
    command = [=](Plugin& plugin) {
      if (!sheetSize->empty()) sheet->size = ParseFrameSize(*sheetSize);
      if (!sheetPad->empty()) sheet->pad = ParseFrameSize(*sheetPad);
      RenderContactSheet(plugin, *sheet);
      return true;
    };
  });

  auto preview = std::make_shared<PreviewOptions>();
  auto effect = std::make_shared<std::string>();
  CLI::App* previewCommand = app.add_subcommand("preview", "One effect at a grid of values");
  previewCommand->add_option("EFFECT", *effect, "Name, id or GUID")->required();
  previewCommand->add_option("INPUT", preview->input, "Picture, sequence, video or demo")->required();
  previewCommand->add_option("OUTPUT", preview->output, "PNG or JPEG file")->required();
  previewCommand->callback([=, &command] {
    command = [=](Plugin& plugin) {
      RenderPreview(plugin, plugin.Effects().Find(*effect), *preview);
      return true;
    };
  });

  auto gallery = std::make_shared<GalleryOptions>();
  CLI::App* galleryCommand = app.add_subcommand("gallery", "A web page of every effect, to look at without a network");
  galleryCommand->add_option("INPUT", gallery->input, "Picture, sequence, video or demo");
  galleryCommand->add_option("-o,--output", gallery->directory, "Directory to write")->required();
  galleryCommand->add_option("--width", gallery->width, "Width of the pictures")->check(CLI::Range(64, 1920));
  galleryCommand->callback([=, &command] {
    command = [=](Plugin& plugin) {
      WriteGallery(plugin, *gallery);
      return true;
    };
  });
}

int Run(int argc, char** argv) {
  CLI::App app("Video effects on pictures, sequences and videos, through the kvx plug-in.", "kvx");
  app.set_version_flag("--version", KVX_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  Common common;
  app.add_option("--plugin", common.pluginPath, "The plug-in's file");
  app.add_option("--resources", common.resourceRoot, "The resource directory, with kvx_effect in it");
  app.add_flag("-v,--verbose", common.verbose, "Show what the plug-in logs");

  Command command;
  AddList(app, command);
  AddInfo(app, command);
  AddRender(app, command);
  AddRecipe(app, command);
  AddSheets(app, command);
  bool doctor = false;
  app.add_subcommand("doctor", "Say what is wrong with the resource directory")->callback([&] { doctor = true; });

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    app.exit(success);
    return kDone;
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kWrongUsage;
  }
  if (doctor) return CheckResources(common.pluginPath, common.resourceRoot) ? kDone : kFailed;
  Plugin plugin(OptionsOf(common));
  return command(plugin) ? kDone : kFailed;
}

}  // namespace
}  // namespace kvx

int main(int argc, char** argv) {
  try {
    return kvx::Run(argc, argv);
  } catch (const kvx::Error& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return error.IsUsage() ? kvx::kWrongUsage : kvx::kFailed;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kvx::kFailed;
  }
}
