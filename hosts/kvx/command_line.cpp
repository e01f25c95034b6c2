#include "hosts/kvx/command_line.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "hostkit/locate.h"
#include "hostkit/recipe.h"
#include "hosts/kvx/chain_words.h"
#include "hosts/kvx/commands.h"
#include "hosts/kvx/gallery.h"
#include "hosts/kvx/media/video.h"
#include "hosts/kvx/output_file.h"
#include "hosts/kvx/overlap.h"
#include "hosts/kvx/seeded_clock.h"
#include "hosts/kvx/standard_output.h"
#include "hosts/kvx/studio/studio.h"

namespace kvx {

namespace {

constexpr char kOverwriteHelp[] = "Replace existing files";

std::vector<std::string> NamesOf(CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* sub : app.get_subcommands([](CLI::App*) { return true; })) names.push_back(sub->get_name());
  return names;
}

// True if what was asked for draws by chance, or keeps what decides it.
bool Renders(const CLI::App& app) {
  static const std::set<std::string> kOthers = {"list", "info",   "doctor", "check", "run",
                                                "join", "status", "submit", "clean"};
  for (const CLI::App* sub : app.get_subcommands()) {
    if (kOthers.count(sub->get_name()) > 0 || !Renders(*sub)) return false;
  }
  return true;
}

}  // namespace

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

CommandLine::CommandLine() : app_("Video effects on pictures, sequences and videos, through the kvx plug-in.", "kvx") {
  app_.set_version_flag("--version", KVX_VERSION);
  app_.require_subcommand(1);
  app_.fallthrough();
  app_.add_option("--plugin", common_.pluginPath, "The plug-in's file");
  app_.add_option("--resources", common_.resourceRoot, "The resource directory, with kvx_effect in it");
  app_.add_option("--seed", common_.seed,
                  "Number that decides what effects draw by chance: the same bytes in every run")
      ->check(CLI::Range(uint32_t{0}, UINT32_MAX));
  app_.add_flag("-v,--verbose", common_.verbose, "Show what the plug-in and the media libraries log");
  AddListing(*this);
  AddRender(*this);
  AddRecipe(*this);
  AddSheets(*this);
  AddStudio(*this);
  AddFarm(*this);
}

bool CommandLine::Run() {
  if (common_.pluginPath.empty()) common_.pluginPath = DefaultPluginPath();
  if (common_.resourceRoot.empty()) common_.resourceRoot = DefaultResourceRoot();
  SetMediaVerbose(common_.verbose);
  if (common_.seed && !Renders(app_))
    throw UsageError("--seed is for commands that render, for recipe write and for farm plan");
  if (withoutPlugin_) return withoutPlugin_(common_);
  if (common_.seed) SeedClock(*common_.seed);  // before the plug-in starts, which draws already
  Plugin plugin(OptionsOf(common_));
  return withPlugin_(plugin);
}

CLI::App* FindCommand(CLI::App& app, const std::string& name) {
  const auto found = app.get_subcommands([&](CLI::App* sub) { return sub->get_name() == name; });
  return found.empty() ? nullptr : found.front();
}

std::vector<std::string> PlainWords(int argc, char** argv) {
  std::vector<std::string> words;
  bool plain = false;
  for (int i = 1; i < argc; ++i) {
    std::string word = argv[i];
    if (!plain && word == "--") {
      plain = true;
      continue;
    }
    words.push_back(plain && word.size() > 1 && word.starts_with('-') ? "./" + word : word);
  }
  return words;
}

void CheckCommandWords(CLI::App& app, const std::vector<std::string>& words) {
  CLI::App* at = &app;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--plugin" || word == "--resources" || word == "--seed") {
      ++i;
      continue;
    }
    if (word.starts_with('-') && word.size() > 1) continue;
    const std::vector<std::string> names = NamesOf(*at);
    if (names.empty()) return;
    CLI::App* next = FindCommand(*at, word);
    if (!next) {
      const std::string what = at == &app ? "" : at->get_name() + " ";
      throw Error(
          fmt::format("no command \"{}{}\"; did you mean {}?", what, word, fmt::join(NearestNames(word, names), ", ")),
          ErrorKind::kUnknownName);
    }
    at = next;
  }
}

void AddListing(CommandLine& line) {
  auto options = std::make_shared<ListOptions>();
  CLI::App* list = line.App().add_subcommand("list", "The effects that the catalogue offers");
  list->add_option("PATTERN", options->pattern, "Part of a name, or a name with * and ?");
  list->add_option("--family", options->family, "Only families whose name matches");
  list->add_flag("--moving", options->moving, "Only effects that move on a still source");
  list->add_flag("--with-material", options->withMaterial, "Only effects that use a picture of the resources");
  list->add_flag("--json", options->json, "As JSON");
  list->callback([&line, options] {
    line.Choose([options](Plugin& plugin) {
      ListEffects(plugin.Effects(), *options);
      return true;
    });
  });

  auto name = std::make_shared<std::string>();
  auto json = std::make_shared<bool>(false);
  CLI::App* info = line.App().add_subcommand("info", "One effect and its parameters");
  info->add_option("EFFECT", *name, "Name, id or GUID")->required();
  info->add_flag("--json", *json, "As JSON");
  info->callback([&line, name, json] {
    line.Choose([name, json](Plugin& plugin) {
      ShowEffect(plugin.Effects().Find(*name), *json);
      return true;
    });
  });

  auto reportAsJson = std::make_shared<bool>(false);
  CLI::App* doctor = line.App().add_subcommand("doctor", "Say what is wrong with the resource directory");
  doctor->add_flag("--json", *reportAsJson, "As JSON");
  doctor->callback([&line, reportAsJson] {
    line.Choose([reportAsJson](const Common& common) {
      return CheckResources(common.pluginPath, common.resourceRoot, *reportAsJson);
    });
  });
}

