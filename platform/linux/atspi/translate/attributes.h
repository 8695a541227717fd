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

/// What must be known to answer an attribute; nothing for attributes that are not made of
/// properties.
[[nodiscard]] PropertySet propertiesFor(std::string_view attribute);

/// An attribute that is a text, a truth or a number; none when the object has no such attribute.
/// Places, elements and lists are made elsewhere.
[[nodiscard]] std::optional<Value> plainAttribute(const View& view, std::string_view name);

/// Whether setting "AXValue" can work.
[[nodiscard]] bool hasSettableValue(const View& view);

/// The names of the actions, each once, in the object's order.
[[nodiscard]] std::vector<std::string> axActionNames(const View& view);

/// The index of the object's own action behind an action's name.
[[nodiscard]] std::optional<int> actionIndex(const View& view, std::string_view axAction);

}  // namespace tarqo::lnx::atspi
