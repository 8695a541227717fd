// Time as a service: the only way in which the core learns the time, waits, or starts a thread.
#pragma once

#include <chrono>
#include <functional>

namespace tarqo {

/// A moment on the steady clock: never set back, unrelated to the calendar.
using Instant = std::chrono::steady_clock::time_point;

/// Lies before every moment a clock returns, yet near enough that ages counted from it do not
/// overflow.
inline constexpr Instant kDistantPast{-std::chrono::hours(24 * 365 * 100)};

using WallTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;
using Duration = std::chrono::steady_clock::duration;

class Clock {
 public:
  virtual ~Clock() = default;

  /// The steady clock, for deadlines and ages. Any thread.
  [[nodiscard]] virtual Instant now() = 0;

  /// The calendar's time (UTC), for what the client reads. Any thread.
  [[nodiscard]] virtual WallTime wall() = 0;

  /// Blocks the calling thread for `duration`; nothing is delivered on it meanwhile.
  virtual void sleep(Duration duration) = 0;

  /// Runs the calling thread's event loop for a slice, so that completions meant for this thread
  /// can arrive. Always lasts its whole time, also on a thread whose loop has nothing to serve.
  virtual void runLoopFor(Duration slice) = 0;

  /// Like `runLoopFor`, but returns early when a task started by `background` has finished since
  /// the last call.
  virtual void runLoopUntilTaskDone(Duration slice) { runLoopFor(slice); }

  /// Runs `body` on a thread of its own and returns at once. The thread is never joined: a body
  /// must own or share whatever it touches.
  virtual void background(std::function<void()> body) = 0;
};

}  // namespace tarqo
