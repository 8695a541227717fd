// clock.h and random.h

#include <atomic>
#include <set>
#include <thread>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

using ClockContract = Contract;

TEST_F(ClockContract, LiesAfterTheDistantPast) {
  EXPECT_GT(clock.now(), kDistantPast);
  EXPECT_GT(clock.now() - 24h, kDistantPast);
}

TEST_F(ClockContract, TurnLastsItsWholeTime) {
  const Instant begin = clock.now();
  clock.runLoopFor(50ms);
  EXPECT_GE(clock.now() - begin, 50ms);
  EXPECT_LT(clock.now() - begin, 2s);
}

TEST_F(ClockContract, TurnOfNothingReturns) {
  const Instant begin = clock.now();
  clock.runLoopFor(0ms);
  clock.runLoopFor(-1s);
  EXPECT_GE(clock.now(), begin);
  EXPECT_LT(clock.now() - begin, 1s);
}

TEST_F(ClockContract, ATurnWhileBusyLastsAtMostItsTime) {
  const Instant begin = clock.now();
  clock.runLoopUntilTaskDone(50ms);
  EXPECT_LT(clock.now() - begin, 2s);
}

TEST_F(ClockContract, ATurnWhileBusyWaitsForABodyAtWork) {
  const auto done = std::make_shared<std::atomic<bool>>(false);
  clock.background([done, &time = clock] {
    time.sleep(100ms);
    done->store(true);
  });
  const Instant begin = clock.now();
  while (!done->load() && clock.now() - begin < 10s) {
    clock.runLoopUntilTaskDone(1s);
  }
  EXPECT_TRUE(done->load());
  EXPECT_GE(clock.now() - begin, 90ms);
  EXPECT_LT(clock.now() - begin, 5s);
}

TEST_F(ClockContract, SleepLastsItsWholeTime) {
  const Instant begin = clock.now();
  clock.sleep(50ms);
  EXPECT_GE(clock.now() - begin, 50ms);
  EXPECT_LT(clock.now() - begin, 2s);
}

TEST_F(ClockContract, TheCalendarMovesWithTheClock) {
  const WallTime begin = clock.wall();
  clock.sleep(50ms);
  EXPECT_GE(clock.wall() - begin, 45ms);
}

TEST_F(ClockContract, ABackgroundBodyRunsOnAThreadOfItsOwn) {
  const auto threads = std::make_shared<Arrivals<std::thread::id>>();
  clock.background([threads] { threads->add(std::this_thread::get_id()); });

  EXPECT_TRUE(waitUntil([&] { return !threads->all().empty(); }));
  EXPECT_NE(threads->all().front(), std::this_thread::get_id());
}

TEST_F(ClockContract, ABackgroundBodyDoesNotHoldUpItsStarter) {
  const auto done = std::make_shared<std::atomic<bool>>(false);
  const Instant begin = clock.now();
  clock.background([done, &time = clock] {
    time.sleep(300ms);
    done->store(true);
  });
  EXPECT_LT(clock.now() - begin, 200ms);

  clock.runLoopFor(50ms);
  EXPECT_FALSE(done->load());
  EXPECT_TRUE(waitUntil([&] { return done->load(); }));
  EXPECT_GE(clock.now() - begin, 300ms);
}

TEST_F(ClockContract, ABackgroundBodyReleasesWhatItOwned) {
  const auto owned = std::make_shared<int>(1);
  clock.background([owned] {});
  EXPECT_TRUE(waitUntil([&] { return owned.use_count() == 1; }));
}

TEST_F(ClockContract, RandomNumbersDoNotRepeat) {
  std::set<std::uint64_t> seen;
  for (int i = 0; i < 1000; ++i) {
    seen.insert(platform.random.next());
  }
  EXPECT_EQ(seen.size(), 1000U);
}

}  // namespace
}  // namespace tarqo::contract
