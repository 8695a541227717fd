// Whether the element found under the pointer stands for the element that is meant.
#pragma once

#include "platform/accessibility.h"

namespace tarqo {

/// True when `hit` is `target`, lies beneath it, contains it, or is by role and place the same
/// control. A window or the application never stands for an element inside it. Asks the target a
/// few dozen times at most. Worker thread.
[[nodiscard]] bool relatedHit(Accessibility& accessibility, const Element& hit,
                              const Element& target);

}  // namespace tarqo
