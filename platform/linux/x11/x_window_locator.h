// The window locator over the X server's window list.
#pragma once

#include "platform/linux/apps/applications.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx {

class XWindowLocator final : public WindowLocator {
 public:
  explicit XWindowLocator(Applications& applications) : applications_(applications) {}

  std::vector<LocatedWindow> windowsOf(Pid pid) override;
  std::optional<LocatedWindow> windowAt(Point point) override;
  bool raise(WindowNumber window) override;
  bool awaitEventsHandled(WindowNumber window, Duration patience) override;
  bool setMinimized(WindowNumber window, bool minimized) override;

 private:
  Applications& applications_;
};

}  // namespace tarqo::lnx
