// Buttons of the pointer that events have pressed and not yet released.
//
// The X server keeps a button down when the client that pressed it is gone, and then the user can
// do nothing with the pointer. So a signal that asks the process to end waits while a button is
// down, and buttons that are still down on destruction are released. Modifier keys that the user
// holds are set aside until no button is down. Worker thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/input/fake_keyboard.h"
#include "platform/posix/ending_signals.h"

namespace tarqo::lnx::input {

class HeldButtons {
 public:
  HeldButtons(x11::Display& display, FakeKeyboard& keyboard)
      : display_(display), keyboard_(keyboard) {}
  ~HeldButtons() { releaseAll(); }
  HeldButtons(const HeldButtons&) = delete;
  HeldButtons& operator=(const HeldButtons&) = delete;

  /// A button goes down where the pointer is. Within a server grab.
  void press(x11::Server& server, std::uint8_t button);

  /// A button that is down comes up where the pointer is. Within a server grab. Ends the process
  /// when no other button is down and a signal has asked for that meanwhile.
  void release(x11::Server& server, std::uint8_t button);

  /// A button goes down and up `count` times where the pointer is.
  void click(x11::Server& server, std::uint8_t button, int count);

  /// Whether events have pressed it; what the user holds does not count.
  [[nodiscard]] bool isDown(std::uint8_t button) const;

  /// Releases every button that is still down. With the server lost nothing is down.
  void releaseAll();

 private:
  x11::Display& display_;
  FakeKeyboard& keyboard_;
  std::vector<std::uint8_t> down_;
  std::optional<EndingSignals> signals_;
};

}  // namespace tarqo::lnx::input
