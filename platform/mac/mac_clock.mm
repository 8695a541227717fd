#include "platform/mac/mac_clock.h"

#include <thread>
#include <utility>

#include "platform/mac/mac_objc.h"

namespace tarqo::mac {
namespace {

/// As the main thread has; the frameworks want more than the 512 KB of others.
constexpr NSUInteger kBackgroundStackBytes = 0x800000;

}  // namespace

void turnLoop(Duration slice) {
  const Instant end = std::chrono::steady_clock::now() + slice;
  for (Instant now = end - slice; now < end; now = std::chrono::steady_clock::now()) {
    const std::chrono::duration<CFTimeInterval> left = end - now;
    // The default mode: the common modes are no mode to run in.
    if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, left.count(), 0) == kCFRunLoopRunFinished) {
      std::this_thread::sleep_until(end);
    }
  }
}

Instant MacClock::now() { return std::chrono::steady_clock::now(); }

WallTime MacClock::wall() {
  return std::chrono::time_point_cast<WallTime::duration>(std::chrono::system_clock::now());
}

void MacClock::sleep(Duration duration) { std::this_thread::sleep_for(duration); }

void MacClock::runLoopFor(Duration slice) {
  guarded([slice] { turnLoop(slice); });
}

void MacClock::background(std::function<void()> body) {
  guarded([&] {
    const std::function<void()> run = std::move(body);
    NSThread* thread = [[NSThread alloc] initWithBlock:^{
      guarded([&] { run(); });
    }];
    thread.stackSize = kBackgroundStackBytes;
    [thread start];
  });
}

}  // namespace tarqo::mac
