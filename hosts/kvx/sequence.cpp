#include "hosts/kvx/sequence.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace kvx {

namespace fs = std::filesystem;

std::optional<SequencePattern> SequencePattern::Parse(const std::string& text) {
  const size_t percent = text.find('%');
  if (percent == std::string::npos) return std::nullopt;
  size_t at = percent + 1;
  SequencePattern pattern;
  while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
    pattern.digits_ = std::min<size_t>(pattern.digits_ * 10 + static_cast<size_t>(text[at++] - '0'), 20);
  }
  if (at >= text.size() || text[at] != 'd') return std::nullopt;
  pattern.head_ = text.substr(0, percent);
  pattern.tail_ = text.substr(at + 1);
  // A number in the name of a folder names no files.
  if (pattern.tail_.find('/') != std::string::npos) return std::nullopt;
  return pattern;
}

std::string SequencePattern::Name(int64_t number) const {
  return fmt::format("{}{:0{}}{}", head_, number, digits_, tail_);
}

std::vector<NumberedFile> SequencePattern::List() const {
  const fs::path head(head_);
  const fs::path directory = head.parent_path().empty() ? fs::path(".") : head.parent_path();
  const std::string prefix = head.filename().string();
  std::vector<NumberedFile> found;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(prefix) || !name.ends_with(tail_) ||
        name.size() < prefix.size() + tail_.size() + std::max<size_t>(digits_, 1)) {
      continue;
    }
    const std::string digits = name.substr(prefix.size(), name.size() - prefix.size() - tail_.size());
    int64_t number = 0;
    const auto [end, bad] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (bad == std::errc() && end == digits.data() + digits.size() && digits[0] != '-') {
      found.push_back({number, (head.parent_path() / name).string()});
    }
  }
  const auto exact = [this](const NumberedFile& file) {
    return fs::path(Name(file.number)).filename() == fs::path(file.path).filename();
  };
  std::sort(found.begin(), found.end(), [&](const NumberedFile& a, const NumberedFile& b) {
    return a.number != b.number ? a.number < b.number : exact(a) > exact(b);
  });
  const auto same = [](const NumberedFile& a, const NumberedFile& b) { return a.number == b.number; };
  found.erase(std::unique(found.begin(), found.end(), same), found.end());
  return found;
}

bool IsSequence(const std::string& path) {
  return SequencePattern::Parse(path).has_value();
}

std::string NumberRanges(const std::vector<int64_t>& numbers, const char* between, const char* to) {
  std::string text;
  for (size_t i = 0; i < numbers.size();) {
    size_t end = i + 1;
    while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
    if (!text.empty()) text += between;
    text += end - i == 1 ? fmt::format("{}", numbers[i]) : fmt::format("{}{}{}", numbers[i], to, numbers[end - 1]);
    i = end;
  }
  return text;
}

}  // namespace kvx
