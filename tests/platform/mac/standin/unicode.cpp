// What Core Foundation knows of characters, from ICU; clusters with the one difference that Core
// Foundation makes: a carriage return and its line feed are two.

#include <CoreFoundation/CoreFoundation.h>
#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <memory>

#include "tests/platform/mac/standin/core_foundation.h"
#include "tests/platform/mac/standin/language.h"

using standin::as;
using standin::String;

namespace {

int controlSet = 0;  // Only its address counts.

}  // namespace

extern "C" {

CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef text, CFIndex index) {
  const std::u16string& units = as<String>(text, "CFStringGetRangeOfComposed...").units();
  const auto at = static_cast<std::int32_t>(index);
  if (at < 0 || static_cast<std::size_t>(at) >= units.size()) {
    std::abort();  // As on a Mac.
  }
  if (units[static_cast<std::size_t>(at)] == u'\r' ||
      units[static_cast<std::size_t>(at)] == u'\n') {
    return {index, 1};
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString whole(units.data(), static_cast<std::int32_t>(units.size()));
  const std::unique_ptr<icu::BreakIterator> clusters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  clusters->setText(whole);
  const std::int32_t begin = clusters->isBoundary(at) != 0 ? at : clusters->preceding(at);
  return {begin, clusters->following(at) - begin};
}

CFCharacterSetRef CFCharacterSetGetPredefined(CFCharacterSetPredefinedSet which) {
  if (which != kCFCharacterSetControl) {
    std::abort();
  }
  return reinterpret_cast<CFCharacterSetRef>(&controlSet);
}

Boolean CFCharacterSetIsLongCharacterMember(CFCharacterSetRef set, UTF32Char character) {
  if (set != reinterpret_cast<CFCharacterSetRef>(&controlSet)) {
    std::abort();
  }
  const auto category = u_charType(static_cast<UChar32>(character));
  return category == U_CONTROL_CHAR || category == U_FORMAT_CHAR ? 1 : 0;
}

}  // extern "C"

namespace standin {

std::u16string lowered(const std::u16string& text) {
  icu::UnicodeString whole(text.data(), static_cast<std::int32_t>(text.size()));
  whole.toLower(icu::Locale::getRoot());
  return {whole.getBuffer(), static_cast<std::size_t>(whole.length())};
}

int compare(const std::u16string& a, const std::u16string& b) {
  UErrorCode status = U_ZERO_ERROR;
  // "C" is no language, though ICU has rules for it.
  const std::unique_ptr<icu::Collator> collator(
      icu::Collator::createInstance(icu::Locale::getRoot(), status));
  collator->setStrength(icu::Collator::SECONDARY);
  return collator->compare(a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                           static_cast<std::int32_t>(b.size()));
}

}  // namespace standin
