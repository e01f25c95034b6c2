#include <algorithm>
#include <set>

#include "hostkit/text.h"
#include "hosts/kvx/command_line.h"
#include "hosts/kvx/media/video.h"

namespace kvx {

namespace {

using Words = std::vector<std::string>;

void AddNames(const EffectList& list, Words& candidates) {
  for (const EffectInfo& effect : list.All()) candidates.push_back(effect.name);
}

// What `-p NAME=` may begin with.
void AddParams(const EffectList& list, const std::string& effect, Words& candidates) {
  try {
    for (const ParamInfo& param : list.Find(effect).params) candidates.push_back(param.name + "=");
  } catch (const Error&) {
    // Not an effect yet; nothing to offer.
  }
}

// What may stand behind an option; nothing for files.
bool AddValues(const std::string& option, const EffectList& list, const std::string& effect, Words& candidates) {
  if (option == "-e" || option == "--effect") {
    AddNames(list, candidates);
  } else if (option == "-p" || option == "--param") {
    AddParams(list, effect, candidates);
  } else if (option == "--family") {
    candidates = Families();
  } else if (option == "--codec") {
    candidates = VideoEncoders();
  } else if (option == "--gaps") {
    candidates = {"close", "hold", "refuse"};
  } else {
    return false;
  }
  return true;
}

void AddOptions(const CLI::App& app, Words& candidates) {
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) candidates.push_back("--" + name);
    for (const std::string& name : option->get_snames()) candidates.push_back("-" + name);
  }
}

// The subcommand that the words before reach, and the words that are no options of it.
CLI::App& Walk(CLI::App& app, const Words& before, Words& positional) {
  CLI::App* at = &app;
  for (const std::string& word : before) {
    CLI::App* next = FindCommand(*at, word);
    if (next && positional.empty()) {
      at = next;
    } else if (!word.starts_with('-')) {
      positional.push_back(word);
    }
  }
  return *at;
}

}  // namespace

std::vector<std::string> Completions(CLI::App& app, const EffectList& list, const std::vector<std::string>& words) {
  const std::string current = words.empty() ? "" : words.back();
  const Words before(words.begin(), words.empty() ? words.end() : words.end() - 1);
  Words positional;
  Words candidates;
  CLI::App& at = Walk(app, before, positional);
  const std::string effect = positional.empty() ? "" : positional.front();
  static const std::set<std::string> takeEffect = {"render", "info", "preview", "write"};
  if (!before.empty() && AddValues(before.back(), list, effect, candidates)) {
    // Whatever the option takes.
  } else if (current.starts_with('-')) {
    AddOptions(at, candidates);
    if (&at != &app) AddOptions(app, candidates);
  } else {
    for (const CLI::App* sub : at.get_subcommands([](CLI::App*) { return true; }))
      candidates.push_back(sub->get_name());
    if (takeEffect.count(at.get_name()) && positional.empty()) AddNames(list, candidates);
  }
  std::sort(candidates.begin(), candidates.end());
  candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
  const auto other = [&](const std::string& candidate) { return !Lower(candidate).starts_with(Lower(current)); };
  candidates.erase(std::remove_if(candidates.begin(), candidates.end(), other), candidates.end());
  return candidates;
}

}  // namespace kvx
