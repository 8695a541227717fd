// The connection to the X server: opened when it is first needed, opened again after it was lost.
//
// A display that is missing, gone or stuck gives empty answers: nothing here ends the process, and
// no call waits longer than `kXTimeout`. One `XDisplay` belongs to one thread.
#pragma once

#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <string_view>

namespace tarqo::lnx {

/// The longest wait for the server, for a connection as for an answer. A server that is slower is
/// treated as lost.
inline constexpr std::chrono::milliseconds kXTimeout{2000};

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XReply = std::unique_ptr<T, FreeMemory>;

/// The atoms in use, in the order of `kAtomNames`.
enum class XAtom : std::uint8_t {
  netActiveWindow,
  netClientList,
  netFrameExtents,
  netShowingDesktop,
  netSupportingWmCheck,
  netWmName,
  netWmPid,
  netWmPing,
  netWmState,
  netWmStateHidden,
  netWmStateShaded,
  netWmWindowOpacity,
  netWmWindowType,
  netWmWindowTypeCombo,
  netWmWindowTypeDesktop,
  netWmWindowTypeDialog,
  netWmWindowTypeDnd,
  netWmWindowTypeDock,
  netWmWindowTypeDropdownMenu,
  netWmWindowTypeMenu,
  netWmWindowTypeNormal,
  netWmWindowTypeNotification,
  netWmWindowTypePopupMenu,
  netWmWindowTypeSplash,
  netWmWindowTypeToolbar,
  netWmWindowTypeTooltip,
  netWmWindowTypeUtility,
  gtkApplicationId,
  gtkFrameExtents,
  tarqoBorrowedKeys,
  wmChangeState,
  wmProtocols,
};
inline constexpr std::size_t kAtomCount = static_cast<std::size_t>(XAtom::wmProtocols) + 1;

/// Which extensions the server has, in a version that serves.
struct XExtensions {
  bool composite = false;
  bool keyboard = false;  ///< XKB.
  bool randrMonitors = false;
  bool rawKeys = false;  ///< XInput 2.1, which tells of every key whoever has grabbed the keyboard.
  bool resourcePids = false;
  bool shmDescriptors = false;  ///< Shared memory passed as a file descriptor, over a local socket.
  bool test = false;
};

struct CloseConnection {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

/// One live connection.
class XServer {
 public:
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;

  [[nodiscard]] xcb_connection_t* raw() const { return connection_.get(); }
  [[nodiscard]] xcb_window_t root() const { return screen_->root; }
  [[nodiscard]] const xcb_screen_t& screen() const { return *screen_; }
  [[nodiscard]] const XExtensions& extensions() const { return extensions_; }
  [[nodiscard]] xcb_atom_t atom(XAtom name) const { return atoms_[static_cast<std::size_t>(name)]; }

  /// Tells one connection from another made by the same `XDisplay`.
  [[nodiscard]] std::uint64_t serial() const { return serial_; }

  /// False once the connection broke or the server did not answer in time.
  [[nodiscard]] bool usable() const;

  /// The reply to a request; null when it failed or the server is lost. Sends what is buffered.
  template <typename T, typename Cookie>
  [[nodiscard]] XReply<T> take(Cookie cookie) {
    return XReply<T>(static_cast<T*>(takeReply(cookie.sequence)));
  }

  /// Waits until the server has worked off everything sent; false when it is lost.
  bool sync();

  /// Whether a request sent as "checked" succeeded; waits until the server has worked it off.
  [[nodiscard]] bool succeeded(xcb_void_cookie_t cookie);

  /// The server's time now, for requests that need a fresh time stamp; 0 when it cannot be had.
  [[nodiscard]] xcb_timestamp_t time();

  /// A window of ours that is never shown, for requests that need one. Selects property changes.
  [[nodiscard]] xcb_window_t hiddenWindow();

  /// Shows the events that have piled up to the handler, if there is one, and throws them away, and
  /// the errors of unchecked requests too.
  void dropEvents();

  /// Sees every event that comes from now on, whenever events are dropped. Replaces the one before.
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;
  void setEventHandler(EventHandler handler) { handler_ = std::move(handler); }

 private:
  friend class ServerGrab;
  friend class XDisplay;
  using Connection = std::unique_ptr<xcb_connection_t, CloseConnection>;

  XServer() = default;

  /// Connects and learns atoms and extensions; null when that fails. Waits without limit.
  static std::unique_ptr<XServer> connect();
  void readExtensions();
  void readAtoms();
  void grab();
  void ungrab();
  void see(const xcb_generic_event_t& event) const;
  [[nodiscard]] void* takeReply(unsigned int sequence);
  /// False when nothing arrived before `deadline`; the server then counts as lost.
  bool waitForInput(std::chrono::steady_clock::time_point deadline);

  Connection connection_;
  const xcb_screen_t* screen_ = nullptr;
  XExtensions extensions_;
  std::array<xcb_atom_t, kAtomCount> atoms_{};
  xcb_window_t hiddenWindow_ = XCB_NONE;
  EventHandler handler_;
  int grabs_ = 0;
  std::uint64_t serial_ = 0;
  bool stuck_ = false;
};

/// Whether two values of DISPLAY name the same server, by host and number; its screens do not
/// count. What is no display's name is the same only as itself.
[[nodiscard]] bool isSameDisplay(const std::string& one, const std::string& other);

class XDisplay {
 public:
  /// The server, connected at need; null when there is none. Waits for a stuck server once; while
  /// that connection is still pending, later calls return at once. One that was lost is replaced,
  /// and references to it end, but not within a `ServerGrab`.
  [[nodiscard]] XServer* server();

 private:
  std::unique_ptr<XServer> server_;
  std::uint64_t connections_ = 0;
  std::future<std::unique_ptr<XServer>> connecting_;
};

}  // namespace tarqo::lnx
