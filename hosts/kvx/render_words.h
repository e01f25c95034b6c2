// The words of a run: what is rendered, through what, and how.
#ifndef KVX_HOSTS_KVX_RENDER_WORDS_H_
#define KVX_HOSTS_KVX_RENDER_WORDS_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "hosts/kvx/chain_words.h"
#include "hosts/kvx/commands.h"

namespace kvx {

struct RenderWords {
  ChainWords chain;
  RenderOptions options;
  int64_t frames = 0, startNumber = 0;
  double start = 0, end = 0;
  int crf = 0;
  bool literal = false, noAudio = false, noSubtitles = false;
  std::string size, pad, raw, bitrate, gaps;

  // `names` and `help` describe the words that are no options.
  void AddTo(CLI::App& sub, const std::string& names, const std::string& help);
  // When the words were parsed and the effects taken out of them: the input and the output are left. Throws a usage
  // error.
  void TakeOptions(const CLI::App& sub);
  // An option that changes nothing in this run is a mistake of somebody's. Throws a usage error.
  void RefuseIdleOptions(const CLI::App& sub) const;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_RENDER_WORDS_H_
