#include "tests/platform/mac/standin/utf.h"

namespace standin {

void appendUtf8(char32_t codePoint, std::string& out) {
  const auto add = [&out](char32_t byte) { out += static_cast<char>(byte); };
  if (codePoint < 0x80) {
    add(codePoint);
  } else if (codePoint < 0x800) {
    add(0xC0 | codePoint >> 6);
    add(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    add(0xE0 | codePoint >> 12);
    add(0x80 | (codePoint >> 6 & 0x3F));
    add(0x80 | (codePoint & 0x3F));
  } else {
    add(0xF0 | codePoint >> 18);
    add(0x80 | (codePoint >> 12 & 0x3F));
    add(0x80 | (codePoint >> 6 & 0x3F));
    add(0x80 | (codePoint & 0x3F));
  }
}

std::pair<char32_t, std::size_t> codePointAt(std::u16string_view units, std::size_t at) {
  const char16_t unit = units[at];
  if (unit < 0xD800 || unit > 0xDFFF) {
    return {unit, 1};
  }
  const bool paired =
      unit < 0xDC00 && at + 1 < units.size() && units[at + 1] >= 0xDC00 && units[at + 1] <= 0xDFFF;
  if (!paired) {
    return {0, 0};
  }
  return {0x10000 + (static_cast<char32_t>(unit - 0xD800) << 10) +
              static_cast<char32_t>(units[at + 1] - 0xDC00),
          2};
}

std::optional<std::u16string> decoded(std::string_view utf8) {
  std::u16string units;
  for (std::size_t at = 0; at < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[at]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || at + length > utf8.size()) {
      return std::nullopt;
    }
    char32_t codePoint = length == 1 ? lead : lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
      const auto next = static_cast<unsigned char>(utf8[at + i]);
      if ((next & 0xC0) != 0x80) {
        return std::nullopt;
      }
      codePoint = codePoint << 6 | (next & 0x3F);
    }
    at += length;
    if (codePoint < 0x10000) {
      units += static_cast<char16_t>(codePoint);
    } else {
      units += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
    }
  }
  return units;
}

}  // namespace standin
