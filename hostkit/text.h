// Texts that users write.
#ifndef KVX_HOSTKIT_TEXT_H_
#define KVX_HOSTKIT_TEXT_H_

#include <string>
#include <vector>

namespace kvx {

// ASCII letters only.
std::string Lower(std::string text);

// Empty parts are left out.
std::vector<std::string> Split(const std::string& text, char separator);

// `text` as one word of a shell.
std::string ShellWord(const std::string& text);

// A percentage, 0 to 100. Throws Error.
double ParseOpacity(const std::string& text);

}  // namespace kvx

#endif  // KVX_HOSTKIT_TEXT_H_
