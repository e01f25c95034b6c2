// Conversion between UTF-8 and UTF-16.
#ifndef KVX_PLATFORM_TEXT_H_
#define KVX_PLATFORM_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

// Nothing if `text` is not valid UTF-8.
std::optional<std::u16string> WidenUtf8(std::string_view text);

// A code unit of the surrogate range that has no partner becomes U+FFFD.
std::string NarrowUtf8(std::u16string_view text);

#endif  // KVX_PLATFORM_TEXT_H_
