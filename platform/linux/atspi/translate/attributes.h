// From what an object reported to the attributes and actions of the protocol. Pure: the properties
// that an attribute needs are named first, requested elsewhere, and translated here.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/translate/view.h"

namespace tarqo::lnx::atspi {

/// The properties that an attribute is computed from; empty when it is computed elsewhere.
[[nodiscard]] PropertySet propertiesFor(std::string_view attribute);

/// An attribute that is a text, a boolean or a number; empty when the object has no such attribute.
/// Places, elements and lists are computed elsewhere.
[[nodiscard]] std::optional<Value> plainAttribute(const View& view, std::string_view name);

/// Whether setting "AXValue" can work.
[[nodiscard]] bool hasSettableValue(const View& view);

/// The names of the actions, each once, in the object's order.
[[nodiscard]] std::vector<std::string> axActionNames(const View& view);

/// The index of the object's own action behind a name of the protocol; empty when it offers none.
[[nodiscard]] std::optional<int> actionIndex(const View& view, std::string_view axAction);

}  // namespace tarqo::lnx::atspi
