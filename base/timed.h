// Running a body that the system may never let return.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "base/completion_box.h"
#include "platform/clock.h"

namespace tarqo {

inline constexpr Duration kTimedSlice = std::chrono::milliseconds(20);

/// The value of `body`, run on a thread of its own while the caller's loop turns; null when it has
/// not returned within `limit`. A late body runs on and its value is dropped, so it must own or
/// share what it uses.
template <typename Body>
[[nodiscard]] auto timed(Clock& clock, Duration limit, Body body)
    -> std::optional<decltype(body())> {
  using Result = decltype(body());
  const auto box = std::make_shared<CompletionBox<Result>>();
  clock.background([box, body = std::move(body)] { box->fill(body()); });
  const Instant deadline = clock.now() + limit;
  while (!box->filled()) {
    if (clock.now() >= deadline) {
      return std::nullopt;
    }
    clock.runLoopUntilTaskDone(kTimedSlice);
  }
  return box->take();
}

}  // namespace tarqo
