#include "platform/sim/sim_clock.h"

#include <algorithm>

#include "platform/sim/sim_task_thread.h"

namespace tarqo::sim {
namespace {

using std::chrono::hours;

// Both clocks begin at moments that are easy to recognise and far enough from zero to subtract
// from.
constexpr Instant kBegin{hours(1000)};
constexpr WallTime kWallBegin{std::chrono::seconds(1'735'689'600)};  // 2025-01-01T00:00:00Z

}  // namespace

VirtualClock::VirtualClock() : begin_(kBegin), now_(kBegin), wallAtBegin_(kWallBegin) {}

VirtualClock::~VirtualClock() { stop(); }

WallTime VirtualClock::wall() {
  return wallAtBegin_ + std::chrono::duration_cast<std::chrono::microseconds>(elapsed());
}

void VirtualClock::setWall(WallTime wall) {
  wallAtBegin_ = wall - std::chrono::duration_cast<std::chrono::microseconds>(elapsed());
}

void VirtualClock::at(Instant instant, std::function<void()> deed) {
  deeds_.emplace(std::pair{std::max(instant, now_), scheduled_++}, std::move(deed));
}

void VirtualClock::background(std::function<void()> body) {
  tasks_.push_back(std::make_unique<TaskThread>(std::move(body)));
  at(now_, [this, task = tasks_.back().get()] { resume(*task); });
}

void VirtualClock::advance(Duration duration) {
  const Instant end = now_ + std::max(duration, Duration::zero());
  if (current_ != nullptr && !stopped_) {
    at(end, [this, task = current_] { resume(*task); });
    suspend();
    return;
  }
  while (!stopped_ && !deeds_.empty() && deeds_.begin()->first.first <= end) {
    // Taken out before it runs: a deed may schedule others and let time pass itself.
    auto next = deeds_.extract(deeds_.begin());
    now_ = std::max(now_, next.key().first);
    next.mapped()();
  }
  now_ = std::max(now_, end);
}

void VirtualClock::waitForever() {
  if (current_ != nullptr) {
    while (!stopped_) {
      suspend();
    }
    return;
  }
  advance(hours(1));
}

void VirtualClock::resume(TaskThread& task) {
  TaskThread* const outer = std::exchange(current_, &task);
  task.resume();
  current_ = outer;
  if (task.finished()) {
    std::erase_if(tasks_, [&](const auto& each) { return each.get() == &task; });
  }
}

void VirtualClock::suspend() { current_->suspend(); }

void VirtualClock::stop() {
  stopped_ = true;
  deeds_.clear();
  // A body that was never resumed has no thread to end; one more turn ends every other.
  std::erase_if(tasks_, [](const auto& task) { return !task->begun(); });
  while (!tasks_.empty()) {
    resume(*tasks_.back());
  }
}

}  // namespace tarqo::sim
