#include "platform/linux/linux_clock.h"

#include <gtest/gtest.h>

#include "base/timed.h"

namespace tarqo::lnx {
namespace {

using namespace std::chrono_literals;

TEST(LinuxClock, WaitsForABodyNoLongerThanItTakes) {
  LinuxClock clock;
  const Instant begin = clock.now();
  clock.background([] {});
  clock.runLoopUntilTaskDone(10s);
  EXPECT_LT(clock.now() - begin, 5s);
}

TEST(LinuxClock, WaitsItsWholeTimeWhereNoBodyReturns) {
  LinuxClock clock;
  clock.background([&clock] { clock.sleep(200ms); });
  const Instant begin = clock.now();
  clock.runLoopUntilTaskDone(20ms);
  EXPECT_GE(clock.now() - begin, 20ms);
  clock.runLoopUntilTaskDone(10s);
  EXPECT_LT(clock.now() - begin, 5s);
}

TEST(LinuxClock, NoticesABodyThatThrew) {
  LinuxClock clock;
  const Instant begin = clock.now();
  clock.background([] { throw 1; });
  clock.runLoopUntilTaskDone(10s);
  EXPECT_LT(clock.now() - begin, 5s);
}

TEST(LinuxClock, MakesALimitedCallAsShortAsItsBody) {
  LinuxClock clock;
  const Instant begin = clock.now();
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(timed(clock, 10s, [i] { return i; }), i);
  }
  // One slice each would take 400 ms.
  EXPECT_LT(clock.now() - begin, 20 * kTimedSlice);
}

}  // namespace
}  // namespace tarqo::lnx
