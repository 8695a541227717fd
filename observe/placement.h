// Whether the target window is really shown, unobstructed, and which window-server window it is.
//
// Rectangles are in screen points, origin at the top left of the main display. Worker thread only;
// reads the window list once a call and waits for nothing.
#pragma once

#include "platform/platform.h"
#include "session/target.h"

namespace tarqo {

/// A window narrower or lower than this many points counts as not shown.
inline constexpr double minimumWindowSide = 120;

/// Where the target window is in the window server's list. `number` belongs to `exact`.
struct WindowPlacement {
  enum class Kind {
    exact,    ///< At its frame, with nothing of another application over it.
    covered,  ///< Another application's window intersects it from above.
    missing   ///< Hidden, minimised, too small, off every display, or not in the list.
  };
  Kind kind = Kind::missing;
  WindowNumber number = 0;
  std::optional<WindowInfo> cover{};  ///< What lies over it, when it is `covered`.
};

/// The placement of the target's window, which is at `frame` by its own account. Throws
/// "app_closed" when nothing was ever connected.
[[nodiscard]] WindowPlacement windowPlacement(const Platform& platform, Target& target,
                                              const Rect& frame);

}  // namespace tarqo
