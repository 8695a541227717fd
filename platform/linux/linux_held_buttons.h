// Buttons of the pointer that events have pressed and not let go of yet.
//
// The X server keeps a button down when the client that pressed it is gone, and the user could do
// nothing with the pointer any more. So a signal that asks the process to end waits while a button
// is down, and what is still down in the end is let go of. Worker thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/linux_ending_signals.h"
#include "platform/linux/linux_x_display.h"

namespace tarqo::lnx {

class HeldButtons {
 public:
  explicit HeldButtons(XDisplay& display) : display_(display) {}
  ~HeldButtons() { releaseAll(); }
  HeldButtons(const HeldButtons&) = delete;
  HeldButtons& operator=(const HeldButtons&) = delete;

  /// A button goes down where the pointer is.
  void press(XServer& server, std::uint8_t button);

  /// A button comes up where the pointer is. Ends the process when no other is down, and a signal
  /// asked for that meanwhile.
  void release(XServer& server, std::uint8_t button);

  /// Lets go of every button that is still down; with no server there is none.
  void releaseAll();

 private:
  XDisplay& display_;
  std::vector<std::uint8_t> down_;
  std::optional<EndingSignals> signals_;
};

}  // namespace tarqo::lnx
