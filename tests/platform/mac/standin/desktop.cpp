#include "tests/platform/mac/standin/desktop.h"

namespace standin {
namespace {

using tarqo::Duration;
using tarqo::Instant;

struct Desktop {
  std::recursive_mutex lock;
  std::optional<tarqo::Platform> platform;
  bool hasClock = false;
  Instant realBegin;
  Instant ownBegin;
  int depth = 0;

  /// How far the desktop's clock is ahead of the real one.
  [[nodiscard]] Duration ahead() const {
    return (platform->clock.now() - ownBegin) - (std::chrono::steady_clock::now() - realBegin);
  }
  void catchUp() const {
    if (platform && hasClock && ahead() < Duration::zero()) {
      platform->clock.runLoopFor(-ahead());
    }
  }
};

Desktop& desktop() {
  static Desktop* const its = new Desktop();
  return *its;
}

}  // namespace

void enterDesktop(const tarqo::Platform& platform, bool hasClockOfItsOwn) {
  Desktop& its = desktop();
  const std::lock_guard guard(its.lock);
  its.platform.emplace(platform);
  its.hasClock = hasClockOfItsOwn;
  its.realBegin = std::chrono::steady_clock::now();
  its.ownBegin = platform.clock.now();
}

void leaveDesktop() {
  const std::lock_guard guard(desktop().lock);
  desktop().platform.reset();
}

bool hasDesktop() {
  const std::lock_guard guard(desktop().lock);
  return desktop().platform.has_value();
}

void turnDesktop() {
  const std::lock_guard guard(desktop().lock);
  desktop().catchUp();
}

DesktopLock::DesktopLock() : lock_(desktop().lock) {
  if (++desktop().depth == 1) {
    desktop().catchUp();
  }
}

DesktopLock::~DesktopLock() {
  Desktop& its = desktop();
  const bool isOutermost = --its.depth == 0;
  const Duration ahead =
      isOutermost && its.platform && its.hasClock ? its.ahead() : Duration::zero();
  lock_.unlock();
  if (ahead > Duration::zero()) {
    std::this_thread::sleep_for(ahead);
  }
}

const tarqo::Platform* DesktopLock::platform() const {
  return desktop().platform ? &*desktop().platform : nullptr;
}

}  // namespace standin
