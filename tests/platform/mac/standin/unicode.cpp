// What Core Foundation knows of characters, from ICU; clusters with the one difference that Core
// Foundation makes: a carriage return and its line feed are two.

#include <CoreFoundation/CoreFoundation.h>
#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <memory>

#include "platform/unicode.h"
#include "tests/platform/mac/standin/core_foundation.h"

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

// Foundation's part, whose tests are left out here.
namespace tarqo::unicode {

std::string lowered(std::string_view /*text*/) { std::abort(); }

int compareForDisplay(std::string_view /*a*/, std::string_view /*b*/) { std::abort(); }

}  // namespace tarqo::unicode
