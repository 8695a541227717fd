// Windows on the X server that record what reaches them, of this process and of another.
#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace tarqo::contract {

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XConnection = std::unique_ptr<xcb_connection_t, Disconnect>;

/// A popup of this process, shown above all others, with a window inside.
class XWitness {
 public:
  /// `type` is a window type of the window-manager conventions; the window has no type when empty.
  explicit XWitness(const Rect& place, const std::string& type = "");

  /// Gives it the keyboard focus, or the window inside it.
  void focus() { giveFocus(window_); }
  void focusInside() { giveFocus(inside_); }
  void giveFocus(xcb_window_t window);

  /// Grabs a device for the root window, as a program without a window of its own does.
  void grabKeyboard();
  void grabPointer();
  void ungrab();

  /// What has reached it, in order: "press 1 +4" is the first button with Control, "release" its
  /// end, "move 5,7 +256" a drag with the first button, "key 38 +0" and "up 38 +0" a key.
  [[nodiscard]] std::vector<std::string> arrived();

  void wait();

 private:
  [[nodiscard]] xcb_connection_t* raw() const { return connection_.get(); }

  XConnection connection_;
  xcb_window_t root_ = XCB_NONE;
  xcb_window_t window_ = XCB_NONE;
  xcb_window_t inside_ = XCB_NONE;
  std::vector<std::string> arrived_;
};

/// The same of another process, which ends with the object.
class XStranger {
 public:
  explicit XStranger(const Rect& place, const std::string& type = "");
  ~XStranger();
  XStranger(const XStranger&) = delete;
  XStranger& operator=(const XStranger&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = 0;
};

/// The user at keyboard and mouse.
class XUser {
 public:
  XUser();

  void press(xcb_keycode_t key) { fake(XCB_KEY_PRESS, key); }
  void release(xcb_keycode_t key) { fake(XCB_KEY_RELEASE, key); }
  [[nodiscard]] bool isDown(xcb_keycode_t key) const;

 private:
  void fake(std::uint8_t type, xcb_keycode_t key);

  XConnection connection_;
};

}  // namespace tarqo::contract
