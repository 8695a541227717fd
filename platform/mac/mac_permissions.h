// The privacy grants. macOS gives them to the application that launched the process, and answers
// by what it has found out about that one.
#pragma once

#include "platform/permissions.h"

namespace tarqo::mac {

class MacPermissions final : public Permissions {
 public:
  bool accessibilityTrusted() override;
  void promptForAccessibility() override;
  bool captureAccess() override;
  bool requestCaptureAccess() override;

  /// None: only the grant can be in the way.
  std::optional<std::string> accessibilityObstacle() override { return std::nullopt; }
  std::optional<std::string> captureObstacle() override { return std::nullopt; }
};

}  // namespace tarqo::mac
