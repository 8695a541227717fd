// What X11 leaves to convention about windows: which layer a window lies in, and which part of it
// the user sees as the window. Pure functions.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/geometry.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx {

/// The window types of the window-manager conventions; `none` when a window states none we know.
enum class WindowType : std::uint8_t {
  none,
  normal,
  dialog,
  utility,
  splash,
  toolbar,
  menu,
  dropdownMenu,
  popupMenu,
  combo,
  tooltip,
  notification,
  dnd,
  dock,
  desktop,
};

/// The layer of a window: 0 for what a user switches to and moves about, else nearer to the front
/// the higher it is. `overrideRedirect` windows are popups whatever their type: the window manager
/// does not know them.
[[nodiscard]] int layerOf(WindowType type, bool overrideRedirect);

/// Where the parts of a window lie on the screen.
struct WindowParts {
  Rect client;     ///< The window as its application made it.
  Rect outermost;  ///< The child of the root window that holds it, perhaps itself.
  std::optional<Insets> decoration;  ///< What the window manager says it has put around the client.
  std::optional<Insets> shadow;  ///< The invisible margin that the application drew in the client.
};

/// The frame of a window as the user sees it: with its decorations, without its shadow.
[[nodiscard]] Rect visibleFrame(const WindowParts& parts);

}  // namespace tarqo::lnx
