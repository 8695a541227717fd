// Requests to the window manager: to activate a window, to minimise one, to show all again.
//
// Every call sends a request and returns before the manager has followed it, which it need not do.
// The thread that owns the connection.
#pragma once

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/windows.h"

namespace tarqo::lnx::x11 {

/// The window by which an application is brought to the front: its top window that is not
/// minimised; without one, and if `minimisedToo`, its top minimised window. Null when it has
/// neither.
[[nodiscard]] const Window* principalWindow(const Windows& windows, Pid pid, bool minimisedToo);

/// Asks for a window to be brought to the front with the keyboard focus; a minimised one comes back
/// from its icon. Without a window manager, does so itself. Returns before it is done.
void activateWindow(Server& server, const Windows& windows, const Window& window);

/// Asks for a window to be made an icon.
void minimiseWindow(Server& server, const Window& window);

/// Asks for the windows that were put away to show the desktop to be shown again.
void endShowingDesktop(Server& server);

}  // namespace tarqo::lnx::x11
