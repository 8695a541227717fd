// Signals that ask the process to end, in processes of their own.

#include "platform/posix/ending_signals.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <optional>

namespace tarqo {
namespace {

class EndingSignalsDeathTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static void ask(int number) { static_cast<void>(raise(number)); }

  /// Goes on only where the condition holds.
  static void require(bool condition) {
    if (!condition) {
      _exit(1);
    }
  }
};

TEST_F(EndingSignalsDeathTest, WaitForTheEndOfWhatKeepsThem) {
  EXPECT_EXIT(
      {
        {
          const EndingSignals held;
          ask(SIGTERM);
          require(EndingSignals::pending());
        }
        _exit(2);
      },
      testing::KilledBySignal(SIGTERM), "");
}

TEST_F(EndingSignalsDeathTest, WaitForTheLastOfThoseThatKeepThem) {
  EXPECT_EXIT(
      {
        std::optional<EndingSignals> first;
        std::optional<EndingSignals> second;
        first.emplace();
        ask(SIGINT);
        second.emplace();
        require(EndingSignals::pending());
        first.reset();
        require(EndingSignals::pending());
        second.reset();
        _exit(2);
      },
      testing::KilledBySignal(SIGINT), "");
}

TEST_F(EndingSignalsDeathTest, EndTheProcessAtOnceAgainAfterwards) {
  EXPECT_EXIT(
      {
        { const EndingSignals held; }
        ask(SIGTERM);
        _exit(2);
      },
      testing::KilledBySignal(SIGTERM), "");
}

TEST_F(EndingSignalsDeathTest, StayIgnoredWhenTheyAre) {
  EXPECT_EXIT(
      {
        static_cast<void>(signal(SIGHUP, SIG_IGN));
        {
          const EndingSignals held;
          ask(SIGHUP);
          require(!EndingSignals::pending());
        }
        ask(SIGHUP);
        _exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tarqo
