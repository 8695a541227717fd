// Applications of a desktop as the Accessibility API shows them: every element stands for one of
// `tarqo::Accessibility`.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <memory>
#include <string>

#include "tests/platform/mac/standin/desktop.h"

namespace tarqo {
class Observer;
}  // namespace tarqo

namespace standin {

class AxElement;

/// A new reference.
[[nodiscard]] AXUIElementRef desktopApplication(pid_t pid);
AXError desktopHit(float x, float y, AXUIElementRef* element);

/// What an observer hears of an application of the desktop goes to the main loop.
class DesktopObserver {
 public:
  DesktopObserver();
  DesktopObserver(DesktopObserver&& other) noexcept;
  DesktopObserver& operator=(DesktopObserver&& other) noexcept;
  ~DesktopObserver();

  /// False when the desktop refuses.
  bool begin(pid_t pid);
  AXError subscribe(AxElement& element, const std::string& notification);
  void end();

 private:
  std::unique_ptr<tarqo::Observer> observer_;
};

}  // namespace standin
