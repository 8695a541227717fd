// The keyboard mapping of the X server: what each key types, read and written as the XKB extension
// keeps it, so that what is written back is exactly what was read.
//
// Worker thread only. Each call is one round trip to the server, `rebind` two.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/x11/x_display.h"

namespace tarqo::lnx {

/// What one key types: rows (groups, one a layout) of `width` keysyms (levels, by modifiers).
struct KeySymbols {
  std::array<std::uint8_t, 4> types{};
  std::uint8_t groupInfo = 0;  ///< The number of groups in the lower four bits.
  std::uint8_t width = 0;
  std::vector<xcb_keysym_t> symbols;

  /// A key that types this keysym with and without Shift, whatever lock is on.
  static KeySymbols typing(xcb_keysym_t plain, xcb_keysym_t shifted);

  [[nodiscard]] std::size_t groups() const { return groupInfo & 0x0fU; }
  /// What it types in a layout; none (0) where it has nothing. A layout beyond the key's last
  /// wraps.
  [[nodiscard]] xcb_keysym_t at(std::size_t group, std::size_t level) const;
  [[nodiscard]] bool isEmpty() const;

  bool operator==(const KeySymbols&) const = default;
};

struct Keymap {
  xcb_keycode_t first = 0;
  std::vector<KeySymbols> keys;  ///< From the key code `first` on.

  [[nodiscard]] const KeySymbols& of(xcb_keycode_t key) const;
  void set(xcb_keycode_t key, const KeySymbols& symbols);
  /// The key that types the keysym on that level of a layout; none when there is none.
  [[nodiscard]] std::optional<xcb_keycode_t> find(xcb_keysym_t keysym, std::size_t group,
                                                  std::size_t level) const;

  bool operator==(const Keymap&) const = default;
};

/// The mapping of the keyboard that applications see; none when the server does not tell.
[[nodiscard]] std::optional<Keymap> readKeymap(XServer& server);

/// The mappings of every single keyboard, at least of the first few dozens. They can differ: the
/// one that applications see is that of the keyboard used last.
[[nodiscard]] std::vector<Keymap> readKeymapsOfDevices(XServer& server);

/// What keys shall type, and what they must type before to be changed at all.
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
/// None when the server does not tell.
[[nodiscard]] std::optional<KeyboardReading> readKeyboard(XServer& server);

/// Changes keys on every keyboard in one step, so that window managers, which grab their keys anew
/// after each change, do it once; false when the server did not take it. A key that somebody else
/// has changed meanwhile is left alone.
[[nodiscard]] bool rebind(XServer& server, const std::map<xcb_keycode_t, KeyChange>& changes);

}  // namespace tarqo::lnx
