// UTF-8 as the macOS backend reads it, against ICU.

#include "platform/mac/mac_utf8.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <string>
#include <vector>

namespace tarqo::mac {
namespace {

constexpr UChar32 kLastCodePoint = 0x10FFFF;

struct Read {
  char32_t value;
  std::size_t bytes;

  bool operator==(const Read&) const = default;
};

std::vector<Read> readByIcu(const std::string& text) {
  std::vector<Read> read;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  for (std::int32_t end = 0; end < length;) {
    const std::int32_t begin = end;
    UChar32 codePoint = 0;
    U8_NEXT_OR_FFFD(bytes, end, length, codePoint);
    read.push_back({static_cast<char32_t>(codePoint), static_cast<std::size_t>(end - begin)});
  }
  return read;
}

std::vector<Read> readHere(std::string_view text) {
  std::vector<Read> read;
  for (CodePoint next = firstCodePoint(text); next.bytes > 0; next = firstCodePoint(text)) {
    read.push_back({next.value, next.bytes});
    text.remove_prefix(next.bytes);
  }
  return read;
}

std::string encoded(UChar32 codePoint) {
  std::string bytes(U8_MAX_LENGTH, '\0');
  std::int32_t length = 0;
  U8_APPEND_UNSAFE(bytes.data(), length, codePoint);
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

TEST(MacUtf8, ReadsEveryCodePointFromBothEnds) {
  for (UChar32 codePoint = 0; codePoint <= kLastCodePoint; ++codePoint) {
    if (U_IS_SURROGATE(codePoint)) {
      continue;
    }
    const std::string bytes = encoded(codePoint);
    const CodePoint first = firstCodePoint(bytes + "a");
    ASSERT_EQ(first.value, static_cast<char32_t>(codePoint));
    ASSERT_EQ(first.bytes, bytes.size());
    const CodePoint last = lastCodePoint("a" + bytes);
    ASSERT_EQ(last.value, static_cast<char32_t>(codePoint));
    ASSERT_EQ(last.bytes, bytes.size());
    ASSERT_EQ(utf16Units(first.value), static_cast<std::size_t>(U16_LENGTH(codePoint)));
  }
}

TEST(MacUtf8, ReadsEveryPairOfBytesAndWhatFollowsAsIcuDoes) {
  for (int first = 0; first <= 0xFF; ++first) {
    for (int second = 0; second <= 0xFF; ++second) {
      const std::string start{static_cast<char>(first), static_cast<char>(second)};
      for (const char* end :
           {"", "\x80", "\xBF", "\x80\x80", "\xBF\xBF", "a", "\x80z", "\xE0\x80"}) {
        const std::string text = start + end;
        ASSERT_EQ(readHere(text), readByIcu(text)) << first << " " << second;
      }
    }
  }
}

TEST(MacUtf8, ReadsNothingInNothing) {
  EXPECT_EQ(firstCodePoint("").bytes, 0U);
  EXPECT_EQ(lastCodePoint("").bytes, 0U);
}

TEST(MacUtf8, ReadsHalfASequenceAtTheEndByteByByte) {
  EXPECT_EQ(lastCodePoint("a\xED\x95").bytes, 2U);
  EXPECT_EQ(lastCodePoint("a\xED\x95").value, U'\uFFFD');
  EXPECT_EQ(lastCodePoint("\x80\x80").bytes, 1U);
}

TEST(MacUtf8, KnowsTheWhiteSpaceThatIcuKnows) {
  for (UChar32 codePoint = 0; codePoint <= kLastCodePoint; ++codePoint) {
    ASSERT_EQ(isWhiteSpace(static_cast<char32_t>(codePoint)), u_isUWhiteSpace(codePoint) != 0)
        << codePoint;
  }
}

}  // namespace
}  // namespace tarqo::mac
