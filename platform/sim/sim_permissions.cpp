#include "platform/sim/sim_permissions.h"

namespace tarqo::sim {

void PermissionsService::promptForAccessibility() {
  eventLog_.note(Topic::permissions, "prompt accessibility");
  trusted = trusted || promptGrantsTrust;
}

bool PermissionsService::requestCaptureAccess() {
  eventLog_.note(Topic::permissions, "request capture");
  captureGranted = captureGranted || requestGrantsCapture;
  return captureGranted;
}

}  // namespace tarqo::sim
