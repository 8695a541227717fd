// A pause after a failure.
#pragma once

#include "platform/clock.h"

namespace tarqo::lnx {

/// How long something that failed is not tried again. Not running when it is made.
class Backoff {
 public:
  /// Begins a pause, in place of one that is running.
  void start(Instant now, Duration length) { end_ = now + length; }

  [[nodiscard]] bool isRunning(Instant now) const { return now < end_; }

  /// When it may be tried again; in the distant past when it never failed.
  [[nodiscard]] Instant end() const { return end_; }

 private:
  Instant end_ = kDistantPast;
};

}  // namespace tarqo::lnx
