// Where the X server shows an application's windows: what the accessibility bus reports wrongly or
// not at all, because every toolkit counts decorations and shadows in its own way.
//
// Rectangles are in screen points, origin at the top left of the main display. Worker thread only;
// asks the X server, never the application, so a hung application does not delay an answer.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/geometry.h"
#include "platform/linux/x11/insets.h"
#include "platform/process_id.h"
#include "platform/window_server.h"

namespace tarqo::lnx::x11 {

class Display;

struct LocatedWindow {
  WindowNumber number = 0;  ///< The X window that the application made, not the manager's frame.
  Pid pid = 0;              ///< 0 when nobody reports it.
  std::string title;        ///< `_NET_WM_NAME`, else `WM_NAME`.
  Rect client;              ///< The application's own X window on the root, shadows included.
  Rect bounds;              ///< As `WindowInfo::bounds`: with decorations, without shadows.
  std::optional<Insets> shadow;   ///< `_GTK_FRAME_EXTENTS`; absent when the window does not set it.
  bool overrideRedirect = false;  ///< A popup that no window manager handles.
  bool ordinary = false;          ///< One that a user switches to: no popup, panel or notification.
  bool splash = false;            ///< Shown only until the application has started.
  WindowNumber transientFor = 0;  ///< The window that it is a dialog of; 0 for none.
  bool minimized = false;
  std::size_t rank = 0;  ///< Of the windows of its process from front to back, minimised ones last.
  bool active = false;   ///< It is the window that receives keystrokes.
};

/// Those among the windows of a process that are popups of its front window: over it, with none of
/// its ordinary windows in between. Empty for any other window.
[[nodiscard]] std::vector<LocatedWindow> popupsOver(const std::vector<LocatedWindow>& windows,
                                                    WindowNumber window);

class WindowLocator {
 public:
  virtual ~WindowLocator() = default;

  /// The windows of a process, front to back, minimised ones last; popups only while they are
  /// shown.
  [[nodiscard]] virtual std::vector<LocatedWindow> windowsOf(Pid pid) = 0;

  /// The window that a pointer at `point` would meet, popups included, of whichever process.
  /// Nullopt where only the desktop itself is.
  [[nodiscard]] virtual std::optional<LocatedWindow> windowAt(Point point) = 0;

  /// Asks for a window to be brought above the others, and out of the icon; true when the request
  /// was sent.
  [[nodiscard]] virtual bool raise(WindowNumber window) = 0;

  /// Waits until the application has handled all that the server had sent to a window of its own,
  /// the focus among it; false when it has not confirmed that within `patience`, or never does.
  [[nodiscard]] virtual bool awaitEventsHandled(WindowNumber window, Duration patience) = 0;

  /// Asks for a window to be made an icon, or to be brought back; true when the request was sent.
  [[nodiscard]] virtual bool setMinimized(WindowNumber window, bool minimized) = 0;
};

/// The locator over a display's window list.
class DisplayWindowLocator final : public WindowLocator {
 public:
  explicit DisplayWindowLocator(Display& display) : display_(display) {}

  std::vector<LocatedWindow> windowsOf(Pid pid) override;
  std::optional<LocatedWindow> windowAt(Point point) override;
  bool raise(WindowNumber window) override;
  bool awaitEventsHandled(WindowNumber window, Duration patience) override;
  bool setMinimized(WindowNumber window, bool minimized) override;

 private:
  Display& display_;
};

}  // namespace tarqo::lnx::x11
