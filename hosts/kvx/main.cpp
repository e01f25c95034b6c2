#include <algorithm>
#include <cstdio>
#include <exception>
#include <sstream>
#include <string>
#include <vector>

#include "hostkit/error.h"
#include "hostkit/locate.h"
#include "hosts/kvx/command_line.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/standard_output.h"

namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

// Prints a line for each thing that the last word may become.
int Complete(const std::vector<std::string>& words) {
  kvx::CommandLine line;
  const kvx::EffectList list = kvx::ReadDescription(kvx::DefaultResourceRoot());
  for (const std::string& candidate : kvx::Completions(line.App(), list, words)) kvx::Print(candidate + "\n");
  kvx::FlushStandardOutput();
  return kDone;
}

int Run(int argc, char** argv) {
  // Not for people, so it is no command of the parser's: kvx complete WORDS...
  if (argc > 1 && std::string(argv[1]) == "complete") return Complete({argv + 2, argv + argc});
  kvx::CommandLine line;
  std::vector<std::string> words = kvx::PlainWords(argc, argv);
  try {
    kvx::CheckCommandWords(line.App(), words);
    std::reverse(words.begin(), words.end());  // as the parser wants them
    line.App().parse(words);
  } catch (const CLI::Success& success) {
    std::ostringstream text;
    line.App().exit(success, text, text);
    kvx::Print(text.str());
    kvx::FlushStandardOutput();
    return kDone;
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kWrongUsage;
  }
  const bool whole = line.Run();
  kvx::FlushStandardOutput();
  return whole ? kDone : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  kvx::GuardStandardStreams();
  kvx::CatchSignals();
  try {
    return Run(argc, argv);
  } catch (const kvx::Interrupted&) {
    return kvx::StopStatus();
  } catch (const kvx::Error& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return error.IsUsage() ? kWrongUsage : kFailed;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kvx: %s\n", error.what());
    return kFailed;
  }
}
