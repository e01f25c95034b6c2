#include "hostkit/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>

#include "hostkit/error.h"

namespace kvx {

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
  return text;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t from = 0;
  while (from <= text.size()) {
    const size_t to = std::min(text.find(separator, from), text.size());
    if (to > from) parts.push_back(text.substr(from, to - from));
    from = to + 1;
  }
  return parts;
}

std::string ShellWord(const std::string& text) {
  const auto plain = [](unsigned char c) { return std::isalnum(c) || (c && std::strchr("%+,-./:=@_", c)); };
  if (!text.empty() && std::all_of(text.begin(), text.end(), plain)) return text;
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

double ParseOpacity(const std::string& text) {
  double value = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !(value >= 0 && value <= 100)) {
    throw Error(fmt::format("\"{}\" is not an opacity from 0 to 100", text), ErrorKind::kBadValue);
  }
  return value;
}

}  // namespace kvx
