// An X server in memory, at the other end of a socket: a tree of windows with their properties, the
// focus and the pointer. It answers the requests that read these, and notes those that change
// something; every extension but X-Resource is missing.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"
#include "platform/process_id.h"
#include "platform/sim/sim_clock.h"

namespace tarqo::lnx::x11 {

struct FakeProperty {
  xcb_atom_t type = XCB_ATOM_CARDINAL;
  std::uint8_t format = 32;
  std::vector<std::uint8_t> bytes;
};
[[nodiscard]] FakeProperty numbers(const std::vector<std::uint32_t>& values);
[[nodiscard]] FakeProperty text(std::string_view bytes);

struct FakeWindow {
  Rect area;  ///< In pixels of the parent.
  bool viewable = true;
  bool overrideRedirect = false;
  bool inputOnly = false;
  std::map<std::string, FakeProperty> properties{};
};

class FakeXServer {
 public:
  static constexpr xcb_window_t kRoot = 0x100;
  static constexpr Rect kScreen{0, 0, 800, 600};

  FakeXServer();
  ~FakeXServer();
  FakeXServer(const FakeXServer&) = delete;
  FakeXServer& operator=(const FakeXServer&) = delete;

  /// A client that is connected to it.
  [[nodiscard]] Server& client() { return *client_; }

  /// Adds a window on top of its siblings. The process is what the server knows of its client.
  xcb_window_t add(const FakeWindow& window, xcb_window_t parent = kRoot,
                   std::optional<Pid> pid = std::nullopt);
  void set(xcb_window_t window, const std::string& property, const FakeProperty& value);

  /// Makes a window manager run that knows these clients.
  void manage(const std::vector<xcb_window_t>& clients);

  /// Ends the connection, as a server does that crashes.
  void hangUp() const;

  /// The number of the atom of that name.
  [[nodiscard]] xcb_atom_t atom(const std::string& name);

  void setFocus(xcb_window_t window);
  /// Puts the pointer over a child of the root window, or over the root itself.
  void setPointer(xcb_window_t child);

  /// What was requested since the last call, in order, such as "message WM_CHANGE_STATE to 200100:
  /// 3 0 0 0 0", "raise 200100", "focus 200100". Numbers of windows are hexadecimal.
  [[nodiscard]] std::vector<std::string> requests();

 private:
  struct Node {
    FakeWindow window;
    xcb_window_t parent = XCB_NONE;
    std::optional<Pid> pid;
    std::vector<xcb_window_t> children;  // Back to front.
  };
  using Bytes = std::vector<std::uint8_t>;

  void serve();
  bool receive(void* data, std::size_t size) const;
  void send(const Bytes& bytes) const;
  void sendSetup() const;
  void answer(const Bytes& request);
  void answerAbout(const Bytes& request);
  void note(const Bytes& request);
  /// Sends a reply whose fixed part `fill` completes, with `rest` behind it.
  template <typename Reply, typename Fill>
  void reply(const Fill& fill, const Bytes& rest = {}) const;
  void fail(std::uint8_t code) const;
  void sendProperty(const Bytes& request);
  void sendTree(const Node& node) const;
  void sendGeometry(const Rect& area) const;
  void sendTranslation(const Bytes& request) const;
  void sendAttributes(const Node& node) const;
  void sendResourceVersion() const;
  void sendClientIds(const Bytes& request) const;
  [[nodiscard]] Point originOf(xcb_window_t window) const;
  [[nodiscard]] xcb_atom_t atomOf(const std::string& name);
  [[nodiscard]] std::string nameOf(xcb_atom_t atom) const;

  std::mutex mutex_;
  std::map<xcb_window_t, Node> nodes_;
  std::map<std::string, xcb_atom_t> atoms_;
  xcb_window_t focus_ = XCB_NONE;
  xcb_window_t pointer_ = XCB_NONE;
  xcb_window_t lastClient_ = 0;
  std::vector<std::string> requests_;
  std::uint16_t sequence_ = 0;
  int socket_ = -1;
  std::thread thread_;
  sim::VirtualClock clock_;
  std::unique_ptr<Server> client_;
};

}  // namespace tarqo::lnx::x11
