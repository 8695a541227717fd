// Windows as a user would name them, found from what the X server says of the focus and the
// pointer.
//
// `clients` are the windows that the window manager knows (_NET_CLIENT_LIST); without a manager
// none, and then the children of the root window stand for themselves.
#pragma once

#include <vector>

#include "platform/linux/x11/x_display.h"

namespace tarqo::lnx {

/// What the server says of the focus, and where that leads when it follows the pointer.
struct FocusQuery {
  xcb_get_input_focus_cookie_t focus;
  xcb_query_pointer_cookie_t pointer;
};
[[nodiscard]] FocusQuery askFocus(XServer& server);

/// The window that has the keyboard focus: the one of `clients` in which the focus lies, perhaps in
/// a window inside, as toolkits have them; else the child of the root window. None when nothing
/// has.
[[nodiscard]] xcb_window_t takeFocus(XServer& server, const FocusQuery& query,
                                     const std::vector<xcb_window_t>& clients);

/// Those of `clients` that lie in a child of the root window; itself when none does.
[[nodiscard]] std::vector<xcb_window_t> windowsIn(XServer& server, xcb_window_t outermost,
                                                  const std::vector<xcb_window_t>& clients);

}  // namespace tarqo::lnx
