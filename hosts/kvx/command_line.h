// The words that `kvx` understands.
#ifndef KVX_HOSTS_KVX_COMMAND_LINE_H_
#define KVX_HOSTS_KVX_COMMAND_LINE_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/effects.h"
#include "hostkit/plugin.h"

namespace kvx {

// What every subcommand can be told.
struct Common {
  std::string pluginPath;
  std::string resourceRoot;
  bool verbose = false;
  std::optional<uint32_t> seed;
};

// The parser, and what the words that it parsed ask for.
class CommandLine {
 public:
  CommandLine();

  CLI::App& App() { return app_; }
  const Common& Shared() const { return common_; }
  // What a recipe says counts where the command line says nothing.
  void OfferSeed(std::optional<uint32_t> seed) {
    if (!common_.seed) common_.seed = seed;
  }
  // Does what was asked for. False if it could not be done whole, which was said. Throws Error.
  bool Run();

  // How the parts below add what they do. One of the two is called.
  using WithPlugin = std::function<bool(Plugin&)>;
  using WithoutPlugin = std::function<bool(const Common&)>;
  void Choose(WithPlugin command) { withPlugin_ = std::move(command); }
  void Choose(WithoutPlugin command) { withoutPlugin_ = std::move(command); }

 private:
  CLI::App app_;
  Common common_;
  WithPlugin withPlugin_;
  WithoutPlugin withoutPlugin_;
};

PluginOptions OptionsOf(const Common& common);

// The words to parse. Behind -- a word with a dash in front is a file's name: it gets its folder, so that it looks like
// one.
std::vector<std::string> PlainWords(int argc, char** argv);

// The subcommand of this name, or null.
CLI::App* FindCommand(CLI::App& app, const std::string& name);

// Throws a usage error, with the nearest names, for a word in a command's place that is none.
void CheckCommandWords(CLI::App& app, const std::vector<std::string>& words);

// One per group of subcommands.
void AddListing(CommandLine& line);
void AddRender(CommandLine& line);
void AddRecipe(CommandLine& line);
void AddSheets(CommandLine& line);
void AddStudio(CommandLine& line);
void AddFarm(CommandLine& line);

// What the last of `words`, which follow the program's name, may go on with: for the shells. Nothing: a file's name.
std::vector<std::string> Completions(CLI::App& app, const EffectList& list, const std::vector<std::string>& words);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_COMMAND_LINE_H_
