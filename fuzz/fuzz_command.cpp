// The words of a command line, one a line. No plug-in and no resources are named by it, so that nothing is done but to
// understand the words.
#define main KvxMain
#include "hosts/kvx/main.cpp"
#undef main

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "hostkit/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> words = {"kvx", "--plugin=/nowhere/plugin", "--resources=/nowhere"};
  for (std::string& word : kvx::Split({data, data + size}, '\n')) {
    word = word.substr(0, word.find('\0'));
    words.push_back(std::move(word));
  }
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const int status = KvxMain(static_cast<int>(words.size()), argv.data());
  if (status < 0 || status > 2) std::abort();
  return 0;
}
