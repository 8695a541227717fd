#include "platform/linux/x11/ping.h"

#include <poll.h>

#include <algorithm>

#include "platform/linux/x11/properties.h"

namespace tarqo::lnx::x11 {
namespace {

/// Receives what applications send to the root window, as long as it lives.
class RootListener {
 public:
  explicit RootListener(Server& server) : server_(server) {
    // Qt answers to clients that selected the root's own events, the others as the convention says.
    select(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  }
  RootListener(const RootListener&) = delete;
  RootListener& operator=(const RootListener&) = delete;
  ~RootListener() {
    select(XCB_EVENT_MASK_NO_EVENT);
    xcb_flush(server_.raw());
  }

 private:
  void select(std::uint32_t events) const {
    xcb_change_window_attributes(server_.raw(), server_.root(), XCB_CW_EVENT_MASK, &events);
  }

  Server& server_;
};

bool answersPings(Server& server, xcb_window_t window) {
  const auto protocols = server.take<xcb_get_property_reply_t>(
      requestProperty(server, window, server.atom(Atom::wmProtocols), kListLength));
  const auto known = numbersOf(protocols);
  return std::ranges::find(known, server.atom(Atom::netWmPing)) != known.end();
}

void sendPing(Server& server, xcb_window_t window, xcb_timestamp_t stamp) {
  xcb_client_message_event_t ping{};
  ping.response_type = XCB_CLIENT_MESSAGE;
  ping.format = 32;
  ping.window = window;
  ping.type = server.atom(Atom::wmProtocols);
  ping.data.data32[0] = server.atom(Atom::netWmPing);
  ping.data.data32[1] = stamp;
  ping.data.data32[2] = window;
  xcb_send_event(server.raw(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&ping));
  xcb_flush(server.raw());
}

bool isPong(Server& server, const xcb_generic_event_t& event, xcb_window_t window,
            xcb_timestamp_t stamp) {
  if ((event.response_type & 0x7f) != XCB_CLIENT_MESSAGE) {
    return false;
  }
  const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
  return message.type == server.atom(Atom::wmProtocols) &&
         message.data.data32[0] == server.atom(Atom::netWmPing) &&
         message.data.data32[1] == stamp && message.data.data32[2] == window;
}

}  // namespace

bool awaitPong(Server& server, xcb_window_t window, Duration patience) {
  if (!answersPings(server, window)) {
    return false;
  }
  const Instant deadline = server.clock().now() + patience;
  const xcb_timestamp_t stamp = server.time();
  const RootListener listener(server);
  sendPing(server, window, stamp);
  while (server.usable()) {
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(server.raw())}) {
      if (isPong(server, *event, window, stamp)) {
        return true;
      }
    }
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - server.clock().now());
    pollfd input{xcb_get_file_descriptor(server.raw()), POLLIN, 0};
    if (left.count() <= 0 || ::poll(&input, 1, static_cast<int>(left.count())) == 0) {
      return false;
    }
  }
  return false;
}

}  // namespace tarqo::lnx::x11
