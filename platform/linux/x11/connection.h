// The connection to the X server: opened when it is first needed, opened again after it was lost.
//
// A display that is missing, gone or stuck gives empty answers: nothing here ends the process, and
// no call waits longer than `kTimeout`. One `Display` belongs to one thread.
#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/linux/x11/atoms.h"
#include "platform/linux/x11/extensions.h"

namespace tarqo::lnx::x11 {

/// The longest wait for a connection or an answer. A server that is slower counts as lost.
inline constexpr Duration kTimeout = std::chrono::seconds(2);

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeMemory>;

struct CloseConnection {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

/// One live connection.
class Server {
 public:
  /// Takes over a connection, and reads atoms and extensions; null when it is broken or the server
  /// does not answer. `screen` is the number of the preferred screen.
  [[nodiscard]] static std::unique_ptr<Server> over(Clock& clock, xcb_connection_t* connection,
                                                    int screen);

  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  [[nodiscard]] xcb_connection_t* raw() const { return connection_.get(); }
  [[nodiscard]] xcb_window_t root() const { return screen_->root; }
  [[nodiscard]] Clock& clock() const { return clock_; }
  [[nodiscard]] const xcb_screen_t& screen() const { return *screen_; }
  [[nodiscard]] const Extensions& extensions() const { return extensions_; }
  [[nodiscard]] xcb_atom_t atom(Atom name) const { return atoms_[static_cast<std::size_t>(name)]; }

  /// Distinguishes the connections made by one `Display`, one after another.
  [[nodiscard]] std::uint64_t serial() const { return serial_; }

  /// False once the connection broke or the server did not answer in time.
  [[nodiscard]] bool usable() const;

  /// The reply to a request; null when it failed or the server is lost. Sends what is buffered.
  template <typename T, typename Cookie>
  [[nodiscard]] Reply<T> take(Cookie cookie) {
    return Reply<T>(static_cast<T*>(takeReply(cookie.sequence)));
  }

  /// Waits until the server has processed all requests sent; false when it is lost.
  bool sync();

  /// Whether a request sent as "checked" succeeded; waits until the server has processed it.
  [[nodiscard]] bool succeeded(xcb_void_cookie_t cookie);

  /// The server's time now, for requests that need a fresh time stamp; 0 when it cannot be had.
  [[nodiscard]] xcb_timestamp_t time();

  /// A window of ours that is never shown, for requests that need one. Selects property changes.
  [[nodiscard]] xcb_window_t hiddenWindow();

  /// Passes the events that have arrived to the handler, if there is one, and discards them, along
  /// with the errors of unchecked requests.
  void dropEvents();

  /// Called for every event from now on, at the time when events are dropped. Replaces the handler
  /// set before; null removes it.
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;
  void setEventHandler(EventHandler handler) { handler_ = std::move(handler); }

 private:
  friend class ServerGrab;
  friend class Display;
  using Connection = std::unique_ptr<xcb_connection_t, CloseConnection>;

  explicit Server(Clock& clock) : clock_(clock) {}

  /// Connects to the server that DISPLAY names; null when that fails. Waits without limit.
  static std::unique_ptr<Server> connect(Clock& clock);
  void readAtoms();
  void grab();
  void ungrab();
  void handle(const xcb_generic_event_t& event) const;
  [[nodiscard]] void* takeReply(unsigned int sequence);
  /// False when nothing arrived before `deadline`; the server then counts as lost.
  bool waitForInput(Instant deadline);

  Clock& clock_;
  Connection connection_;
  const xcb_screen_t* screen_ = nullptr;
  Extensions extensions_;
  std::array<xcb_atom_t, kAtomCount> atoms_{};
  xcb_window_t hiddenWindow_ = XCB_NONE;
  EventHandler handler_;
  int grabs_ = 0;
  std::uint64_t serial_ = 0;
  bool stuck_ = false;
};

/// Whether two values of DISPLAY name the same server, by host and number; its screens do not
/// count. Other strings are compared literally.
[[nodiscard]] bool isSameDisplay(const std::string& one, const std::string& other);

/// The display that DISPLAY names.
class Display {
 public:
  /// `clock` is kept by reference. It outlives this, and every attempt to connect: one that hangs
  /// goes on by itself.
  explicit Display(Clock& clock) : clock_(clock) {}

  /// The server, connected if need be; null when none can be reached. Waits up to `kTimeout` for a
  /// new connection; while that is still pending, later calls return at once. A lost connection is
  /// replaced, which ends all references to it, but never within a `ServerGrab`.
  [[nodiscard]] Server* server();

 private:
  Clock& clock_;
  std::unique_ptr<Server> server_;
  std::uint64_t connections_ = 0;
  std::future<std::unique_ptr<Server>> connecting_;
};

}  // namespace tarqo::lnx::x11
