#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "platform/unicode.h"

namespace tarqo::unicode {
namespace {

// ICU counts in 32 bits; what lies beyond is never part of a text that a person wrote.
constexpr std::size_t kLongest = std::numeric_limits<std::int32_t>::max() - 1;

std::string_view measurable(std::string_view text) {
  return text.substr(0, std::min(text.size(), kLongest));
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Calls `visit` with each code point and the bytes it was read from; U+FFFD for malformed bytes.
/// Stops when `visit` yields false.
template <typename Visit>
void forEachCodePoint(std::string_view whole, const Visit& visit) {
  const std::string_view text = measurable(whole);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t end = 0;
  while (end < length) {
    const std::int32_t begin = end;
    UChar32 codePoint = 0;
    U8_NEXT_OR_FFFD(bytes, end, length, codePoint);
    if (!visit(codePoint, text.substr(static_cast<std::size_t>(begin),
                                      static_cast<std::size_t>(end - begin)))) {
      return;
    }
  }
}

icu::UnicodeString wide(std::string_view text) {
  const std::string_view part = measurable(text);
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(part.data(), static_cast<std::int32_t>(part.size())));
}

std::string narrow(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

struct CloseText {
  void operator()(UText* text) const { utext_close(text); }
};

/// Walks the grapheme clusters of a text.
class Clusters {
 public:
  explicit Clusters(std::string_view text) : text_(measurable(text)) {
    UErrorCode status = U_ZERO_ERROR;
    utext_.reset(
        utext_openUTF8(nullptr, text_.data(), static_cast<std::int64_t>(text_.size()), &status));
    iterator_.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (iterator_ != nullptr) {
      iterator_->setText(utext_.get(), status);
    }
    ready_ = iterator_ != nullptr && U_SUCCESS(status) != 0;
  }

  /// The next cluster; empty at the end.
  [[nodiscard]] std::string_view next() {
    const std::size_t begin = end_;
    // Without ICU's data every byte stands for itself, which is right for ASCII.
    end_ = ready_ ? boundary() : std::min(begin + 1, text_.size());
    return text_.substr(begin, end_ - begin);
  }

  /// The bytes passed so far.
  [[nodiscard]] std::size_t position() const { return end_; }

 private:
  [[nodiscard]] std::size_t boundary() const {
    const std::int32_t next = iterator_->next();
    return next == icu::BreakIterator::DONE ? text_.size() : static_cast<std::size_t>(next);
  }

  std::string_view text_;
  std::unique_ptr<UText, CloseText> utext_;
  std::unique_ptr<icu::BreakIterator> iterator_;
  std::size_t end_ = 0;
  bool ready_ = false;
};

std::unique_ptr<icu::Collator> makeCollator() {
  // Where no language is set, ICU takes "C" for one of its own that sorts upper case before lower
  // case at every strength.
  const icu::Locale& own = icu::Locale::getDefault();
  const bool isPosix = std::strcmp(own.getVariant(), "POSIX") == 0;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Collator> collator(
      icu::Collator::createInstance(isPosix ? icu::Locale::getRoot() : own, status));
  if (U_FAILURE(status) != 0) {
    return nullptr;
  }
  collator->setStrength(icu::Collator::SECONDARY);
  return collator;
}

}  // namespace

std::string repaired(std::string_view text) {
  bool valid = isAscii(text);
  if (!valid && text.size() <= kLongest) {
    valid = true;
    forEachCodePoint(text, [&](UChar32 codePoint, std::string_view bytes) {
      // U+FFFD itself is valid; it takes three bytes.
      valid = codePoint != 0xFFFD || bytes == "\xEF\xBF\xBD";
      return valid;
    });
  }
  if (valid) {
    return std::string(text);
  }
  std::string result;
  result.reserve(text.size());
  forEachCodePoint(text, [&](UChar32 codePoint, std::string_view bytes) {
    result += codePoint == 0xFFFD ? std::string_view("\xEF\xBF\xBD") : bytes;
    return true;
  });
  return result;
}

std::string trimmed(std::string_view text) {
  std::size_t begin = text.size();
  std::size_t end = 0;
  forEachCodePoint(text, [&](UChar32 codePoint, std::string_view bytes) {
    if (u_isUWhiteSpace(codePoint) == 0) {
      const auto at = static_cast<std::size_t>(bytes.data() - text.data());
      begin = std::min(begin, at);
      end = at + bytes.size();
    }
    return true;
  });
  return begin < end ? std::string(text.substr(begin, end - begin)) : std::string();
}

std::string prefix(std::string_view text, std::size_t count) {
  // No cluster is shorter than a byte.
  if (text.size() <= count) {
    return std::string(text);
  }
  Clusters clusters(text);
  for (std::size_t i = 0; i < count && !clusters.next().empty(); ++i) {
  }
  return std::string(text.substr(0, clusters.position()));
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
  forEachCodePoint(text, [&](UChar32 codePoint, std::string_view /*bytes*/) {
    units += static_cast<std::size_t>(U16_LENGTH(codePoint));
    return true;
  });
  return units;
}

std::string lowered(std::string_view text) {
  return narrow(wide(text).toLower(icu::Locale::getRoot()));
}

int compareForDisplay(std::string_view a, std::string_view b) {
  // Comparing does not change the collator, so all threads share one.
  static const std::unique_ptr<icu::Collator> collator = makeCollator();
  UErrorCode status = U_ZERO_ERROR;
  if (collator != nullptr) {
    const int order = collator->compare(wide(a), wide(b), status);
    if (U_SUCCESS(status) != 0) {
      return order;
    }
  }
  return wide(a).caseCompare(wide(b), U_FOLD_CASE_DEFAULT);
}

bool hasControlOrFormat(std::string_view text) {
  bool found = false;
  forEachCodePoint(text, [&](UChar32 codePoint, std::string_view /*bytes*/) {
    const auto category = u_charType(codePoint);
    found = category == U_CONTROL_CHAR || category == U_FORMAT_CHAR;
    return !found;
  });
  return found;
}

}  // namespace tarqo::unicode
