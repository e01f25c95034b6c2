// JSON from files: parsed and dropped in a way that bears a lack of memory.
#ifndef KVX_CATALOGUE_JSON_TEXT_H_
#define KVX_CATALOGUE_JSON_TEXT_H_

#include <nlohmann/json.hpp>
#include <string>

namespace vizcore {

// Owns a value and ends it without taking memory. The library's own destructor puts what is nested into a list, and
// where there is no memory for the list it ends the process.
struct JsonTree {
  nlohmann::json value;

  JsonTree() = default;
  JsonTree(const JsonTree&) = delete;
  ~JsonTree();
};

// False, with `out` null, if the text is not JSON. `out` belongs to a `JsonTree`: if memory runs out on the way it
// holds what there is so far.
bool ParseJson(const std::string& text, nlohmann::json& out);

}  // namespace vizcore

#endif  // KVX_CATALOGUE_JSON_TEXT_H_
