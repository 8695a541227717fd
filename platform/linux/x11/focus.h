// Who has the keyboard focus: windows as a user would name them, found from what the X server
// reports of the focus and the pointer.
//
// `clients` are the windows that the window manager knows (_NET_CLIENT_LIST). The list is empty
// without a manager, and then the children of the root window stand for themselves.
#pragma once

#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/process_id.h"

namespace tarqo::lnx::x11 {

[[nodiscard]] xcb_get_property_cookie_t requestClients(Server& server);
[[nodiscard]] std::vector<xcb_window_t> takeClients(Server& server,
                                                    xcb_get_property_cookie_t cookie);

/// Requests for the focus, and for the pointer, since the focus may follow it.
struct FocusQuery {
  xcb_get_input_focus_cookie_t focus;
  xcb_query_pointer_cookie_t pointer;
};
[[nodiscard]] FocusQuery requestFocus(Server& server);

/// The window that has the keyboard focus: the one of `clients` in which the focus lies, perhaps in
/// a window inside, as toolkits have them; else the child of the root window. XCB_NONE when no
/// window has it.
[[nodiscard]] xcb_window_t takeFocus(Server& server, const FocusQuery& query,
                                     const std::vector<xcb_window_t>& clients);

/// The process that has the keyboard focus, whoever may have grabbed the keyboard; nullopt when no
/// window has it, or its process is unknown.
[[nodiscard]] std::optional<Pid> focusedProcess(Server& server);

/// Those of `clients` that lie in a child of the root window; that child alone when none does.
[[nodiscard]] std::vector<xcb_window_t> windowsIn(Server& server, xcb_window_t outermost,
                                                  const std::vector<xcb_window_t>& clients);

}  // namespace tarqo::lnx::x11
