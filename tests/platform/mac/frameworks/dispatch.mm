// The main queue and semaphores of Grand Central Dispatch.

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "tests/platform/mac/frameworks/objects.h"
#include "tests/platform/mac/standin/faults.h"

@implementation OS_dispatch_queue
@end
@implementation OS_dispatch_semaphore
@end

namespace {

class Semaphore final : public standin::Object {
 public:
  [[nodiscard]] CFTypeID type() const override { return standin::typeNamed("Semaphore"); }
  [[nodiscard]] std::string description() const override { return "a semaphore"; }

  std::mutex lock;
  std::condition_variable changed;
  intptr_t value = 0;
};

Semaphore& semaphoreOf(dispatch_semaphore_t semaphore, const char* user) {
  return standin::as<Semaphore>((CFTypeRef)semaphore, user);
}

}  // namespace

extern "C" {

dispatch_queue_t dispatch_get_main_queue(void) {
  static OS_dispatch_queue* const queue = [[OS_dispatch_queue alloc] init];
  return queue;
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block) {
  if (queue != dispatch_get_main_queue()) {
    standin::complain("a queue that is not the main one");
  }
  const standin::KeptBlock<dispatch_block_t> kept(block);
  standin::onMainLoop([kept] {
    @autoreleasepool {
      kept.get()();
    }
  });
}

dispatch_semaphore_t dispatch_semaphore_create(intptr_t value) {
  auto* made = standin::Heap::instance().make<Semaphore>();
  made->value = value;
  return (dispatch_semaphore_t)made->reference();
}

intptr_t dispatch_semaphore_signal(dispatch_semaphore_t semaphore) {
  Semaphore& its = semaphoreOf(semaphore, "dispatch_semaphore_signal");
  const std::lock_guard guard(its.lock);
  ++its.value;
  its.changed.notify_one();
  return 0;
}

intptr_t dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t limit) {
  Semaphore& its = semaphoreOf(semaphore, "dispatch_semaphore_wait");
  const std::chrono::steady_clock::time_point end{std::chrono::nanoseconds(limit)};
  std::unique_lock lock(its.lock);
  if (!its.changed.wait_until(lock, end, [&] { return its.value > 0; })) {
    return 1;
  }
  --its.value;
  return 0;
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  const auto from = when == DISPATCH_TIME_NOW
                        ? static_cast<int64_t>(now / std::chrono::nanoseconds(1))
                        : static_cast<int64_t>(when);
  return static_cast<dispatch_time_t>(from + nanoseconds);
}

}  // extern "C"
