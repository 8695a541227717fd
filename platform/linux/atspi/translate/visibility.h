// Whether objects are on the screen, where, and which of them has the focus.
#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/translate/view.h"

namespace tarqo::lnx::atspi {

/// Whether the toolkit reports that the object is on the screen.
[[nodiscard]] bool isShowing(const Properties& properties, Toolkit toolkit);

/// The extents as told, when they can be a place on a screen: toolkits fill those of what is not
/// laid out with INT_MIN or with whatever was in memory.
[[nodiscard]] std::optional<Rect> plausible(const std::optional<Rect>& extents);

/// Whether the toolkit goes on saying that such an object is shown when it is scrolled out of its
/// window, so that only its place tells.
[[nodiscard]] bool mayBeScrolledAway(const View& view);

/// Whether it is not on the screen, as "AXHidden" says it.
[[nodiscard]] bool isHidden(const View& view);

/// What shows of an object's children, given what shows of the object: less inside what scrolls.
/// Unchanged in toolkits that tell places on the screen, where it would not outlast a move.
[[nodiscard]] std::optional<Rect> clipBelow(const std::optional<Rect>& clip,
                                            const Properties& properties, Toolkit toolkit);

/// Whether it is the object that has the focus. Some toolkits say so of objects that cannot have
/// it.
[[nodiscard]] bool hasFocus(const Properties& properties, Toolkit toolkit);

}  // namespace tarqo::lnx::atspi
