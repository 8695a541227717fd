#include "platform/linux/x11/window_manager.h"

#include <algorithm>
#include <array>

namespace tarqo::lnx::x11 {
namespace {

/// Sends a client message to the root window, where the window manager reads it.
void sendToManager(Server& server, xcb_window_t window, xcb_atom_t type,
                   const std::array<std::uint32_t, 5>& data) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = type;
  std::copy(data.begin(), data.end(), message.data.data32);
  xcb_send_event(server.raw(), 0, server.root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&message));
}

}  // namespace

const Window* principalWindow(const Windows& windows, Pid pid, bool minimisedToo) {
  const Window* minimised = nullptr;
  for (const Window& window : windows.frontToBack) {
    if (window.pid != pid || !window.isOrdinary()) {
      continue;
    }
    if (!window.minimised) {
      return &window;
    }
    minimised = minimised != nullptr ? minimised : &window;
  }
  return minimisedToo ? minimised : nullptr;
}

void activateWindow(Server& server, const Windows& windows, const Window& window) {
  xcb_connection_t* c = server.raw();
  if (windows.hasManager) {
    constexpr std::uint32_t kFromPager = 2;
    const std::uint32_t now = server.time();
    sendToManager(server, window.client, server.atom(Atom::netActiveWindow),
                  {kFromPager, now, XCB_NONE});
  } else {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(c, window.outermost, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_set_input_focus(c, XCB_INPUT_FOCUS_POINTER_ROOT, window.client, XCB_CURRENT_TIME);
  }
  server.sync();
}

void minimiseWindow(Server& server, const Window& window) {
  constexpr std::uint32_t kIconicState = 3;
  sendToManager(server, window.client, server.atom(Atom::wmChangeState), {kIconicState});
  server.sync();
}

void endShowingDesktop(Server& server) {
  sendToManager(server, server.root(), server.atom(Atom::netShowingDesktop), {0});
  server.sync();
}

}  // namespace tarqo::lnx::x11
