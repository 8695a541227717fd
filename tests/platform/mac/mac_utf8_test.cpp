// Reading UTF-8 without a library's help, held against ICU, which does it on other systems.
#include "platform/mac/mac_utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/unicode.h"

namespace tarqo::mac {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// The text with every malformed sequence replaced, read from the front.
std::string repairedByHand(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const CodePoint next = firstCodePoint(text);
    result += next.value == 0xFFFD ? kReplacement : text.substr(0, next.bytes);
    text.remove_prefix(next.bytes);
  }
  return result;
}

/// The lengths of the sequences of a text, read from the front and from the back.
std::vector<std::size_t> forward(std::string_view text) {
  std::vector<std::size_t> lengths;
  while (!text.empty()) {
    lengths.push_back(firstCodePoint(text).bytes);
    text.remove_prefix(lengths.back());
  }
  return lengths;
}
std::vector<std::size_t> backward(std::string_view text) {
  std::vector<std::size_t> lengths;
  while (!text.empty()) {
    lengths.insert(lengths.begin(), lastCodePoint(text).bytes);
    text.remove_suffix(lengths.front());
  }
  return lengths;
}

// Bytes on either side of every border in the encoding.
constexpr unsigned char kBorders[] = {0x00, 0x20, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                      0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE,
                                      0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};

constexpr unsigned char kLastBytes[] = {0x20, 0x80, 0xBF, 0xC2};

template <typename Check>
void forEveryFourBytes(const Check& check) {
  for (const unsigned char a : kBorders) {
    for (const unsigned char b : kBorders) {
      for (const unsigned char c : kBorders) {
        for (const unsigned char d : kLastBytes) {
          const char bytes[] = {static_cast<char>(a), static_cast<char>(b), static_cast<char>(c),
                                static_cast<char>(d)};
          check(std::string_view(bytes, sizeof bytes));
        }
      }
    }
  }
}

TEST(MacUtf8, RepairsAsIcuDoes) {
  int different = 0;
  forEveryFourBytes([&](std::string_view text) {
    different += repairedByHand(text) != unicode::repaired(text) ? 1 : 0;
  });
  EXPECT_EQ(different, 0);
}

TEST(MacUtf8, ReadsValidTextTheSameFromBothEnds) {
  int valid = 0;
  int different = 0;
  forEveryFourBytes([&](std::string_view text) {
    if (unicode::repaired(text) == text) {
      ++valid;
      different += forward(text) != backward(text) ? 1 : 0;
    }
  });
  EXPECT_GT(valid, 100);
  EXPECT_EQ(different, 0);
}

TEST(MacUtf8, ReadsTheFirstAndTheLastCodePoint) {
  EXPECT_EQ(firstCodePoint("한a").value, U'한');
  EXPECT_EQ(lastCodePoint("a\U0001F600").value, U'\U0001F600');
  EXPECT_EQ(lastCodePoint("a\U0001F600").bytes, 4u);
  EXPECT_EQ(firstCodePoint("").bytes, 0u);
  EXPECT_EQ(lastCodePoint("").bytes, 0u);
}

TEST(MacUtf8, CountsUnitsAsIcuDoes) {
  for (const std::string text : {"a", "한", "\U0001F600", "\xff"}) {
    EXPECT_EQ(utf16Units(firstCodePoint(text).value), unicode::utf16Length(text));
  }
}

TEST(MacUtf8, KnowsTheWhiteSpaceThatIcuTrims) {
  int different = 0;
  for (char32_t codePoint = 1; codePoint < 0xD800; ++codePoint) {
    std::string text;
    if (codePoint < 0x80) {
      text = {static_cast<char>(codePoint)};
    } else if (codePoint < 0x800) {
      text = {static_cast<char>(0xC0 | codePoint >> 6),
              static_cast<char>(0x80 | (codePoint & 0x3F))};
    } else {
      text = {static_cast<char>(0xE0 | codePoint >> 12),
              static_cast<char>(0x80 | (codePoint >> 6 & 0x3F)),
              static_cast<char>(0x80 | (codePoint & 0x3F))};
    }
    different += isWhiteSpace(codePoint) != unicode::trimmed(text).empty() ? 1 : 0;
  }
  EXPECT_EQ(different, 0);
}

}  // namespace
}  // namespace tarqo::mac
