// Waiting for a condition by turning the calling thread's loop in slices.
#pragma once

#include "platform/clock.h"

namespace tarqo {

/// Turns the loop in slices of `slice` until `condition` holds (true) or `deadline` has passed with
/// the condition still false. The condition is asked once more when the deadline has passed.
template <typename Condition>
[[nodiscard]] bool runLoopUntil(Clock& clock, Instant deadline, Duration slice,
                                Condition condition) {
  while (!condition()) {
    if (clock.now() >= deadline) {
      return false;
    }
    clock.runLoopFor(slice);
  }
  return true;
}

}  // namespace tarqo
