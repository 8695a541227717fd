// The windows of the X server with everything the other services ask about them, read in a few
// pipelined round trips.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/x11/window_rules.h"
#include "platform/linux/x11/x_display.h"

namespace tarqo::lnx {

/// A window that a user would call one: an application's own, or a popup that has no other.
struct XWindow {
  xcb_window_t client = XCB_NONE;      ///< The application's window.
  xcb_window_t outermost = XCB_NONE;   ///< The child of the root that holds it: a window manager's
                                       ///< frame, or the client itself.
  xcb_visualid_t outermostVisual = 0;  ///< How its pixels are to be read.
  bool managed = false;    ///< Known to the window manager; without one, every ordinary window.
  bool viewable = false;   ///< Mapped with all it lies in, though perhaps off the screen.
  bool minimised = false;  ///< An icon by itself, not because the desktop is shown.
  bool overrideRedirect = false;
  Pid pid = 0;  ///< 0 when neither the server nor the window tells.
  WindowType type = WindowType::none;
  Rect clientArea;  ///< On the screen, without the client's border.
  Rect outermostArea;
  Rect frame;  ///< What the user sees as the window.
  std::optional<Insets> shadow;
  double opacity = 1;
  std::string title;
  std::string instanceName;  ///< WM_CLASS, first part.
  std::string className;     ///< WM_CLASS, second part.
  std::string gtkApplicationId;

  [[nodiscard]] int layer() const { return layerOf(type, overrideRedirect); }
  [[nodiscard]] bool isOrdinary() const { return managed && layer() == 0; }
};

struct XWindows {
  std::vector<XWindow> frontToBack;
  Rect screen;              ///< The whole screen, across all monitors.
  bool hasManager = false;  ///< A window manager of the common conventions runs.
  bool showingDesktop = false;
  /// The client that has the server's keyboard focus, whatever the window manager calls active;
  /// may be a window that is not listed, such as the manager's own.
  xcb_window_t focused = XCB_NONE;
};

/// All managed windows, shown or not, and all shown popups; empty when the server is lost. Takes
/// five round trips whatever the number of windows.
[[nodiscard]] XWindows readWindows(XServer& server);

/// The child of the root window that lies on top at a point of the screen, or where the pointer is,
/// as the pointer meets it: windows without an input area there do not count. None where only the
/// root window is.
[[nodiscard]] xcb_window_t outermostAt(XServer& server, std::optional<Point> point);

/// The top window at a point of the screen, as above. None where only the root window is, or a
/// window not in `windows`.
[[nodiscard]] const XWindow* windowAt(XServer& server, const XWindows& windows, Point point);

}  // namespace tarqo::lnx
