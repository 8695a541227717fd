// Whether an application has handled the events that the X server has sent it.
#pragma once

#include "platform/linux/x11/connection.h"

namespace tarqo::lnx::x11 {

/// Pings a window as window managers do (_NET_WM_PING). Applications take the server's events in
/// order, so the answer shows that all earlier ones have been handled. False when no answer
/// comes within `patience`, and at once for a window that does not answer pings.
[[nodiscard]] bool awaitPong(Server& server, xcb_window_t window, Duration patience);

}  // namespace tarqo::lnx::x11
