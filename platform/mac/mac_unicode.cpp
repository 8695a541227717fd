// Text as people count it, by Core Foundation: what it calls a composed character is a grapheme
// cluster, but for a carriage return with its line feed, which it counts as two.

#include <CoreFoundation/CoreFoundation.h>

#include "platform/mac/mac_cf_text.h"
#include "platform/mac/mac_utf8.h"
#include "platform/unicode.h"

namespace tarqo::unicode {
namespace {

using mac::CfRef;
using mac::CodePoint;

constexpr std::string_view kReplacementBytes = "\xEF\xBF\xBD";
constexpr char32_t kReplacementCodePoint = 0xFFFD;
constexpr std::string_view kLineEnd = "\r\n";

/// Calls `visit` with each code point and its bytes. Stops when `visit` yields false.
template <typename Visit>
void forEachCodePoint(std::string_view text, const Visit& visit) {
  while (!text.empty()) {
    const CodePoint next = mac::firstCodePoint(text);
    if (!visit(next.value, text.substr(0, next.bytes))) {
      return;
    }
    text.remove_prefix(next.bytes);
  }
}

/// Walks the grapheme clusters of a text.
class Clusters {
 public:
  explicit Clusters(std::string_view text) : rest_(text), wide_(mac::makeString(repaired(text))) {}

  /// The next cluster; empty at the end.
  [[nodiscard]] std::string_view next() {
    const std::size_t bytes = rest_.starts_with(kLineEnd) ? take(kLineEnd.size()) : take(units());
    const std::string_view cluster = rest_.substr(0, bytes);
    rest_.remove_prefix(bytes);
    return cluster;
  }

 private:
  /// The UTF-16 units of the next cluster.
  [[nodiscard]] std::size_t units() const {
    if (!wide_ || at_ >= CFStringGetLength(wide_.get())) {
      return 1;
    }
    const CFRange range = CFStringGetRangeOfComposedCharactersAtIndex(wide_.get(), at_);
    return static_cast<std::size_t>(range.location + range.length - at_);
  }

  /// The bytes of the next `wanted` UTF-16 units, which are passed.
  [[nodiscard]] std::size_t take(std::size_t wanted) {
    std::size_t bytes = 0;
    for (std::size_t taken = 0; taken < wanted && bytes < rest_.size();) {
      const CodePoint next = mac::firstCodePoint(rest_.substr(bytes));
      taken += mac::utf16Units(next.value);
      at_ += static_cast<CFIndex>(mac::utf16Units(next.value));
      bytes += next.bytes;
    }
    return bytes;
  }

  std::string_view rest_;
  CfRef<CFStringRef> wide_;
  CFIndex at_ = 0;  ///< In UTF-16 units.
};

}  // namespace

std::string repaired(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  forEachCodePoint(text, [&](char32_t codePoint, std::string_view bytes) {
    result += codePoint == kReplacementCodePoint ? kReplacementBytes : bytes;
    return true;
  });
  return result;
}

std::string trimmed(std::string_view text) {
  for (CodePoint first = mac::firstCodePoint(text);
       first.bytes > 0 && mac::isWhiteSpace(first.value); first = mac::firstCodePoint(text)) {
    text.remove_prefix(first.bytes);
  }
  for (CodePoint last = mac::lastCodePoint(text); last.bytes > 0 && mac::isWhiteSpace(last.value);
       last = mac::lastCodePoint(text)) {
    text.remove_suffix(last.bytes);
  }
  return std::string(text);
}

std::string prefix(std::string_view text, std::size_t count) {
  // No cluster is shorter than a byte.
  if (text.size() <= count) {
    return std::string(text);
  }
  Clusters clusters(text);
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < count && bytes < text.size(); ++i) {
    bytes += clusters.next().size();
  }
  return std::string(text.substr(0, bytes));
}

void forEachCluster(std::string_view text, const std::function<void(std::string_view)>& visit) {
  Clusters clusters(text);
  for (auto cluster = clusters.next(); !cluster.empty(); cluster = clusters.next()) {
    visit(cluster);
  }
}

std::size_t clusterCount(std::string_view text, std::size_t limit) {
  Clusters clusters(text);
  std::size_t count = 0;
  while (count < limit && !clusters.next().empty()) {
    ++count;
  }
  return count;
}

std::size_t utf16Length(std::string_view text) {
  std::size_t units = 0;
  forEachCodePoint(text, [&](char32_t codePoint, std::string_view /*bytes*/) {
    units += mac::utf16Units(codePoint);
    return true;
  });
  return units;
}

bool hasControlOrFormat(std::string_view text) {
  // The categories Cc and Cf, in Apple's words.
  const CFCharacterSetRef set = CFCharacterSetGetPredefined(kCFCharacterSetControl);
  bool found = false;
  forEachCodePoint(text, [&](char32_t codePoint, std::string_view /*bytes*/) {
    found = CFCharacterSetIsLongCharacterMember(set, codePoint) != 0;
    return !found;
  });
  return found;
}

}  // namespace tarqo::unicode
