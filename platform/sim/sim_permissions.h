// The simulated grants.
#pragma once

#include "platform/permissions.h"
#include "platform/sim/sim_event_log.h"

namespace tarqo::sim {

class PermissionsService final : public Permissions {
 public:
  explicit PermissionsService(EventLog& eventLog) : eventLog_(eventLog) {}

  // The scene: everything is granted at the start. The prompts are lines of the event log.
  bool trusted = true;
  bool promptGrantsTrust = false;
  bool captureGranted = true;
  bool requestGrantsCapture = false;
  std::optional<std::string> obstacle;
  std::optional<std::string> captureObstacleText;

  [[nodiscard]] bool accessibilityTrusted() override { return trusted; }
  void promptForAccessibility() override;
  [[nodiscard]] bool captureAccess() override { return captureGranted; }
  [[nodiscard]] bool requestCaptureAccess() override;
  [[nodiscard]] std::optional<std::string> accessibilityObstacle() override { return obstacle; }
  [[nodiscard]] std::optional<std::string> captureObstacle() override {
    return captureObstacleText;
  }

 private:
  EventLog& eventLog_;
};

}  // namespace tarqo::sim
