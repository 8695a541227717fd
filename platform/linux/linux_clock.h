// The clocks of the system, and threads of their own for bodies that may hang.
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

  /// Sleeps: no thread but the main one has a loop, and no completion is meant for the caller's.
  void turn(Duration slice) override;

  void turnWhileBusy(Duration slice) override;

  /// A body whose thread cannot be made is not run; what it throws is lost.
  void background(std::function<void()> body) override;

 private:
  /// Shared with every body: one that nobody waits for any more may return after this is gone.
  struct Bodies {
    std::mutex mutex;
    std::condition_variable returned;
    unsigned count = 0;  ///< How many have returned.
  };

  std::shared_ptr<Bodies> bodies_ = std::make_shared<Bodies>();
  unsigned seen_ = 0;  ///< What `count` was when somebody last waited; guarded by its mutex.
};

}  // namespace tarqo::lnx
