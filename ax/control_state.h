// What a control shows of its state: whether it is checked, whether it is expanded.
//
// Worker thread only.
#pragma once

#include <optional>

#include "ax/description.h"

namespace tarqo {

enum class Checked { no, yes, mixed };

/// Null where the element has no such state, or does not report it.
struct ControlState {
  std::optional<Checked> checked;
  std::optional<bool> expanded;
};

/// Reads the state of an element that was described as `description`; one round trip. Nothing is
/// asked of a password field, nor of an element without a role, which may be one.
[[nodiscard]] ControlState controlState(Accessibility& accessibility, const Element& element,
                                        const Description& description);

}  // namespace tarqo
