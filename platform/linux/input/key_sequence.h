// Keyboard events that belong together, and everything that posting them changes on the X server.
//
// Worker thread only. Every change (keys remapped, locks switched off, keys held down) is undone
// when the sequence ends, also when a signal asks the process to end.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/input_events.h"
#include "platform/linux/input/fake_keyboard.h"
#include "platform/linux/input/keyboard_map.h"
#include "platform/linux/input/remapped_keys.h"
#include "platform/posix/ending_signals.h"

namespace tarqo::lnx::input {

class KeySequence {
 public:
  /// `text` is what the sequence will type, so that it can look ahead.
  KeySequence(x11::Display& display, Clock& clock, FakeKeyboard& keyboard, std::string_view text);
  ~KeySequence() { end(); }
  KeySequence(const KeySequence&) = delete;
  KeySequence& operator=(const KeySequence&) = delete;

  /// Makes sure that the event can be posted: remaps keys to the symbols that the keyboard lacks.
  /// False when that cannot be done, as for a text of more such characters than there are keys.
  /// Waits until applications have read earlier events, up to `kAfterLastUse`.
  [[nodiscard]] bool prepare(const TextEvent& event);
  [[nodiscard]] bool prepare(const KeyEvent& event);

  /// Posts an event that was prepared; to be called within a server grab. False, with nothing
  /// posted, when the keyboard has changed since: its layout was switched or another was set. After
  /// the grab `renew` prepares the event again.
  ///
  /// The keys of a text go down and up at once when its event is "down", so that nothing repeats
  /// and no key of the user's comes between; its "up" does nothing. A key stays down until its
  /// event is "up". Modifiers that the user holds are set aside meanwhile. Locks that they switch
  /// on are switched off, and are set as they left them when the sequence ends.
  [[nodiscard]] bool post(x11::Server& server, const TextEvent& event);
  [[nodiscard]] bool post(x11::Server& server, const KeyEvent& event);
  [[nodiscard]] bool renew(const TextEvent& event);
  [[nodiscard]] bool renew(const KeyEvent& event);

  /// Undoes every change. Waits up to `kAfterLastUse` when keys are remapped.
  void end();

 private:
  struct Stroke {
    xcb_keycode_t key = 0;
    bool shifted = false;
  };

  /// Ends the process when a signal has asked for that.
  void exitIfSignalled();
  /// The server, with the keyboard read and its locks off; null when that cannot be done.
  x11::Server* begin();
  [[nodiscard]] bool learn(x11::Server& server);
  /// Whether the keyboard still is what it was when it was read; switches locks off.
  bool isUnchanged(x11::Server& server);
  /// Reads a keyboard that has changed.
  bool reread();
  /// A key of the keyboard's own that types the keysym, with Shift at most.
  [[nodiscard]] std::optional<Stroke> ownStroke(xcb_keysym_t keysym) const;
  [[nodiscard]] std::optional<Stroke> textStroke(xcb_keysym_t keysym) const;
  /// The strokes of a whole text; empty when no key types one of its characters.
  [[nodiscard]] std::vector<Stroke> strokesOf(const std::string& text) const;
  [[nodiscard]] std::optional<xcb_keycode_t> keyOf(xcb_keysym_t keysym) const;
  /// The keys of a chord, in the order in which they go down; empty when one is missing.
  [[nodiscard]] std::vector<xcb_keycode_t> chordOf(const KeyEvent& event) const;
  /// Remaps keys to those of the keysyms that need one, and looks ahead in the text.
  bool mapFor(const std::vector<xcb_keysym_t>& keysyms);
  bool mapFor(const KeyEvent& event);
  void strike(x11::Server& server, const Stroke& stroke);
  void release(x11::Server& server);

  x11::Display& display_;
  Clock& clock_;
  FakeKeyboard& keyboard_;
  std::vector<xcb_keysym_t> text_;
  std::size_t typed_ = 0;  ///< How much of the text has been prepared.
  std::optional<EndingSignals> signals_;
  std::optional<Keymap> keymap_;  ///< Of the keyboard's own keys.
  std::size_t layout_ = 0;
  std::uint8_t numLock_ = 0;
  std::uint8_t locks_ = 0;  ///< To be locked when the sequence ends.
  std::vector<xcb_keycode_t> down_;
  RemappedKeys remapped_;
};

}  // namespace tarqo::lnx::input
