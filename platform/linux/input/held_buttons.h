// Buttons of the pointer that events have pressed and not let go of yet.
//
// The X server keeps a button down when the client that pressed it is gone, and the user could do
// nothing with the pointer any more. So a signal that asks the process to end waits while a button
// is down, and what is still down in the end is let go of. Modifier keys that the user holds are
// put aside until no button is down any more. Worker thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/base/ending_signals.h"
#include "platform/linux/input/fake_keyboard.h"

namespace tarqo::lnx {

class HeldButtons {
 public:
  HeldButtons(XDisplay& display, FakeKeyboard& keyboard) : display_(display), keyboard_(keyboard) {}
  ~HeldButtons() { releaseAll(); }
  HeldButtons(const HeldButtons&) = delete;
  HeldButtons& operator=(const HeldButtons&) = delete;

  /// A button goes down where the pointer is. Within a server grab.
  void press(XServer& server, std::uint8_t button);

  /// A button that is down comes up where the pointer is. Within a server grab. Ends the process
  /// when no other is down, and a signal asked for that meanwhile.
  void release(XServer& server, std::uint8_t button);

  /// A button goes down and up where the pointer is, so often.
  void click(XServer& server, std::uint8_t button, int count);

  /// Whether it went down here; the user may hold any other.
  [[nodiscard]] bool isDown(std::uint8_t button) const;

  /// Lets go of every button that is still down; with no server there is none.
  void releaseAll();

 private:
  XDisplay& display_;
  FakeKeyboard& keyboard_;
  std::vector<std::uint8_t> down_;
  std::optional<EndingSignals> signals_;
};

}  // namespace tarqo::lnx
