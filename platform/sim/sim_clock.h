// Virtual time: a clock that moves only while somebody waits.
//
// `runLoopFor` and `sleep` carry the clock forward by exactly their duration and run what is
// scheduled on the way, each at its own instant, in the order of time and then of scheduling.
// Nothing depends on real time, so an eight-second wait costs microseconds and every run is the
// same.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "platform/clock.h"

namespace tarqo::sim {

class TaskThread;

class VirtualClock final : public Clock {
 public:
  VirtualClock();
  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;
  ~VirtualClock() override;

  [[nodiscard]] Instant now() override { return now_; }
  [[nodiscard]] WallTime wall() override;
  void sleep(Duration duration) override { advance(duration); }
  void runLoopFor(Duration slice) override { advance(slice); }

  /// The body starts at the present instant, as soon as somebody waits. It has a thread of its own,
  /// but runs only while the waiting thread stands still, so there is never more than one at work.
  /// Its own waits, and services that take time, suspend it until the waiting thread has carried
  /// the clock that far; a body that waits for ever simply never goes on.
  void background(std::function<void()> body) override;

  /// Lets time pass for the caller: what `runLoopFor` and `sleep` do, and services that take their
  /// time.
  void advance(Duration duration);

  /// Suspends a background body until the desktop ends. Anybody else has nobody to be woken by, so
  /// an hour passes and the call returns.
  void waitForever();

  /// Runs `deed` when the clock reaches that instant; an instant that has passed counts as now.
  void at(Instant instant, std::function<void()> deed);
  void after(Duration delay, std::function<void()> deed) { at(now_ + delay, std::move(deed)); }

  /// The time that has passed since the desktop began.
  [[nodiscard]] Duration elapsed() const { return now_ - begin_; }

  /// Sets the calendar without touching the steady clock, as a user or a time server does.
  void setWall(WallTime wall);

  /// Ends all background bodies: their waits return at once, as if the time had passed. Nothing is
  /// scheduled any more.
  void stop();
  [[nodiscard]] bool stopped() const { return stopped_; }

 private:
  void resume(TaskThread& task);
  void suspend();

  const Instant begin_;
  Instant now_;
  WallTime wallAtBegin_;
  bool stopped_ = false;
  std::uint64_t scheduled_ = 0;
  std::map<std::pair<Instant, std::uint64_t>, std::function<void()>> deeds_;
  std::vector<std::unique_ptr<TaskThread>> tasks_;
  TaskThread* current_ = nullptr;  ///< The background body at work; null outside of any.
};

/// How a service that may fail or dawdle answers.
class Reply {
 public:
  [[nodiscard]] static Reply now() { return {Kind::answer, Duration::zero()}; }
  [[nodiscard]] static Reply after(Duration delay) { return {Kind::answer, delay}; }
  /// An answer without content: null, or an error where the service has one.
  [[nodiscard]] static Reply nothing(Duration delay = {}) { return {Kind::nothing, delay}; }
  [[nodiscard]] static Reply never() { return {Kind::never, Duration::zero()}; }

  [[nodiscard]] bool isNever() const { return kind_ == Kind::never; }
  [[nodiscard]] bool hasContent() const { return kind_ == Kind::answer; }
  [[nodiscard]] Duration delay() const { return delay_; }

 private:
  enum class Kind { answer, nothing, never };
  Reply(Kind kind, Duration delay) : kind_(kind), delay_(delay) {}

  Kind kind_;
  Duration delay_;
};

}  // namespace tarqo::sim
