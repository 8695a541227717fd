// The clocks of the system, run-loop slices, and threads of their own for bodies that may hang.
#pragma once

#include "platform/clock.h"

namespace tarqo::mac {

/// Runs the calling thread's run loop for the whole of `slice`. A loop that has nothing to serve
/// returns at once (only the main thread's never does, for it serves the main queue); then the rest
/// of the slice is slept, so that a caller who polls does not spin.
void turnLoop(Duration slice);

class MacClock final : public Clock {
 public:
  Instant now() override;
  WallTime wall() override;
  void sleep(Duration duration) override;
  void runLoopFor(Duration slice) override;

  /// A body whose thread cannot be made is not run; what it throws is lost.
  void background(std::function<void()> body) override;
};

}  // namespace tarqo::mac
