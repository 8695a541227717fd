// The window server: the X server's windows and monitors, the names of applications, and the login
// session.
#pragma once

#include "platform/linux/apps/applications.h"
#include "platform/linux/linux_login_session.h"
#include "platform/window_server.h"

namespace tarqo::lnx {

/// A pixel is a point on X11. An ordinary window keeps layer 0 also when it is kept above others,
/// because it hides what lies under it all the same.
class LinuxWindowServer final : public WindowServer {
 public:
  explicit LinuxWindowServer(apps::Applications& applications) : applications_(applications) {}

  std::vector<WindowInfo> windows(WindowList which) override;

  std::vector<Screen> screens() override;

  LoginSession loginSession() override { return login_.read(); }

 private:
  apps::Applications& applications_;
  LinuxLoginSession login_;
};

}  // namespace tarqo::lnx
