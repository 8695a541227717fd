// What is asked of the window manager: to activate a window, to minimise one, to show all again.
//
// Every call sends a request and returns before the manager has followed it, if it does. Worker
// thread only, or the thread that owns the connection.
#pragma once

#include "platform/linux/x11/windows.h"

namespace tarqo::lnx {

/// The window by which an application is brought to the front: its top one that is shown, and only
/// when there is none and `minimisedToo`, its top minimised one. Null when it has neither.
[[nodiscard]] const XWindow* principalWindow(const XWindows& windows, Pid pid, bool minimisedToo);

/// Asks for a window to be brought to the front with the keyboard focus; a minimised one comes back
/// from its icon. Without a window manager, does so itself. Returns before it is done.
void activateWindow(XServer& server, const XWindows& windows, const XWindow& window);

/// Asks for a window to be made an icon.
void minimiseWindow(XServer& server, const XWindow& window);

/// Asks for the windows that were put away to show the desktop to be shown again.
void endShowingDesktop(XServer& server);

}  // namespace tarqo::lnx
