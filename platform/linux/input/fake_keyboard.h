// The keys that XTEST presses, and the user's keys that it releases meanwhile.
//
// Events go out with whatever modifiers are down, so modifier keys that the user holds are released
// for the user, and pressed again afterwards if they are still held then. Until that is done a
// signal that asks the process to end waits. Worker thread only.
#pragma once

#include <map>
#include <optional>

#include "platform/linux/x11/raw_keys.h"
#include "platform/posix/ending_signals.h"

namespace tarqo::lnx::input {

class FakeKeyboard {
 public:
  explicit FakeKeyboard(x11::Display& display) : display_(display) {}
  ~FakeKeyboard() { putBack(); }
  FakeKeyboard(const FakeKeyboard&) = delete;
  FakeKeyboard& operator=(const FakeKeyboard&) = delete;

  void press(x11::Server& server, xcb_keycode_t key);
  void release(x11::Server& server, xcb_keycode_t key);

  /// Releases the modifier keys that the user holds, and `key`, which is not pressed again
  /// afterwards. A key that locks something and is held down now is released for good: the lock
  /// itself is up to `switchLocksOff`. Does nothing while keys are set aside already. A round trip,
  /// a few when something is down.
  void setAside(x11::Server& server, std::optional<xcb_keycode_t> key = std::nullopt);

  /// The same for an event of the pointer: switches off modifiers that a sticky key has locked too,
  /// but not Caps Lock, which turns no click into another.
  void setAsideForPointer(x11::Server& server);

  /// Puts everything back except keys that the user has released meanwhile. Ends the process when a
  /// signal has asked for that and nothing else makes it wait.
  void putBack();

 private:
  x11::Display& display_;
  std::map<xcb_keycode_t, int> own_;  ///< Keys set aside: how often we released less pressed them.
  std::uint8_t locks_ = 0;
  std::optional<x11::RawKeyWatch> watch_;
  std::optional<EndingSignals> signals_;
};

}  // namespace tarqo::lnx::input
