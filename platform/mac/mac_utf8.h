// Reading UTF-8 code point by code point. Any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace tarqo::mac {

struct CodePoint {
  char32_t value = 0;
  std::size_t bytes = 0;  ///< That it was read from; 0 at the end of the text.
};

/// The first code point of a text. What is malformed reads as U+FFFD: the longest start of a valid
/// sequence, or else one byte, as the Unicode standard recommends.
[[nodiscard]] CodePoint firstCodePoint(std::string_view text);

/// The last code point of a text, in the same reading.
[[nodiscard]] CodePoint lastCodePoint(std::string_view text);

/// The UTF-16 units that a code point takes.
[[nodiscard]] constexpr std::size_t utf16Units(char32_t codePoint) {
  return codePoint > 0xFFFF ? 2 : 1;
}

/// Unicode's property White_Space.
[[nodiscard]] bool isWhiteSpace(char32_t codePoint);

}  // namespace tarqo::mac
