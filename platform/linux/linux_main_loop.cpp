#include "platform/linux/linux_main_loop.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace tarqo::lnx {
namespace {

/// A round is never longer, so that a clock or a wake-up that fails costs a delay only.
constexpr Duration kLongestRound = std::chrono::seconds(10);

int inMilliseconds(Duration duration) {
  const auto whole = std::chrono::ceil<std::chrono::milliseconds>(duration).count();
  return static_cast<int>(std::clamp<std::int64_t>(whole, 0, 60'000));
}

}  // namespace

LinuxMainLoop::LinuxMainLoop(Clock& clock)
    : clock_(clock), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), watched_{{wake_, POLLIN, 0}} {}

LinuxMainLoop::~LinuxMainLoop() {
  if (wake_ >= 0) {
    close(wake_);
  }
}

void LinuxMainLoop::add(LoopSource& source) {
  sources_.push_back(&source);
  watched_.push_back({-1, 0, 0});
}

void LinuxMainLoop::post(std::function<void()> task) {
  {
    const std::lock_guard lock(tasksLock_);
    tasks_.push_back(std::move(task));
  }
  const std::uint64_t one = 1;
  // Fails only when the counter is full, and then the loop wakes anyway.
  static_cast<void>(!write(wake_, &one, sizeof(one)));
}

void LinuxMainLoop::runTasks() {
  std::uint64_t count = 0;
  static_cast<void>(!read(wake_, &count, sizeof(count)));
  std::vector<std::function<void()>> tasks;
  {
    const std::lock_guard lock(tasksLock_);
    tasks.swap(tasks_);
  }
  for (const std::function<void()>& task : tasks) {
    task();
  }
}

// Allocates nothing: a failure to allocate could not be reported here.
void LinuxMainLoop::turn(Duration patience) {
  Instant until = clock_.now() + patience;
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    watched_[i + 1] = {sources_[i]->descriptor(), sources_[i]->events(), 0};
    until = std::min(until, sources_[i]->deadline().value_or(until));
  }
  const Duration left = until - clock_.now();
  poll(watched_.data(), watched_.size(), inMilliseconds(left));
  runTasks();
  for (LoopSource* source : sources_) {
    source->serve();
  }
}

void LinuxMainLoop::run() {
  while (true) {
    turn(kLongestRound);
  }
}

}  // namespace tarqo::lnx
