// How long the accessible object of a window is waited for.
#include "platform/linux/atspi/read/late_objects.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/sim/sim_clock.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

x11::LocatedWindow numbered(WindowNumber number) {
  x11::LocatedWindow window;
  window.number = number;
  window.ordinary = true;
  return window;
}

/// A process that has been running for ever, as far as anybody can tell: there is none of its pid.
constexpr Pid kOld = 0x3FFFFFFF;

class LateObjectsAtWork : public testing::Test {
 protected:
  std::size_t bareOf(Pid pid, bool hasObjects, const std::vector<x11::LocatedWindow>& windows) {
    return late_.judge(pid, hasObjects, windows).bare.size();
  }

  sim::VirtualClock clock_;
  LateObjects late_{clock_};
};

TEST_F(LateObjectsAtWork, ANewWindowIsAwaitedForMostOfASecond) {
  EXPECT_TRUE(late_.judge(kOld, true, {numbered(1)}).awaited);
  clock_.sleep(699ms);
  EXPECT_EQ(bareOf(kOld, true, {numbered(1)}), 0U);
  clock_.sleep(1ms);
  const LateObjects::Verdict verdict = late_.judge(kOld, true, {numbered(1)});
  EXPECT_EQ(verdict.bare.size(), 1U);
  EXPECT_FALSE(verdict.awaited);
}

TEST_F(LateObjectsAtWork, TheFirstWindowOfAProcessThatJustStartedIsAwaitedLonger) {
  const Pid young = ::fork();
  if (young == 0) {
    ::pause();
    ::_exit(0);
  }
  EXPECT_EQ(bareOf(young, false, {numbered(1)}), 0U);
  clock_.sleep(1499ms);
  EXPECT_EQ(bareOf(young, false, {numbered(1)}), 0U);
  clock_.sleep(1ms);
  EXPECT_EQ(bareOf(young, false, {numbered(1)}), 1U);
  ::kill(young, SIGKILL);
  ::waitpid(young, nullptr, 0);
}

TEST_F(LateObjectsAtWork, AFurtherWindowOfAnApplicationWithoutObjectsIsNotAwaited) {
  EXPECT_EQ(bareOf(kOld, false, {numbered(1)}), 0U);
  clock_.sleep(700ms);
  EXPECT_EQ(bareOf(kOld, false, {numbered(1)}), 1U);
  EXPECT_EQ(bareOf(kOld, false, {numbered(2), numbered(1)}), 2U);
}

TEST_F(LateObjectsAtWork, AWindowThatHadAnObjectMeanwhileIsAwaitedAnew) {
  EXPECT_EQ(bareOf(kOld, true, {numbered(1)}), 0U);
  clock_.sleep(1s);
  EXPECT_EQ(bareOf(kOld, true, {}), 0U);
  EXPECT_EQ(bareOf(kOld, true, {numbered(1)}), 0U);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
