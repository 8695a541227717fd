#include "platform/linux/x11/connection.h"

#include <poll.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <thread>
#include <utility>

namespace tarqo::lnx::x11 {
namespace {

const xcb_screen_t* preferredScreen(xcb_connection_t* connection, int number) {
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (int i = 0; i < number && screens.rem > 1; ++i) {
    xcb_screen_next(&screens);
  }
  return screens.rem > 0 ? screens.data : nullptr;
}

/// Host and number of a display; nullopt when it is no display's name.
std::optional<std::pair<std::string, int>> serverOf(const std::string& name) {
  char* host = nullptr;
  int number = 0;
  // For an empty name the library would read DISPLAY.
  if (name.empty() || xcb_parse_display(name.c_str(), &host, &number, nullptr) == 0) {
    return std::nullopt;
  }
  const std::unique_ptr<char, FreeMemory> owned(host);
  // Both mean the local server.
  return std::pair(std::string(host) == "unix" ? "" : std::string(host), number);
}

}  // namespace

bool isSameDisplay(const std::string& one, const std::string& other) {
  const auto server = serverOf(one);
  return one == other || (server && server == serverOf(other));
}

std::unique_ptr<Server> Server::connect(Clock& clock) {
  int screen = 0;
  xcb_connection_t* connection = xcb_connect(nullptr, &screen);
  return over(clock, connection, screen);
}

std::unique_ptr<Server> Server::over(Clock& clock, xcb_connection_t* connection, int screen) {
  std::unique_ptr<Server> server(new Server(clock));
  server->connection_.reset(connection);
  if (xcb_connection_has_error(server->raw()) != 0) {
    return nullptr;
  }
  server->screen_ = preferredScreen(server->raw(), screen);
  if (server->screen_ == nullptr) {
    return nullptr;
  }
  server->extensions_ = readExtensions(*server);
  server->readAtoms();
  return server->usable() ? std::move(server) : nullptr;
}

void Server::readAtoms() {
  std::array<xcb_intern_atom_cookie_t, kAtomCount> cookies{};
  for (std::size_t i = 0; i < kAtomCount; ++i) {
    const std::string_view name = kAtomNames[i];
    cookies[i] = xcb_intern_atom(raw(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  }
  for (std::size_t i = 0; i < kAtomCount; ++i) {
    const auto reply = take<xcb_intern_atom_reply_t>(cookies[i]);
    atoms_[i] = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  }
}

bool Server::usable() const { return !stuck_ && xcb_connection_has_error(raw()) == 0; }

bool Server::waitForInput(Instant deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::max(deadline - clock_.now(), Duration::zero()));
  pollfd input{xcb_get_file_descriptor(raw()), POLLIN, 0};
  // Rounded up: a wait of 0 ms would make the last fraction of a millisecond a busy loop. An
  // interrupted wait counts as input, since the caller checks again.
  if (::poll(&input, 1, static_cast<int>(left.count()) + 1) == 0) {
    stuck_ = true;
  }
  return !stuck_;
}

void* Server::takeReply(unsigned int sequence) {
  if (!usable()) {
    return nullptr;
  }
  xcb_flush(raw());
  const Instant deadline = clock_.now() + kTimeout;
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  while (xcb_poll_for_reply(raw(), sequence, &reply, &error) == 0) {
    if (!waitForInput(deadline)) {
      return nullptr;
    }
  }
  std::free(error);
  return reply;
}

bool Server::sync() {
  return take<xcb_get_input_focus_reply_t>(xcb_get_input_focus(raw())) != nullptr;
}

bool Server::succeeded(xcb_void_cookie_t cookie) {
  if (!sync()) {
    return false;
  }
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  const bool known = xcb_poll_for_reply(raw(), cookie.sequence, &reply, &error) != 0;
  std::free(reply);
  const bool failed = error != nullptr;
  std::free(error);
  return known && !failed;
}

xcb_window_t Server::hiddenWindow() {
  if (hiddenWindow_ == XCB_NONE) {
    hiddenWindow_ = xcb_generate_id(raw());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(raw(), XCB_COPY_FROM_PARENT, hiddenWindow_, root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
  }
  return hiddenWindow_;
}

xcb_timestamp_t Server::time() {
  const xcb_window_t window = hiddenWindow();
  dropEvents();
  // A client learns the server's time by changing a property: the event of the change carries it.
  xcb_change_property(raw(), XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                      nullptr);
  if (!sync()) {
    return XCB_CURRENT_TIME;
  }
  xcb_timestamp_t now = XCB_CURRENT_TIME;
  while (const Reply<xcb_generic_event_t> event{xcb_poll_for_queued_event(raw())}) {
    handle(*event);
    if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
      now = reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
    }
  }
  return now;
}

void Server::handle(const xcb_generic_event_t& event) const {
  if (handler_) {
    handler_(event);
  }
}

void Server::dropEvents() {
  while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(raw())}) {
    handle(*event);
  }
}

void Server::grab() {
  if (grabs_++ == 0) {
    xcb_grab_server(raw());
  }
}

void Server::ungrab() {
  if (--grabs_ == 0) {
    xcb_ungrab_server(raw());
    xcb_flush(raw());
  }
}

Server* Display::server() {
  if (server_) {
    server_->dropEvents();
    // Whoever holds a grab keeps a reference to it, and notices the loss by its empty answers.
    if (server_->usable() || server_->grabs_ > 0) {
      return server_.get();
    }
    server_.reset();
  }
  try {
    Duration patience = Duration::zero();
    if (!connecting_.valid()) {
      // Connecting has no time limit of its own, so it has a thread that may be left behind.
      std::promise<std::unique_ptr<Server>> result;
      connecting_ = result.get_future();
      std::thread([&clock = clock_, promise = std::move(result)]() mutable {
        try {
          promise.set_value(Server::connect(clock));
        } catch (const std::exception&) {
          return;  // Whoever waits finds the promise broken.
        }
      }).detach();
      patience = kTimeout;
    }
    if (connecting_.wait_for(patience) == std::future_status::ready) {
      server_ = connecting_.get();
      if (server_) {
        server_->serial_ = ++connections_;
      }
    }
  } catch (const std::exception&) {
    connecting_ = {};
  }
  return server_.get();
}

}  // namespace tarqo::lnx::x11
