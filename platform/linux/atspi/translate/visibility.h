// Whether objects are on the screen, where, and which of them has the focus.
#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/translate/view.h"

namespace tarqo::lnx::atspi {

/// Whether the toolkit reports that the object is on the screen.
[[nodiscard]] bool isShowing(const Properties& properties, Toolkit toolkit);

/// The reported extents, if they are plausible screen coordinates. Toolkits fill those of objects
/// without a layout with INT_MIN or with uninitialised memory.
[[nodiscard]] std::optional<Rect> plausible(const std::optional<Rect>& extents);

/// Whether the toolkit goes on reporting such an object as shown when it is scrolled out of its
/// window, so that only its place shows that.
[[nodiscard]] bool mayBeScrolledAway(const View& view);

/// Whether it is not on the screen, in the sense of "AXHidden".
[[nodiscard]] bool isHidden(const View& view);

/// The area in which an object's children can show, given that of the object: smaller inside what
/// scrolls. Unchanged in toolkits that report places on the screen, where it would be wrong after a
/// move.
[[nodiscard]] std::optional<Rect> clipBelow(const std::optional<Rect>& clip,
                                            const Properties& properties, Toolkit toolkit);

/// Whether the object has the focus. Some toolkits report that of objects that cannot have it.
[[nodiscard]] bool hasFocus(const Properties& properties, Toolkit toolkit);

}  // namespace tarqo::lnx::atspi
