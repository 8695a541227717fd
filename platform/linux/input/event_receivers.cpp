#include "platform/linux/input/event_receivers.h"

#include <algorithm>

#include "platform/linux/x11/clients.h"
#include "platform/linux/x11/focus.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows.h"

namespace tarqo::lnx {
namespace {

xcb_get_property_cookie_t askClients(XServer& server) {
  return askProperty(server, server.root(), server.atom(XAtom::netClientList), kXListLength);
}

std::vector<xcb_window_t> takeClients(XServer& server, xcb_get_property_cookie_t cookie) {
  const auto list = server.take<xcb_get_property_reply_t>(cookie);
  const auto numbers = numbersOf(list);
  return {numbers.begin(), numbers.end()};
}

xcb_grab_keyboard_cookie_t askKeyboardGrab(XServer& server) {
  return xcb_grab_keyboard(server.raw(), 0, server.hiddenWindow(), XCB_CURRENT_TIME,
                           XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
}

xcb_grab_pointer_cookie_t askPointerGrab(XServer& server) {
  return xcb_grab_pointer(server.raw(), 0, server.hiddenWindow(), 0, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
}

bool isPopup(const XWindow& window, const Rect& screen) {
  return window.overrideRedirect && window.viewable && window.type != WindowType::tooltip &&
         window.type != WindowType::notification && window.type != WindowType::dnd &&
         window.clientArea.intersects(screen);
}

/// Whose a grab is that somebody has.
Reach reachOfGrab(XServer& server, Pid receiver) {
  const XWindows windows = readWindows(server);
  const auto popup =
      std::find_if(windows.frontToBack.begin(), windows.frontToBack.end(),
                   [&](const XWindow& window) { return isPopup(window, windows.screen); });
  return popup != windows.frontToBack.end() && popup->pid == receiver ? Reach::receiver
                                                                      : Reach::grabbed;
}

Reach reachOfWindow(XServer& server, xcb_window_t window, Pid receiver) {
  return window != XCB_NONE && ownerOf(server, window) == receiver ? Reach::receiver
                                                                   : Reach::elsewhere;
}

}  // namespace

std::optional<Pid> focusedProcess(XServer& server) {
  const auto clients = askClients(server);
  const FocusQuery focus = askFocus(server);
  const xcb_window_t window = takeFocus(server, focus, takeClients(server, clients));
  return window == XCB_NONE ? std::nullopt : ownerOf(server, window);
}

Reach reachOfKeys(XServer& server, Pid receiver) {
  const auto grabCookie = askKeyboardGrab(server);
  const auto clients = askClients(server);
  const FocusQuery focus = askFocus(server);
  const auto grab = server.take<xcb_grab_keyboard_reply_t>(grabCookie);
  const xcb_window_t window = takeFocus(server, focus, takeClients(server, clients));
  if (!grab) {
    return Reach::elsewhere;
  }
  if (grab->status != XCB_GRAB_STATUS_NOT_VIEWABLE) {
    return reachOfGrab(server, receiver);
  }
  return reachOfWindow(server, window, receiver);
}

Reach reachOfPointer(XServer& server, Pid receiver, std::optional<Point> at) {
  const auto grabCookie = askPointerGrab(server);
  const auto clientsCookie = askClients(server);
  const xcb_window_t top = outermostAt(server, at);
  const auto grab = server.take<xcb_grab_pointer_reply_t>(grabCookie);
  const auto clients = takeClients(server, clientsCookie);
  if (!grab || top == XCB_NONE) {
    return Reach::elsewhere;
  }
  for (const xcb_window_t window : windowsIn(server, top, clients)) {
    if (reachOfWindow(server, window, receiver) != Reach::receiver) {
      return Reach::elsewhere;
    }
  }
  return grab->status == XCB_GRAB_STATUS_NOT_VIEWABLE ? Reach::receiver
                                                      : reachOfGrab(server, receiver);
}

}  // namespace tarqo::lnx
