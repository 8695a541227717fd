// Keyboard events that belong together, and everything that posting them changes on the X server.
//
// Worker thread only. What was changed (keys lent a meaning, locks switched off, keys held down) is
// put back when the row ends, also when it ends by a signal that asks the process to end.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/input_events.h"
#include "platform/linux/linux_borrowed_keys.h"
#include "platform/linux/linux_ending_signals.h"
#include "platform/linux/linux_x_keymap.h"

namespace tarqo::lnx {

class KeyRow {
 public:
  /// `text` is what the row will type, so that it can look ahead.
  KeyRow(XDisplay& display, std::string_view text);
  ~KeyRow() { end(); }
  KeyRow(const KeyRow&) = delete;
  KeyRow& operator=(const KeyRow&) = delete;

  /// Sees to it that the event can be posted: lends keys the meanings that the keyboard has not.
  /// False when that cannot be done. Waits for applications to read what came before, up to
  /// `kMeaningHeld`.
  [[nodiscard]] bool prepare(const TextEvent& event);
  [[nodiscard]] bool prepare(const KeyEvent& event);

  /// A text's keys go down and up at once when its event is "down", so that nothing repeats and
  /// nothing of the user's comes between; its "up" has nothing left to do. Modifiers that the user
  /// holds are released before and pressed again after.
  void post(const TextEvent& event);

  /// Modifiers that the user holds are released before the key goes down, and pressed again after
  /// it came up.
  void post(const KeyEvent& event);

  /// Puts everything back. Waits up to `kMeaningHeld` when keys were lent.
  void end();

 private:
  struct Stroke {
    xcb_keycode_t key = 0;
    bool shifted = false;
  };
  struct Chord {
    std::vector<xcb_keycode_t> keys;      ///< Down, in the order in which they went down.
    std::vector<xcb_keycode_t> released;  ///< Held by the user before.
  };

  /// The server, the keyboard read and its locks off; null when that cannot be done.
  XServer* begin();
  /// A key of the keyboard's own that types the keysym, with Shift at most.
  [[nodiscard]] std::optional<Stroke> ownStroke(xcb_keysym_t keysym) const;
  [[nodiscard]] std::optional<Stroke> textStroke(xcb_keysym_t keysym) const;
  [[nodiscard]] std::optional<xcb_keycode_t> keyOf(xcb_keysym_t keysym) const;
  /// Lends keys to those of the keysyms that need one, and looks ahead in the text.
  bool lendFor(const std::vector<xcb_keysym_t>& keysyms, std::size_t from);
  void press(XServer& server, const KeyEvent& event);
  void release(XServer& server);
  /// Ends the process when it was asked to.
  void heedSignals();

  XDisplay& display_;
  std::vector<xcb_keysym_t> text_;
  std::size_t typed_ = 0;  ///< How much of the text has been prepared.
  std::optional<EndingSignals> signals_;
  std::optional<Keymap> keymap_;
  std::size_t layout_ = 0;
  std::uint8_t locks_ = 0;
  std::optional<Chord> chord_;
  BorrowedKeys borrowed_;
};

}  // namespace tarqo::lnx
