// Numbered files: in_%04d.png.
#ifndef KVX_HOSTS_KVX_SEQUENCE_H_
#define KVX_HOSTS_KVX_SEQUENCE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kvx {

struct NumberedFile {
  int64_t number;
  std::string path;
};

// The parts of a name around its %d or %0Nd.
class SequencePattern {
 public:
  // Nothing for a name without a number.
  static std::optional<SequencePattern> Parse(const std::string& text);

  std::string Name(int64_t number) const;
  // The files that there are, by number. Of two with one number the one that Name gives counts.
  std::vector<NumberedFile> List() const;

 private:
  std::string head_;
  std::string tail_;
  size_t digits_ = 0;  // at least so many
};

bool IsSequence(const std::string& path);

// Numbers in short: "3, 7 to 9", or with other words between.
std::string NumberRanges(const std::vector<int64_t>& numbers, const char* between = ", ", const char* to = " to ");

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_SEQUENCE_H_
