// Modifiers as the X server holds them: keys that the user keeps down, and locks that are on.
//
// Worker thread only. Each call is a round trip or two.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/linux_x_keymap.h"

namespace tarqo::lnx {

/// Every key that makes a modifier; may hold 0 for none.
[[nodiscard]] std::vector<xcb_keycode_t> keysOfModifiers(XServer& server);

/// The keys that are down: those that make a modifier (a key that locks one is left alone), and
/// `others` of them.
[[nodiscard]] std::vector<xcb_keycode_t> heldKeys(XServer& server, const Keymap& keymap,
                                                  const std::vector<xcb_keycode_t>& others);

/// Switches locked and latched modifiers off, such as Caps Lock or a sticky Shift; gives those that
/// were locked. Num Lock stays: it means nothing to the keys that are posted, and switching it is
/// announced to the user by some desktops.
[[nodiscard]] std::uint8_t switchLocksOff(XServer& server, const Keymap& keymap);

/// Locks these modifiers again.
void switchLocksOn(XServer& server, std::uint8_t modifiers);

/// The layout in force, counted from 0.
[[nodiscard]] std::size_t currentLayout(XServer& server);

}  // namespace tarqo::lnx
