// The window in whose picture its popups belong, because nothing else tells what they show.
#pragma once

#include <atomic>

#include "platform/window_server.h"

namespace tarqo::lnx::x11 {

/// Any thread.
class PicturedPopups {
 public:
  /// 0 for none.
  void showOver(WindowNumber window) { window_ = window; }
  [[nodiscard]] bool areShownOver(WindowNumber window) const { return window_ == window; }

 private:
  std::atomic<WindowNumber> window_ = 0;
};

}  // namespace tarqo::lnx::x11
