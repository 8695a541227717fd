// How long one request may wait for answers of other applications in all.
//
// An application that answers each call slowly, but in time, would hold a request for the sum of
// dozens of calls. Once the time is used up, nothing more is asked, and every read is empty, as of
// an application that hangs.
//
// Worker thread only.
#pragma once

#include <algorithm>

#include "platform/clock.h"

namespace tarqo {

/// What the calls of one request have taken of the time for all of them.
class TargetTime {
 public:
  /// No call is begun that may end after `limit` has been waited in all; one takes `longestCall` at
  /// most.
  TargetTime(Clock& clock, Duration limit, Duration longestCall)
      : clock_(clock), limit_(limit), longestCall_(longestCall) {}

  /// A request begins.
  void restart() {
    left_ = limit_;
    ranOut_ = false;
  }

  /// Adds a time that the request has by its own rules, for a walk or for a window to come.
  void extend(Duration more) { left_ += std::max(more, Duration::zero()); }

  /// Whether a call that takes at most `times` calls long may be made; notes when it may not.
  [[nodiscard]] bool allows(int times = 1) {
    const bool allowed = times * longestCall_ <= left_;
    ranOut_ = ranOut_ || !allowed;
    return allowed;
  }

  [[nodiscard]] Instant now() const { return clock_.now(); }

  /// Whether a call was not made for want of time since the request began.
  [[nodiscard]] bool ranOut() const { return ranOut_; }

  /// Counts a call from its construction to its destruction.
  class Call {
   public:
    explicit Call(TargetTime& time) : time_(time), start_(time.clock_.now()) {}
    ~Call() { time_.left_ -= time_.clock_.now() - start_; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    TargetTime& time_;
    Instant start_;
  };

 private:
  Clock& clock_;
  Duration limit_;
  Duration longestCall_;
  Duration left_ = limit_;
  bool ranOut_ = false;
};

}  // namespace tarqo
