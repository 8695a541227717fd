// Windows of the X server as the other services want them, and what X11 leaves to convention about
// them: which layer a window lies in, and which part of it the user sees as the window.
//
// Rectangles are in screen points, origin at the top left of the main display. Pure data and
// functions; window_reader.h reads the windows.
#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/x11/insets.h"
#include "platform/process_id.h"
#include "platform/window_server.h"

namespace tarqo::lnx::x11 {

/// The window types of the window-manager conventions; `none` when a window has no type known here.
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

/// A window that a user would call one: an application's own, or a popup that has no other.
struct Window {
  xcb_window_t client = XCB_NONE;      ///< The application's window.
  xcb_window_t outermost = XCB_NONE;   ///< The child of the root that holds it: a window manager's
                                       ///< frame, or the client itself.
  xcb_visualid_t outermostVisual = 0;  ///< How its pixels are to be read.
  bool managed = false;    ///< Known to the window manager; without one, every ordinary window.
  bool viewable = false;   ///< Mapped, as are all its ancestors, though perhaps off the screen.
  bool minimised = false;  ///< An icon by itself, not because the desktop is shown.
  bool overrideRedirect = false;
  Pid pid = 0;  ///< 0 when neither the server nor the window reports it.
  WindowType type = WindowType::none;
  xcb_window_t transientFor =
      XCB_NONE;     ///< The window that it is a dialog of, by WM_TRANSIENT_FOR.
  Rect clientArea;  ///< On the screen, without the client's border.
  Rect outermostArea;
  Rect frame;                    ///< What the user sees as the window.
  std::optional<Insets> shadow;  ///< `_GTK_FRAME_EXTENTS`; absent when the window does not set it.
  double opacity = 1;
  std::string title;         ///< `_NET_WM_NAME`, else `WM_NAME`.
  std::string instanceName;  ///< WM_CLASS, first part.
  std::string className;     ///< WM_CLASS, second part.
  std::string gtkApplicationId;

  [[nodiscard]] int layer() const { return layerOf(type, overrideRedirect); }
  [[nodiscard]] bool isOrdinary() const { return managed && layer() == 0; }

  /// Shown until its application has started, and often by another process than that.
  [[nodiscard]] bool isSplash() const { return type == WindowType::splash; }
};

struct Windows {
  std::vector<Window> frontToBack;
  Rect screen;              ///< The whole screen, across all monitors.
  bool hasManager = false;  ///< A window manager of the common conventions runs.
  bool showingDesktop = false;
  /// The client that has the server's keyboard focus, whatever the window manager calls active;
  /// may be a window that is not listed, such as the manager's own.
  xcb_window_t focused = XCB_NONE;
};

/// The window whose client has that number; null when it is not listed.
[[nodiscard]] const Window* findWindow(const Windows& windows, WindowNumber client);

/// The pixel that a coordinate lies in, as far as the protocol can name it.
[[nodiscard]] std::int16_t pixelOf(double coordinate);

}  // namespace tarqo::lnx::x11
