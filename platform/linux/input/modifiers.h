// Modifiers as the X server holds them: keys that the user keeps down, and locks that are on.
//
// Worker thread only. Each call is a round trip or two.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/linux/input/keyboard_map.h"

namespace tarqo::lnx {

/// Every key that makes a modifier; may hold 0 for none.
[[nodiscard]] std::vector<xcb_keycode_t> keysOfModifiers(XServer& server);

/// The keys that are down.
struct HeldKeys {
  std::vector<xcb_keycode_t> modifying;  ///< Those that make a modifier while they are.
  std::vector<xcb_keycode_t> locking;    ///< Those that lock one, like Caps Lock.
  std::array<std::uint8_t, 32> down{};   ///< All, a bit each.

  [[nodiscard]] bool isDown(xcb_keycode_t key) const {
    return (down.at(key / 8) >> (key % 8) & 1U) != 0;
  }
};
[[nodiscard]] HeldKeys heldKeys(XServer& server);

/// The modifiers that Num Lock makes, one bit each. They mean nothing to what is posted, and
/// switching them is announced to the user by some desktops.
[[nodiscard]] std::uint8_t numLockModifiers(XServer& server);

/// Switches locked and latched modifiers off, such as Caps Lock or a sticky Shift, but those in
/// `spared`; gives those that were locked.
[[nodiscard]] std::uint8_t switchLocksOff(XServer& server, std::uint8_t spared);

/// The same for those that turn a click into another: neither Caps Lock nor Num Lock.
[[nodiscard]] std::uint8_t switchStickyKeysOff(XServer& server);

/// Locks these modifiers again.
void switchLocksOn(XServer& server, std::uint8_t modifiers);

}  // namespace tarqo::lnx
