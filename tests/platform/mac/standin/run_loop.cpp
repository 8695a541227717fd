#include "tests/platform/mac/standin/run_loop.h"

#include <CoreFoundation/CoreFoundation.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "tests/platform/mac/standin/desktop.h"

namespace standin {
namespace {

/// How often a desktop with a clock of its own is carried along.
constexpr std::chrono::milliseconds kTick(2);

using Deed = std::function<void()>;

class Queue {
 public:
  void add(Deed deed) {
    {
      const std::lock_guard guard(lock_);
      deeds_.push_back(std::move(deed));
    }
    changed_.notify_one();
  }

  /// Runs what is there; waits for something until then, if there is nothing.
  void turn(std::chrono::steady_clock::time_point limit) {
    std::deque<Deed> due;
    {
      std::unique_lock lock(lock_);
      changed_.wait_until(lock, limit, [this] { return !deeds_.empty(); });
      due.swap(deeds_);
    }
    for (Deed& deed : due) {
      deed();
      deed = nullptr;  // What it holds ends with its turn.
    }
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Deed> deeds_;
};

Queue& mainQueue() {
  static Queue* const queue = new Queue();
  return *queue;
}

Queue& systemQueue() {
  static Queue* const queue = [] {
    auto* made = new Queue();
    std::thread([made] {
      while (true) {
        made->turn(std::chrono::steady_clock::now() + std::chrono::hours(1));
      }
    }).detach();
    return made;
  }();
  return *queue;
}

bool isMainThread() { return getpid() == gettid(); }

}  // namespace

void onMainLoop(std::function<void()> deed) { mainQueue().add(std::move(deed)); }
void onSystemThread(std::function<void()> deed) { systemQueue().add(std::move(deed)); }

}  // namespace standin

extern "C" CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode /*mode*/, CFTimeInterval seconds,
                                                 Boolean /*returnAfterSourceHandled*/) {
  using namespace standin;
  if (!isMainThread()) {
    return kCFRunLoopRunFinished;  // No other loop has a source.
  }
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(seconds));
  do {
    turnDesktop();
    mainQueue().turn(std::min(end, Clock::now() + kTick));
  } while (Clock::now() < end);
  return kCFRunLoopRunTimedOut;
}
