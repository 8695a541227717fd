// What stands for the grants on Linux: an accessibility bus that answers and is switched on, and a
// display whose windows can be read.
#pragma once

#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/capture/linux_screen_capture.h"
#include "platform/permissions.h"

namespace tarqo::lnx {

class LinuxPermissions final : public Permissions {
 public:
  /// Both are kept and outlive this.
  LinuxPermissions(capture::LinuxScreenCapture& capture, Clock& clock)
      : capture_(capture), clock_(clock), bus_(clock) {}

  /// One round trip to the bus; more, up to seconds, when the bus must be started first. A bus that
  /// was switched on and comes back switched off is switched on again.
  bool accessibilityTrusted() override;

  /// Switches accessibility on for the session, so that applications offer their interfaces.
  /// Chromium looks only when it starts.
  void promptForAccessibility() override;

  bool captureAccess() override { return !capture_.obstacle(); }
  bool requestCaptureAccess() override { return captureAccess(); }
  std::optional<std::string> accessibilityObstacle() override;
  std::optional<std::string> captureObstacle() override { return capture_.obstacle(); }

 private:
  [[nodiscard]] bool busAnswers();

  capture::LinuxScreenCapture& capture_;
  Clock& clock_;
  atspi::Bus bus_;
  int switchedOnIn_ = -1;  ///< The bus connection in whose time the switch was seen to be on.
};

}  // namespace tarqo::lnx
