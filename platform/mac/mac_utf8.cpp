#include "platform/mac/mac_utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tarqo::mac {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kLongestSequence = 4;
constexpr unsigned kContinuationBits = 6;
constexpr std::uint8_t kContinuationMask = 0x3F;

/// What a first byte says of its sequence: its length, its own bits, and which second bytes make a
/// character that is not written too long, no surrogate and within Unicode.
struct Lead {
  std::size_t length = 0;
  char32_t bits = 0;
  std::uint8_t secondLow = 0x80;
  std::uint8_t secondHigh = 0xBF;
};

Lead leadOf(std::uint8_t byte) {
  if (byte < 0x80) {
    return {1, byte};
  }
  if (byte >= 0xC2 && byte <= 0xDF) {
    return {2, static_cast<char32_t>(byte & 0x1F)};
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    Lead lead{3, static_cast<char32_t>(byte & 0x0F)};
    lead.secondLow = byte == 0xE0 ? 0xA0 : lead.secondLow;
    lead.secondHigh = byte == 0xED ? 0x9F : lead.secondHigh;
    return lead;
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    Lead lead{4, static_cast<char32_t>(byte & 0x07)};
    lead.secondLow = byte == 0xF0 ? 0x90 : lead.secondLow;
    lead.secondHigh = byte == 0xF4 ? 0x8F : lead.secondHigh;
    return lead;
  }
  return {};
}

struct Range {
  char32_t first;
  char32_t last;
};
constexpr std::array<Range, 10> kWhiteSpace{{{0x0009, 0x000D},
                                             {0x0020, 0x0020},
                                             {0x0085, 0x0085},
                                             {0x00A0, 0x00A0},
                                             {0x1680, 0x1680},
                                             {0x2000, 0x200A},
                                             {0x2028, 0x2029},
                                             {0x202F, 0x202F},
                                             {0x205F, 0x205F},
                                             {0x3000, 0x3000}}};

}  // namespace

CodePoint firstCodePoint(std::string_view text) {
  if (text.empty()) {
    return {};
  }
  const Lead lead = leadOf(static_cast<std::uint8_t>(text[0]));
  if (lead.length == 0) {
    return {kReplacement, 1};
  }
  char32_t value = lead.bits;
  for (std::size_t at = 1; at < lead.length; ++at) {
    const std::uint8_t byte = at < text.size() ? static_cast<std::uint8_t>(text[at]) : 0;
    const bool fits = at == 1 ? byte >= lead.secondLow && byte <= lead.secondHigh
                              : (byte & ~kContinuationMask) == 0x80;
    if (!fits) {
      return {kReplacement, at};
    }
    value = (value << kContinuationBits) | (byte & kContinuationMask);
  }
  return {value, lead.length};
}

CodePoint lastCodePoint(std::string_view text) {
  // The longest ending that reads as one code point.
  for (std::size_t bytes = std::min(kLongestSequence, text.size()); bytes > 1; --bytes) {
    const CodePoint found = firstCodePoint(text.substr(text.size() - bytes));
    if (found.bytes == bytes) {
      return found;
    }
  }
  return text.empty() ? CodePoint() : firstCodePoint(text.substr(text.size() - 1));
}

bool isWhiteSpace(char32_t codePoint) {
  return std::any_of(kWhiteSpace.begin(), kWhiteSpace.end(), [codePoint](const Range& range) {
    return codePoint >= range.first && codePoint <= range.last;
  });
}

}  // namespace tarqo::mac
