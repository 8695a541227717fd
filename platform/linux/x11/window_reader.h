// Reads the windows of the X server in a few pipelined round trips.
//
// An X server that is lost gives empty answers. The thread that owns the connection.
#pragma once

#include <optional>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/windows.h"

namespace tarqo::lnx::x11 {

/// All managed windows, shown or not, and all shown popups; empty when the server is lost. Takes
/// five round trips whatever the number of windows.
[[nodiscard]] Windows readWindows(Server& server);

/// The same of a display; empty when it has no server.
[[nodiscard]] Windows readWindows(Display& display);

/// The child of the root window that lies on top at a point of the screen, or where the pointer is
/// when `point` is absent, as the pointer meets it: windows without an input area there do not
/// count. XCB_NONE where only the root window is.
[[nodiscard]] xcb_window_t outermostAt(Server& server, std::optional<Point> point);

/// The top window at a point of the screen, as above. Null where only the root window is, or a
/// window that is not in `windows`.
[[nodiscard]] const Window* windowAt(Server& server, const Windows& windows, Point point);

}  // namespace tarqo::lnx::x11
