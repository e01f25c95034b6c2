// The one failure of our hosts.
#ifndef KVX_HOSTKIT_ERROR_H_
#define KVX_HOSTKIT_ERROR_H_

#include <stdexcept>
#include <string>

namespace kvx {

enum class ErrorKind {
  kFailure,      // something did not work: a file, memory, the plug-in
  kUsage,        // what was asked for makes no sense
  kUnknownName,  // no effect or parameter of this name, or several
  kBadValue,     // a value that is no number, or out of range
};

// One clear line for the user: what, where, why.
class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& line, ErrorKind kind = ErrorKind::kFailure)
      : std::runtime_error(line), kind_(kind) {}

  ErrorKind Kind() const { return kind_; }
  // Whether whoever asked is to blame, not the machine.
  bool IsUsage() const { return kind_ != ErrorKind::kFailure; }

 private:
  ErrorKind kind_;
};

inline Error UsageError(const std::string& line) {
  return Error(line, ErrorKind::kUsage);
}

}  // namespace kvx

#endif  // KVX_HOSTKIT_ERROR_H_
