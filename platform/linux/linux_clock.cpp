#include "platform/linux/linux_clock.h"

#include <exception>
#include <thread>
#include <utility>

namespace tarqo::lnx {

Instant LinuxClock::now() { return std::chrono::steady_clock::now(); }

WallTime LinuxClock::wall() {
  return std::chrono::time_point_cast<WallTime::duration>(std::chrono::system_clock::now());
}

void LinuxClock::sleep(Duration duration) { std::this_thread::sleep_for(duration); }

void LinuxClock::runLoopFor(Duration slice) { std::this_thread::sleep_for(slice); }

void LinuxClock::runLoopUntilTaskDone(Duration slice) {
  std::unique_lock lock(bodies_->mutex);
  (void)bodies_->returned.wait_for(lock, slice, [this] { return bodies_->count != seen_; });
  seen_ = bodies_->count;
}

void LinuxClock::background(std::function<void()> body) {
  try {
    std::thread([body = std::move(body), bodies = bodies_] {
      try {
        body();
      } catch (...) {
        // Exceptions are swallowed; completion is still signalled.
      }
      const std::lock_guard lock(bodies->mutex);
      ++bodies->count;
      bodies->returned.notify_all();
    }).detach();
  } catch (const std::exception&) {
    return;
  }
}

}  // namespace tarqo::lnx
