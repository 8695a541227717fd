// The clocks of the system, and threads for bodies that may hang.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

#include "platform/clock.h"

namespace tarqo::lnx {

class LinuxClock final : public Clock {
 public:
  Instant now() override;
  WallTime wall() override;
  void sleep(Duration duration) override;

  /// Sleeps: only the main thread has a loop, and no completion is meant for any other.
  void runLoopFor(Duration slice) override;

  void runLoopUntilTaskDone(Duration slice) override;

  /// A body whose thread cannot be started is not run. Exceptions of a body are swallowed.
  void background(std::function<void()> body) override;

 private:
  /// Shared with every body, since a body may return after the clock is gone.
  struct Bodies {
    std::mutex mutex;
    std::condition_variable returned;
    unsigned count = 0;  ///< How many have returned.
  };

  std::shared_ptr<Bodies> bodies_ = std::make_shared<Bodies>();
  unsigned seen_ = 0;  ///< `count` at the end of the last wait; guarded by its mutex.
};

}  // namespace tarqo::lnx
