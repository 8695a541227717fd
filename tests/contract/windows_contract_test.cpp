// window_server.h

#include <cmath>
#include <set>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

class WindowsContract : public TargetContract {
 protected:
  [[nodiscard]] std::vector<Pid> owners() const {
    std::vector<Pid> result;
    for (const WindowInfo& each : server.windows(WindowList::onScreenAboveDesktop)) {
      if (each.layer == 0) {
        result.push_back(each.ownerPid.value_or(0));
      }
    }
    return result;
  }

  WindowServer& server = platform.windowServer;
};

TEST_F(WindowsContract, DescribesTheWindowOfTheTarget) {
  ASSERT_TRUE(waitUntil([&] { return serverWindow(*target).has_value(); }));
  const WindowInfo info = *serverWindow(*target);

  EXPECT_TRUE(info.number);
  EXPECT_EQ(info.title, "Contract");
  ASSERT_TRUE(info.bounds);
  EXPECT_GE(info.bounds->width, 300);
  EXPECT_GE(info.bounds->height, 200);
  EXPECT_GT(info.alpha.value_or(1), 0);
}

TEST_F(WindowsContract, AgreesWithAccessibilityOnWhereTheWindowIs) {
  const auto agree = [&] {
    const auto info = serverWindow(*target);
    const auto mine = frame(window());
    return info && info->bounds && mine && std::abs(info->bounds->x - mine->x) <= 2 &&
           std::abs(info->bounds->y - mine->y) <= 2 &&
           std::abs(info->bounds->width - mine->width) <= 2 &&
           std::abs(info->bounds->height - mine->height) <= 2;
  };
  EXPECT_TRUE(waitUntil(agree));
}

TEST_F(WindowsContract, NumbersEveryWindowOnce) {
  std::set<WindowNumber> numbers;
  std::size_t numbered = 0;
  for (const WindowInfo& each : server.windows(WindowList::onScreen)) {
    if (each.number) {
      ++numbered;
      numbers.insert(*each.number);
    }
  }
  EXPECT_GT(numbered, 0U);
  EXPECT_EQ(numbers.size(), numbered);
}

TEST_F(WindowsContract, ListsNoMoreAboveTheDesktopThanInAll) {
  EXPECT_LE(server.windows(WindowList::onScreenAboveDesktop).size(),
            server.windows(WindowList::onScreen).size());
}

TEST_F(WindowsContract, ListsFrontToBack) {
  const auto other = backend->startTarget("Other", {300, 200, 640, 480});
  ASSERT_TRUE(waitUntil([&] { return serverWindow(*other).has_value(); }));
  for (const ContractTarget* front : {target.get(), other.get()}) {
    bringToFront(*front);
    EXPECT_TRUE(waitUntil([&] {
      const std::vector<Pid> list = owners();
      return !list.empty() && list.front() == front->pid();
    }));
  }
}

TEST_F(WindowsContract, ListsNoWindowOfAnEndedApplication) {
  target->end();
  EXPECT_TRUE(waitUntil([&] { return !serverWindow(*target); }));
}

TEST_F(WindowsContract, DoesNotWaitForAHungApplication) {
  target->hang();
  const Instant begin = clock.now();
  EXPECT_TRUE(serverWindow(*target));
  EXPECT_LT(clock.now() - begin, 250ms);
  target->resume();
}

TEST_F(WindowsContract, HasAMainDisplayAtTheOrigin) {
  const std::vector<Screen> screens = server.screens();

  ASSERT_FALSE(screens.empty());
  EXPECT_EQ(screens[0].frame.x, 0);
  EXPECT_EQ(screens[0].frame.y, 0);
  for (const Screen& screen : screens) {
    EXPECT_GE(screen.frame.width, 300);
    EXPECT_GE(screen.frame.height, 200);
    EXPECT_GE(screen.scale, 1);
  }
}

TEST_F(WindowsContract, RunsInASessionThatIsNotLocked) {
  EXPECT_NE(server.loginSession().locked, true);
  EXPECT_NE(server.loginSession().onConsole, false);
}

}  // namespace
}  // namespace tarqo::contract
