// The input is PureCFilter.conf, read by the plug-in's start-up.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/catalogue_use.h"
#include "tests/support/fake_host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const TemporaryDirectory root;
  root.Write("kvx_effect/material/PureCFilter.conf", std::string(data, data + size));
  UseCatalogue(root.Path().string());
  return 0;
}
