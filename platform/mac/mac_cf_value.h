// Values of attributes to and from Core Foundation: the one place where they are translated.
#pragma once

#include <optional>

#include "platform/accessibility.h"
#include "platform/mac/mac_cf.h"

namespace tarqo::mac {

/// What an application answered, lent; elements in it wait for at most `messagingTimeout` each.
/// None for null, for `kCFNull` and for the error that stands in the slot of an attribute that
/// failed.
[[nodiscard]] std::optional<Value> valueOf(CFTypeRef object, Duration messagingTimeout);

/// What can be sent to an application; none for a text that is not UTF-8, an address, a value of
/// another type, an element of another backend, and a list that holds one of those.
[[nodiscard]] CfRef<CFTypeRef> objectOf(const Value& value);

}  // namespace tarqo::mac
