// The keyboard of the X server: what each key types, read and written as the XKB extension keeps
// it, so that what is written back is exactly what was read; and its modifiers, that is, modifier
// keys that the user holds and locks that are on.
//
// Worker thread only. Each call is a round trip to the server or two.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace tarqo::lnx::input {

/// What one key types: groups, one a layout, of `width` keysyms each, one a level (chosen by
/// modifiers).
struct KeySymbols {
  std::array<std::uint8_t, 4> types{};
  std::uint8_t groupInfo = 0;  ///< The number of groups in the lower four bits.
  std::uint8_t width = 0;
  std::vector<xcb_keysym_t> symbols;

  /// A key that types this keysym with and without Shift, whatever lock is on.
  static KeySymbols ofPair(xcb_keysym_t plain, xcb_keysym_t shifted);

  [[nodiscard]] std::size_t groups() const { return groupInfo & 0x0fU; }
  /// What it types in a layout; 0 where it types nothing. A layout beyond the key's last wraps.
  [[nodiscard]] xcb_keysym_t at(std::size_t group, std::size_t level) const;
  [[nodiscard]] bool isEmpty() const;

  bool operator==(const KeySymbols&) const = default;
};

struct Keymap {
  xcb_keycode_t first = 0;
  std::vector<KeySymbols> keys;  ///< From the key code `first` on.

  [[nodiscard]] const KeySymbols& of(xcb_keycode_t key) const;
  void set(xcb_keycode_t key, const KeySymbols& symbols);
  /// The key that types the keysym on that level of a layout; nullopt when no key does.
  [[nodiscard]] std::optional<xcb_keycode_t> find(xcb_keysym_t keysym, std::size_t group,
                                                  std::size_t level) const;

  bool operator==(const Keymap&) const = default;
};

/// The mapping of the keyboard that applications see; nullopt when the server does not answer.
[[nodiscard]] std::optional<Keymap> readKeymap(x11::Server& server);

/// The mappings of every single keyboard, at least of the first few dozens. They can differ: the
/// one that applications see is that of the keyboard used last.
[[nodiscard]] std::vector<Keymap> readKeymapsOfDevices(x11::Server& server);

/// What a key shall type, and what it must type before, to be changed at all.
struct KeyChange {
  KeySymbols from;
  KeySymbols to;
};

/// The keyboard that applications see, as it is this moment.
struct KeyboardReading {
  Keymap keymap;
  std::size_t layout = 0;   ///< In force, counted from 0.
  std::uint8_t locked = 0;  ///< Modifiers that are locked or latched.
};
/// Nullopt when the server does not answer.
[[nodiscard]] std::optional<KeyboardReading> readKeyboard(x11::Server& server);

/// Changes keys on every keyboard in one step, so that window managers, which grab their keys anew
/// after each change, do it once; false when the server refused. Keys that somebody else has
/// changed meanwhile stay as they are.
[[nodiscard]] bool rebind(x11::Server& server, const std::map<xcb_keycode_t, KeyChange>& changes);

/// Every key that makes a modifier; unused places hold 0.
[[nodiscard]] std::vector<xcb_keycode_t> keysOfModifiers(x11::Server& server);

/// The keys that are down.
struct HeldKeys {
  std::vector<xcb_keycode_t> modifying;  ///< Those that make a modifier while they are.
  std::vector<xcb_keycode_t> locking;    ///< Those that lock one, like Caps Lock.
  std::array<std::uint8_t, 32> down{};   ///< All, a bit each.

  [[nodiscard]] bool isDown(xcb_keycode_t key) const {
    return (down.at(key / 8) >> (key % 8) & 1U) != 0;
  }
};
[[nodiscard]] HeldKeys heldKeys(x11::Server& server);

/// The modifiers that Num Lock makes, one bit each. They mean nothing to what is posted, and
/// switching them is announced to the user by some desktops.
[[nodiscard]] std::uint8_t numLockModifiers(x11::Server& server);

/// Switches locked and latched modifiers off, such as Caps Lock or a sticky Shift, except those in
/// `spared`; returns those that were locked.
[[nodiscard]] std::uint8_t switchLocksOff(x11::Server& server, std::uint8_t spared);

/// The same for those that turn a click into another: all but Caps Lock and Num Lock.
[[nodiscard]] std::uint8_t switchStickyKeysOff(x11::Server& server);

/// Locks these modifiers again.
void switchLocksOn(x11::Server& server, std::uint8_t modifiers);

}  // namespace tarqo::lnx::input
