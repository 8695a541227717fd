// What keys and characters are called in X: the one table from virtual key codes to keysyms.
#pragma once

#include <xcb/xproto.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/input_events.h"

namespace tarqo::lnx::input {

/// The keysym that a virtual key code of the ANSI layout stands for; nullopt for any other key
/// code.
[[nodiscard]] std::optional<xcb_keysym_t> keysymOfKey(std::uint16_t keyCode);

/// What a key types together with Shift, where that follows from the keysym alone: the upper case
/// of a letter, else the keysym itself.
[[nodiscard]] xcb_keysym_t shiftedKeysym(xcb_keysym_t keysym);

/// The keysym of a character: its own code in Latin 1, else its code point above 0x1000000.
[[nodiscard]] xcb_keysym_t keysymOfCharacter(char32_t character);

/// The keysyms that type a text, in order. A malformed byte counts as U+FFFD.
[[nodiscard]] std::vector<xcb_keysym_t> keysymsOfText(std::string_view text);

/// One modifier of a `KeyEvent` and the key that makes it.
struct ModifierKey {
  Modifiers mask;
  xcb_keysym_t keysym;
};

/// In the order in which they are pressed. Command is the Super key, which Linux desktops give the
/// same place and a similar task; the shortcuts of applications use Control.
[[nodiscard]] const std::array<ModifierKey, 4>& modifierKeys();

/// Whether a press of that key changes a state that outlasts it, like Caps Lock.
[[nodiscard]] bool isLockingKeysym(xcb_keysym_t keysym);

}  // namespace tarqo::lnx::input
