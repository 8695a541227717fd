// Where the X server shows an application's windows: what the accessibility bus tells wrongly or
// not at all, because every toolkit counts decorations and shadows in its own way.
//
// Rectangles are in screen points, origin at the top left of the main display. Worker thread only;
// asks the X server, never the application, so a hung application does not delay an answer.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"
#include "platform/geometry.h"
#include "platform/window_server.h"

namespace tarqo::lnx {

/// What a toolkit draws around its window's content for shadows, inside the X window.
struct Insets {
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;

  bool operator==(const Insets&) const = default;
};

struct LocatedWindow {
  WindowNumber number = 0;  ///< The X window that the application made, not the manager's frame.
  Pid pid = 0;
  std::string title;              ///< `_NET_WM_NAME`, else `WM_NAME`.
  Rect client;                    ///< The application's own X window on the root, shadows included.
  Rect bounds;                    ///< As `WindowInfo::bounds`: with decorations, without shadows.
  std::optional<Insets> shadow;   ///< `_GTK_FRAME_EXTENTS`; none when the window does not set it.
  bool overrideRedirect = false;  ///< A popup that no window manager handles.
  bool minimized = false;
  bool active = false;  ///< It is the window that receives keystrokes.
};

class WindowLocator {
 public:
  virtual ~WindowLocator() = default;

  /// The windows of a process, front to back, minimised ones last; popups only while they are
  /// shown.
  [[nodiscard]] virtual std::vector<LocatedWindow> windowsOf(Pid pid) = 0;

  /// The window that a pointer at `point` would meet, popups included, of whichever process. None
  /// where only the desktop itself is; a window whose process is unknown has pid 0.
  [[nodiscard]] virtual std::optional<LocatedWindow> windowAt(Point point) = 0;

  /// Asks for a window to be brought above the others, and out of the icon; true when the request
  /// was sent.
  [[nodiscard]] virtual bool raise(WindowNumber window) = 0;

  /// Waits until the application has handled all that the server had sent to a window of its own,
  /// the focus among it; false when it has not said so in that time, or never says so.
  [[nodiscard]] virtual bool awaitEventsHandled(WindowNumber window, Duration patience) = 0;

  /// Asks for a window to be made an icon, or to be brought back; true when the request was sent.
  [[nodiscard]] virtual bool setMinimized(WindowNumber window, bool minimized) = 0;
};

}  // namespace tarqo::lnx
