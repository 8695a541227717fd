#include "platform/linux/input/event_receivers.h"

#include <algorithm>

#include "platform/linux/x11/clients.h"
#include "platform/linux/x11/focus.h"
#include "platform/linux/x11/window_reader.h"

namespace tarqo::lnx::input {
namespace {

xcb_grab_keyboard_cookie_t requestKeyboardGrab(x11::Server& server) {
  return xcb_grab_keyboard(server.raw(), 0, server.hiddenWindow(), XCB_CURRENT_TIME,
                           XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
}

xcb_grab_pointer_cookie_t requestPointerGrab(x11::Server& server) {
  return xcb_grab_pointer(server.raw(), 0, server.hiddenWindow(), 0, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
}

bool isPopup(const x11::Window& window, const Rect& screen) {
  return window.overrideRedirect && window.viewable && window.type != x11::WindowType::tooltip &&
         window.type != x11::WindowType::notification && window.type != x11::WindowType::dnd &&
         window.clientArea.intersects(screen);
}

/// Whether somebody's grab is taken for the receiver's own.
Reach reachOfGrab(x11::Server& server, Pid receiver) {
  const x11::Windows windows = x11::readWindows(server);
  const auto popup =
      std::find_if(windows.frontToBack.begin(), windows.frontToBack.end(),
                   [&](const x11::Window& window) { return isPopup(window, windows.screen); });
  return popup != windows.frontToBack.end() && popup->pid == receiver ? Reach::receiver
                                                                      : Reach::grabbed;
}

Reach reachOfWindow(x11::Server& server, xcb_window_t window, Pid receiver) {
  return window != XCB_NONE && x11::ownerOf(server, window) == receiver ? Reach::receiver
                                                                        : Reach::elsewhere;
}

}  // namespace

Reach reachOfKeys(x11::Server& server, Pid receiver) {
  const auto grabCookie = requestKeyboardGrab(server);
  const auto clients = x11::requestClients(server);
  const x11::FocusQuery focus = x11::requestFocus(server);
  const auto grab = server.take<xcb_grab_keyboard_reply_t>(grabCookie);
  const xcb_window_t window = x11::takeFocus(server, focus, x11::takeClients(server, clients));
  if (!grab) {
    return Reach::elsewhere;
  }
  if (grab->status != XCB_GRAB_STATUS_NOT_VIEWABLE) {
    return reachOfGrab(server, receiver);
  }
  return reachOfWindow(server, window, receiver);
}

Reach reachOfPointer(x11::Server& server, Pid receiver, std::optional<Point> at) {
  const auto grabCookie = requestPointerGrab(server);
  const auto clientsCookie = x11::requestClients(server);
  const xcb_window_t top = x11::outermostAt(server, at);
  const auto grab = server.take<xcb_grab_pointer_reply_t>(grabCookie);
  const auto clients = x11::takeClients(server, clientsCookie);
  if (!grab || top == XCB_NONE) {
    return Reach::elsewhere;
  }
  for (const xcb_window_t window : x11::windowsIn(server, top, clients)) {
    if (reachOfWindow(server, window, receiver) != Reach::receiver) {
      return Reach::elsewhere;
    }
  }
  return grab->status == XCB_GRAB_STATUS_NOT_VIEWABLE ? Reach::receiver
                                                      : reachOfGrab(server, receiver);
}

}  // namespace tarqo::lnx::input
