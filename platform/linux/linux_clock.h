// The clocks of the system, and threads of their own for bodies that may hang.
#pragma once

#include "platform/clock.h"

namespace tarqo::lnx {

class LinuxClock final : public Clock {
 public:
  Instant now() override;
  WallTime wall() override;
  void sleep(Duration duration) override;

  /// Sleeps: no thread but the main one has a loop, and no completion is meant for the caller's.
  void turn(Duration slice) override;

  /// A body whose thread cannot be made is not run; what it throws is lost.
  void background(std::function<void()> body) override;
};

}  // namespace tarqo::lnx
