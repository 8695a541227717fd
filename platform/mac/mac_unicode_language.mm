// What text needs of the user's language: Foundation does it.

#include "platform/mac/mac_objc.h"
#include "platform/unicode.h"

namespace tarqo::unicode {

std::string lowered(std::string_view text) {
  const std::string valid = repaired(text);
  return mac::guarded([&] { return mac::textOf(mac::nsString(valid).lowercaseString); })
      .value_or(valid);
}

int compareForDisplay(std::string_view a, std::string_view b) {
  const std::string first = repaired(a);
  const std::string second = repaired(b);
  const auto order = mac::guarded([&]() -> std::optional<NSComparisonResult> {
    NSString* left = mac::nsString(first);
    NSString* right = mac::nsString(second);
    if (left == nil || right == nil) {
      return std::nullopt;
    }
    return [left localizedCaseInsensitiveCompare:right];
  });
  return order ? static_cast<int>(*order) : first.compare(second);
}

}  // namespace tarqo::unicode
