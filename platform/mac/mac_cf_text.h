// Texts to and from Core Foundation, and the plain values in dictionaries of the system.
//
// Any thread. Everything read is lent and may be null or of another type: then there is none.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mac/mac_cf.h"

namespace tarqo::mac {

/// UTF-8; half of a surrogate pair becomes U+FFFD. Empty also when memory does not suffice.
[[nodiscard]] std::string textOf(CFStringRef text);

/// None when the text is not valid UTF-8.
[[nodiscard]] CfRef<CFStringRef> makeString(std::string_view utf8);

/// The UTF-16 units of a text, in the processor's byte order; empty when it is not valid UTF-8.
[[nodiscard]] std::vector<UniChar> utf16Of(std::string_view utf8);

[[nodiscard]] std::optional<std::string> textIn(CFTypeRef object);
[[nodiscard]] std::optional<double> numberIn(CFTypeRef object);
/// None also for a number that is not whole or does not fit.
[[nodiscard]] std::optional<SInt64> integerIn(CFTypeRef object);
[[nodiscard]] std::optional<bool> booleanIn(CFTypeRef object);

}  // namespace tarqo::mac
