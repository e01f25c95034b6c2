#include "catalogue/json_text.h"

#include <sstream>

namespace vizcore {

namespace {

using nlohmann::json;

// Deeper than any catalogue nests; what goes deeper yet is left to the library's list, since the stack is finite.
constexpr int kDeepest = 100;

void TakeApart(json& value, int depth) {
  if (!value.is_structured() || depth == kDeepest) return;
  for (json& child : value) TakeApart(child, depth + 1);
  value.clear();
}

}  // namespace

JsonTree::~JsonTree() {
  TakeApart(value, 0);
}

// The library's `parse` holds the value itself until it is done, and its stream operator takes what follows the value.
bool ParseJson(const std::string& text, json& out) {
  out = nullptr;
  if (!json::accept(text)) return false;
  std::istringstream(text) >> out;
  return true;
}

}  // namespace vizcore
