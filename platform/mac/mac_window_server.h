// The window server: Quartz's windows and displays, and the login session.
#pragma once

#include "platform/window_server.h"

namespace tarqo::mac {

class MacWindowServer final : public WindowServer {
 public:
  /// Titles are there only with the grant to record the screen.
  std::vector<WindowInfo> windows(WindowList which) override;

  /// From the display services, not from AppKit: there only the main thread may ask, and is told
  /// what was true when its loop last ran.
  std::vector<Screen> screens() override;

  LoginSession loginSession() override;
};

}  // namespace tarqo::mac
