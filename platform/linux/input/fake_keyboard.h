// The keys that XTEST presses, and those of the user's that it lets go of meanwhile.
//
// Events go out with whatever modifiers are down, so modifier keys that the user holds are released
// for the user, and pressed again afterwards if they are still held then. Until that is done a
// signal that asks the process to end waits. Worker thread only.
#pragma once

#include <map>
#include <optional>

#include "platform/linux/base/ending_signals.h"
#include "platform/linux/input/modifiers.h"
#include "platform/linux/input/raw_keys.h"

namespace tarqo::lnx {

class FakeKeyboard {
 public:
  explicit FakeKeyboard(XDisplay& display) : display_(display) {}
  ~FakeKeyboard() { putBack(); }
  FakeKeyboard(const FakeKeyboard&) = delete;
  FakeKeyboard& operator=(const FakeKeyboard&) = delete;

  void press(XServer& server, xcb_keycode_t key);
  void release(XServer& server, xcb_keycode_t key);

  /// Releases the modifier keys that the user holds, and `key`, which stays up when the user has
  /// released it too. A key that locks something, held down this moment, is released for good: what
  /// it has locked is a matter of `switchLocksOff`. Does nothing while others are set aside
  /// already. A round trip, a few when something is down.
  void setAside(XServer& server, std::optional<xcb_keycode_t> key = std::nullopt);

  /// As above for the pointer: also modifiers that a sticky key has locked, but not Caps Lock,
  /// which turns no click into another.
  void setAsideForPointer(XServer& server);

  /// Puts everything back but what the user has let go of meanwhile. Ends the process when a signal
  /// asked for that and nothing else keeps it waiting.
  void putBack();

 private:
  XDisplay& display_;
  std::map<xcb_keycode_t, int> own_;  ///< Keys let go of: how often by us, less our presses.
  std::uint8_t locks_ = 0;
  std::optional<RawKeyWatch> watch_;
  std::optional<EndingSignals> signals_;
};

}  // namespace tarqo::lnx
