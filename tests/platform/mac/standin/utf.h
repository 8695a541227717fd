// Between UTF-16, which Core Foundation counts in, and UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace standin {

void appendUtf8(char32_t codePoint, std::string& out);

/// The code point at a place and how many units it takes; 0 units for half of a surrogate pair.
[[nodiscard]] std::pair<char32_t, std::size_t> codePointAt(std::u16string_view units,
                                                           std::size_t at);

/// Null when the bytes are not valid UTF-8.
[[nodiscard]] std::optional<std::u16string> decoded(std::string_view utf8);

}  // namespace standin
