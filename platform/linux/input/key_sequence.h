// Keyboard events that belong together, and everything that posting them changes on the X server.
//
// Worker thread only. What was changed (keys lent a meaning, locks switched off, keys held down) is
// put back when the row ends, also when it ends by a signal that asks the process to end.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/input_events.h"
#include "platform/linux/base/ending_signals.h"
#include "platform/linux/input/fake_keyboard.h"
#include "platform/linux/input/keyboard_map.h"
#include "platform/linux/input/remapped_keys.h"

namespace tarqo::lnx {

class KeyRow {
 public:
  /// `text` is what the row will type, so that it can look ahead.
  KeyRow(XDisplay& display, FakeKeyboard& keyboard, std::string_view text);
  ~KeyRow() { end(); }
  KeyRow(const KeyRow&) = delete;
  KeyRow& operator=(const KeyRow&) = delete;

  /// Sees to it that the event can be posted: lends keys the meanings that the keyboard has not.
  /// False when that cannot be done, as for a text of more such characters than there are keys.
  /// Waits for applications to read what came before, up to `kMeaningHeld`.
  [[nodiscard]] bool prepare(const TextEvent& event);
  [[nodiscard]] bool prepare(const KeyEvent& event);

  /// Posts an event that was prepared; to be called within a server grab. False, with nothing
  /// posted, when the keyboard is not the one that it was prepared for: the layout has been
  /// switched or set anew. After the grab `renew` prepares it again.
  ///
  /// A text's keys go down and up at once when its event is "down", so that nothing repeats and
  /// nothing of the user's comes between; its "up" has nothing left to do. A key stays down until
  /// its event is "up". Modifiers that the user holds are put aside meanwhile; locks that he
  /// switches on are switched off, and will be as he has them when the row ends.
  [[nodiscard]] bool post(XServer& server, const TextEvent& event);
  [[nodiscard]] bool post(XServer& server, const KeyEvent& event);
  [[nodiscard]] bool renew(const TextEvent& event);
  [[nodiscard]] bool renew(const KeyEvent& event);

  /// Puts everything back. Waits up to `kMeaningHeld` when keys were lent.
  void end();

 private:
  struct Stroke {
    xcb_keycode_t key = 0;
    bool shifted = false;
  };

  /// Ends the process when it was asked to.
  void heedSignals();
  /// The server, the keyboard read and its locks off; null when that cannot be done.
  XServer* begin();
  [[nodiscard]] bool learn(XServer& server);
  /// Whether the keyboard still is what it was when it was read; switches locks off.
  bool isUnchanged(XServer& server);
  /// Reads a keyboard that has changed.
  bool reread();
  /// A key of the keyboard's own that types the keysym, with Shift at most.
  [[nodiscard]] std::optional<Stroke> ownStroke(xcb_keysym_t keysym) const;
  [[nodiscard]] std::optional<Stroke> textStroke(xcb_keysym_t keysym) const;
  /// The strokes of a whole text; empty when there is a character that no key types.
  [[nodiscard]] std::vector<Stroke> strokesOf(const std::string& text) const;
  [[nodiscard]] std::optional<xcb_keycode_t> keyOf(xcb_keysym_t keysym) const;
  /// The keys of a chord, in the order in which they go down; empty when one is missing.
  [[nodiscard]] std::vector<xcb_keycode_t> chordOf(const KeyEvent& event) const;
  /// Lends keys to those of the keysyms that need one, and looks ahead in the text.
  bool lendFor(const std::vector<xcb_keysym_t>& keysyms);
  bool lendFor(const KeyEvent& event);
  void strike(XServer& server, const Stroke& stroke);
  void release(XServer& server);

  XDisplay& display_;
  FakeKeyboard& keyboard_;
  std::vector<xcb_keysym_t> text_;
  std::size_t typed_ = 0;  ///< How much of the text has been prepared.
  std::optional<EndingSignals> signals_;
  std::optional<Keymap> keymap_;  ///< Of the keyboard's own keys.
  std::size_t layout_ = 0;
  std::uint8_t numLock_ = 0;
  std::uint8_t locks_ = 0;  ///< To be locked when the row ends.
  std::vector<xcb_keycode_t> down_;
  BorrowedKeys borrowed_;
};

}  // namespace tarqo::lnx
