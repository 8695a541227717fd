// The two grants that the helper needs, as the system reports them. Worker thread only; a prompt is
// shown by the system on its own, the calls do not wait for the user's answer.
#pragma once

#include <optional>
#include <string>

namespace tarqo {

class Permissions {
 public:
  virtual ~Permissions() = default;

  /// Whether the helper may read and drive other applications.
  [[nodiscard]] virtual bool accessibilityTrusted() = 0;

  /// The same question, asking the system to prompt the user or to switch the service on.
  virtual void promptForAccessibility() = 0;

  /// Whether the helper may read the pixels of other applications' windows.
  [[nodiscard]] virtual bool captureAccess() = 0;

  /// Asks the system to prompt the user; true when access is granted already by the answer.
  [[nodiscard]] virtual bool requestCaptureAccess() = 0;

  /// What is in the way of accessibility, as a sentence that says what to do next, where that is
  /// not a grant the user gives to the host application; null where it is.
  [[nodiscard]] virtual std::optional<std::string> accessibilityObstacle() = 0;

  /// The same for reading pixels.
  [[nodiscard]] virtual std::optional<std::string> captureObstacle() = 0;
};

}  // namespace tarqo
