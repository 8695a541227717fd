#include "base/timed.h"

#include <gtest/gtest.h>

#include "base/waiting.h"
#include "platform/sim/sim_clock.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

class Timed : public testing::Test {
 protected:
  /// What a body that takes so long gives within the limit.
  std::optional<int> run(Duration bodyTakes, Duration limit) {
    return timed(clock, limit, [this, bodyTakes] {
      clock.sleep(bodyTakes);
      ++finished;
      return 42;
    });
  }

  sim::VirtualClock clock;
  int finished = 0;
};

TEST_F(Timed, GivesTheBodysValue) { EXPECT_EQ(run(1s, 2s), 42); }

TEST_F(Timed, ReturnsWithinASliceOfTheBodysEnd) {
  EXPECT_EQ(run(1001ms, 2s), 42);
  EXPECT_EQ(clock.elapsed(), 1020ms);
}

TEST_F(Timed, TakesASliceAtLeast) {
  EXPECT_EQ(run(0ms, 2s), 42);
  EXPECT_EQ(clock.elapsed(), 20ms);
}

TEST_F(Timed, GivesNothingAfterItsDeadline) {
  EXPECT_EQ(run(2100ms, 2s), std::nullopt);
  EXPECT_EQ(clock.elapsed(), 2s);
}

TEST_F(Timed, LetsALateBodyRunOnAndDropsItsValue) {
  EXPECT_EQ(run(2001ms, 2s), std::nullopt);
  EXPECT_EQ(finished, 0);
  clock.runLoopFor(1ms);
  EXPECT_EQ(finished, 1);
}

TEST_F(Timed, GivesUpABodyThatNeverReturns) {
  const auto value = timed(clock, 2s, [this] {
    clock.waitForever();
    return 1;
  });
  EXPECT_EQ(value, std::nullopt);
  EXPECT_EQ(clock.elapsed(), 2s);
}

TEST_F(Timed, KeepsTheCallersLoopTurningMeanwhile) {
  bool completed = false;
  clock.after(500ms, [&] { completed = true; });
  EXPECT_EQ(timed(clock, 2s,
                  [&] {
                    clock.sleep(1s);
                    return completed;
                  }),
            true);
}

TEST(TurnUntil, AsksOnceMoreWhenTheDeadlineHasPassed) {
  sim::VirtualClock clock;
  const Instant deadline = clock.now() + 100ms;
  EXPECT_TRUE(runLoopUntil(clock, deadline, 100ms, [&] { return clock.now() >= deadline; }));
  EXPECT_FALSE(runLoopUntil(clock, deadline, 100ms, [] { return false; }));
  EXPECT_EQ(clock.elapsed(), 100ms);
}

TEST(CompletionBox, KeepsTheFirstValue) {
  CompletionBox<int> box;
  EXPECT_FALSE(box.filled());
  box.fill(1);
  box.fill(2);
  EXPECT_TRUE(box.filled());
  EXPECT_EQ(box.take(), 1);
}

}  // namespace
}  // namespace tarqo
