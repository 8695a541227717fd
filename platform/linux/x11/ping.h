// Whether an application has caught up with what the X server told it.
#pragma once

#include <chrono>

#include "platform/linux/x11/connection.h"

namespace tarqo::lnx::x11 {

/// Pings a window as window managers do (_NET_WM_PING). Applications take the server's events in
/// order, so the answer shows that all earlier ones have been handled. False when none comes in
/// time, and at once for a window that does not answer pings.
[[nodiscard]] bool awaitPong(Server& server, xcb_window_t window,
                             std::chrono::steady_clock::duration patience);

}  // namespace tarqo::lnx::x11
