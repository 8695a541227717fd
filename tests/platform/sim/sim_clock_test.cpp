#include "platform/sim/sim_clock.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

std::string at(const VirtualClock& clock, const std::string& what) {
  return std::to_string(clock.elapsed() / 1ms) + " " + what;
}

TEST(SimClock, MovesOnlyWhileSomebodyWaits) {
  VirtualClock clock;
  const Instant begin = clock.now();
  const WallTime wall = clock.wall();

  std::this_thread::sleep_for(2ms);

  EXPECT_EQ(clock.now(), begin);
  EXPECT_EQ(clock.wall(), wall);
  EXPECT_GT(begin, kDistantPast);
}

TEST(SimClock, MovesByExactlyTheWait) {
  VirtualClock clock;
  const Instant begin = clock.now();
  const WallTime wall = clock.wall();

  clock.sleep(8s);
  clock.runLoopFor(20ms);

  EXPECT_EQ(clock.now() - begin, 8020ms);
  EXPECT_EQ(clock.wall() - wall, 8020ms);
}

TEST(SimClock, NeverMovesBack) {
  VirtualClock clock;
  const Instant begin = clock.now();

  clock.sleep(-5s);

  EXPECT_EQ(clock.now(), begin);
}

TEST(SimClock, LetsTheCalendarJumpWithoutTheSteadyClock) {
  VirtualClock clock;
  const Instant begin = clock.now();
  const WallTime wall = clock.wall();

  clock.setWall(wall - 1h);
  clock.sleep(1s);

  EXPECT_EQ(clock.wall(), wall - 1h + 1s);
  EXPECT_EQ(clock.now() - begin, 1s);
}

TEST(SimClock, RunsDeedsAtTheirInstantInOrder) {
  VirtualClock clock;
  Lines seen;
  clock.after(30ms, [&] { seen.push_back(at(clock, "third")); });
  clock.after(10ms, [&] { seen.push_back(at(clock, "first")); });
  clock.after(10ms, [&] { seen.push_back(at(clock, "second")); });

  clock.sleep(20ms);
  EXPECT_EQ(seen, (Lines{"10 first", "10 second"}));
  clock.runLoopFor(10ms);
  EXPECT_EQ(seen.back(), "30 third");
}

TEST(SimClock, RunsNothingBeforeSomebodyWaits) {
  VirtualClock clock;
  bool ran = false;
  clock.after(0ms, [&] { ran = true; });

  EXPECT_FALSE(ran);
  clock.runLoopFor(0ms);
  EXPECT_TRUE(ran);
}

TEST(SimClock, CountsAPastInstantAsNow) {
  VirtualClock clock;
  clock.sleep(1s);
  Lines seen;
  clock.at(clock.now() - 500ms, [&] { seen.push_back(at(clock, "late")); });

  clock.sleep(1ms);

  EXPECT_EQ(seen, Lines{"1000 late"});
}

TEST(SimClock, LetsADeedScheduleAnother) {
  VirtualClock clock;
  Lines seen;
  clock.after(5ms, [&] {
    seen.push_back(at(clock, "outer"));
    clock.after(5ms, [&] { seen.push_back(at(clock, "inner")); });
  });

  clock.sleep(10ms);

  EXPECT_EQ(seen, (Lines{"5 outer", "10 inner"}));
}

TEST(SimClock, LetsADeedWait) {
  VirtualClock clock;
  Lines seen;
  clock.after(5ms, [&] {
    clock.sleep(100ms);
    seen.push_back(at(clock, "waited"));
  });
  clock.after(50ms, [&] { seen.push_back(at(clock, "between")); });

  clock.sleep(10ms);

  EXPECT_EQ(seen, (Lines{"50 between", "105 waited"}));
  EXPECT_EQ(clock.elapsed(), 105ms);
}

TEST(SimBackground, StartsWhenSomebodyWaits) {
  VirtualClock clock;
  bool ran = false;
  clock.background([&] { ran = true; });

  EXPECT_FALSE(ran);
  clock.runLoopFor(0ms);
  EXPECT_TRUE(ran);
}

TEST(SimBackground, HasAThreadOfItsOwn) {
  VirtualClock clock;
  std::thread::id id;
  clock.background([&] { id = std::this_thread::get_id(); });
  clock.runLoopFor(1ms);

  EXPECT_NE(id, std::thread::id());
  EXPECT_NE(id, std::this_thread::get_id());
}

TEST(SimBackground, DoesNotHoldUpWhoeverWaits) {
  VirtualClock clock;
  Lines seen;
  clock.background([&] {
    clock.sleep(3s);
    seen.push_back(at(clock, "done"));
  });

  clock.runLoopFor(2s);
  EXPECT_EQ(seen, Lines{});
  EXPECT_EQ(clock.elapsed(), 2s);
  clock.runLoopFor(2s);
  EXPECT_EQ(seen, Lines{"3000 done"});
}

TEST(SimBackground, InterleavesBodiesByTime) {
  VirtualClock clock;
  Lines seen;
  for (const int step : {30, 20}) {
    clock.background([&, step] {
      for (int i = 0; i < 3; ++i) {
        clock.sleep(std::chrono::milliseconds(step));
        seen.push_back(at(clock, std::to_string(step)));
      }
    });
  }

  clock.sleep(100ms);

  EXPECT_EQ(seen, (Lines{"20 20", "30 30", "40 20", "60 30", "60 20", "90 30"}));
}

TEST(SimBackground, NeverGoesOnAfterWaitingForEver) {
  bool wentOn = false;
  bool ended = false;
  {
    VirtualClock clock;
    clock.background([&] {
      clock.waitForever();
      wentOn = !clock.stopped();
      ended = true;
    });
    clock.sleep(24h);
    EXPECT_FALSE(ended);
  }
  EXPECT_TRUE(ended) << "the end of the desktop ends the body";
  EXPECT_FALSE(wentOn);
}

TEST(SimBackground, EndsABodyThatPollsForEver) {
  bool ended = false;
  {
    VirtualClock clock;
    clock.background([&] {
      while (!clock.stopped()) {
        clock.sleep(10ms);
      }
      ended = true;
    });
    clock.sleep(1s);
  }
  EXPECT_TRUE(ended);
}

TEST(SimBackground, DropsABodyThatNobodyWaitedFor) {
  const auto owned = std::make_shared<int>(1);
  {
    VirtualClock clock;
    clock.background([owned] {});
    EXPECT_EQ(owned.use_count(), 2);
  }
  EXPECT_EQ(owned.use_count(), 1);
}

TEST(SimBackground, ReleasesWhatABodyOwnedWhenItEnds) {
  VirtualClock clock;
  const auto owned = std::make_shared<int>(1);
  clock.background([owned] {});
  clock.runLoopFor(1ms);

  EXPECT_EQ(owned.use_count(), 1);
}

TEST(SimClock, WaitingForEverOutsideOfABodyReturnsAfterAnHour) {
  VirtualClock clock;
  clock.waitForever();
  EXPECT_EQ(clock.elapsed(), 1h);
}

}  // namespace
}  // namespace tarqo::sim
