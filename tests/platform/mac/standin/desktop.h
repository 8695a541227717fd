// The desktop that the stand-in shows as a Mac's: any backend of the project, simulated or real.
//
// Its services are for one thread at a time, and on a Mac several ask; so one lock is held around
// each call. A simulated desktop has a clock of its own, which moves only while somebody waits:
// here it is carried along with the real one.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/platform.h"

namespace standin {

/// From now on there is no other desktop than that one.
void enterDesktop(const tarqo::Platform& platform, bool hasClockOfItsOwn);
/// From now on there is none. Waits for calls that are on their way.
void leaveDesktop();
[[nodiscard]] bool hasDesktop();

/// Lets the time that has passed pass on the desktop too.
void turnDesktop();

/// Holds the desktop while it lives.
class DesktopLock {
 public:
  DesktopLock();
  DesktopLock(const DesktopLock&) = delete;
  DesktopLock& operator=(const DesktopLock&) = delete;
  /// Waits for the time that the call took on the desktop's own clock.
  ~DesktopLock();

  [[nodiscard]] const tarqo::Platform* platform() const;

 private:
  std::unique_lock<std::recursive_mutex> lock_;
};

/// What `ask` gives of the desktop; an empty result when there is none.
template <typename Ask>
auto onDesktop(const Ask& ask) -> decltype(ask(std::declval<const tarqo::Platform&>())) {
  const DesktopLock lock;
  return lock.platform() == nullptr ? decltype(ask(*lock.platform()))() : ask(*lock.platform());
}

}  // namespace standin