void AddRecipe(CommandLine& line) {
  CLI::App* sub = line.App().add_subcommand("recipe", "Write or check a file of effects");
  sub->require_subcommand(1);
  auto chainWords = std::make_shared<ChainWords>();
  auto overwrite = std::make_shared<bool>(false);
  CLI::App* write = sub->add_subcommand("write", "Write a recipe");
  write->add_option("EFFECT FILE", chainWords->words, "EFFECT is not given with -e")->required();
  chainWords->AddTo(*write);
  write->add_flag("--overwrite", *overwrite, kOverwriteHelp);
  write->callback([&line, chainWords, overwrite] {
    line.Choose([&line, chainWords, overwrite](Plugin& plugin) {
      Chain chain = chainWords->Build(plugin.Effects(), 1);
      chain.SetSeed(line.Shared().seed);
      WriteWholeFile(chainWords->words.front(), RecipeText(chain), *overwrite);
      return true;
    });
  });
  auto file = std::make_shared<std::string>();
  CLI::App* check = sub->add_subcommand("check", "Check a recipe");
  check->add_option("FILE", *file, "The recipe")->required();
  check->callback([&line, file] {
    line.Choose([file](Plugin& plugin) {
      const Chain chain = ReadRecipe(plugin.Effects(), *file);
      const size_t count = chain.Links().size();
      Print(fmt::format("{}: {} effect{}, nothing wrong\n", *file, count, count == 1 ? "" : "s"));
      return true;
    });
  });
}

void AddSheets(CommandLine& line) {
  auto sheet = std::make_shared<ContactSheetOptions>();
  auto sheetSize = std::make_shared<std::string>();
  auto sheetPad = std::make_shared<std::string>();
  CLI::App* contact = line.App().add_subcommand("contact-sheet", "Every effect on one picture");
  contact->add_option("INPUT", sheet->input, "Picture, sequence, video or demo")->required();
  contact->add_option("OUTPUT", sheet->output, "PNG or JPEG file")->required();
  contact->add_option("PATTERN", sheet->pattern, "Only effects whose name matches");
  contact->add_option("--each", sheet->each, "Also write one picture per effect into this directory");
  contact->add_option("--size", *sheetSize, "Size of the demo");
  contact->add_option("--pad", *sheetPad, "Fit the input into a transparent frame of this size");
  contact->add_flag("--overwrite", sheet->overwrite, kOverwriteHelp);
  contact->callback([&line, sheet, sheetSize, sheetPad] {
    line.Choose([sheet, sheetSize, sheetPad](Plugin& plugin) {
      if (!sheetSize->empty() && sheet->input != "demo") throw UsageError("--size is for the input demo");
      if (!sheetSize->empty()) sheet->size = ParseFrameSize(*sheetSize);
      if (!sheetPad->empty()) sheet->pad = ParseFrameSize(*sheetPad);
      RefuseOverlap({sheet->input}, {sheet->output});
      RenderContactSheet(plugin, *sheet);
      return true;
    });
  });

  auto preview = std::make_shared<PreviewOptions>();
  auto effect = std::make_shared<std::string>();
  CLI::App* previewCommand = line.App().add_subcommand("preview", "One effect at a grid of values");
  previewCommand->add_option("EFFECT", *effect, "Name, id or GUID")->required();
  previewCommand->add_option("INPUT", preview->input, "Picture, sequence, video or demo")->required();
  previewCommand->add_option("OUTPUT", preview->output, "PNG or JPEG file")->required();
  previewCommand->add_flag("--overwrite", preview->overwrite, kOverwriteHelp);
  previewCommand->callback([&line, preview, effect] {
    line.Choose([preview, effect](Plugin& plugin) {
      RefuseOverlap({preview->input}, {preview->output});
      RenderPreview(plugin, plugin.Effects().Find(*effect), *preview);
      return true;
    });
  });

  auto gallery = std::make_shared<GalleryOptions>();
  CLI::App* galleryCommand =
      line.App().add_subcommand("gallery", "A web page of every effect, to look at without a network");
  galleryCommand->add_option("INPUT", gallery->input, "Picture, sequence, video or demo");
  galleryCommand->add_option("-o,--output", gallery->directory, "Directory to write")->required();
  galleryCommand->add_option("--width", gallery->width, "Width of the pictures")->check(CLI::Range(64, 1920));
  galleryCommand->add_flag("--overwrite", gallery->overwrite, kOverwriteHelp);
  galleryCommand->callback([&line, gallery] {
    line.Choose([gallery](Plugin& plugin) {
      WriteGallery(plugin, *gallery);
      return true;
    });
  });
}

void AddStudio(CommandLine& line) {
  auto options = std::make_shared<StudioOptions>();
  CLI::App* studio = line.App().add_subcommand("studio", "Choose, tune and chain effects in a browser");
  studio->add_option("INPUT", options->input, "Picture, sequence, video or demo");
  studio->add_option("--port", options->port, "Port to listen on; any free one if it is not given")
      ->check(CLI::Range(1, 65535));
  studio->add_flag("--open", options->open, "Open the page in the browser");
  studio->callback(
      [&line, options] { line.Choose([options](Plugin& plugin) { return RunStudio(plugin, *options); }); });
}

}  // namespace kvx
