#include "platform/linux/base/backoff.h"

#include <gtest/gtest.h>

namespace tarqo::lnx {
namespace {

using namespace std::chrono_literals;

constexpr Instant kNow{1h};

TEST(Backoff, DoesNotRunBeforeAFailure) {
  const Backoff backoff;
  EXPECT_FALSE(backoff.isRunning(kNow));
  EXPECT_LT(backoff.end(), kNow);
}

TEST(Backoff, RunsForItsLength) {
  Backoff backoff;
  backoff.start(kNow, 2s);
  EXPECT_TRUE(backoff.isRunning(kNow));
  EXPECT_TRUE(backoff.isRunning(kNow + 1999ms));
  EXPECT_FALSE(backoff.isRunning(kNow + 2s));
  EXPECT_EQ(backoff.end(), kNow + 2s);
}

TEST(Backoff, BeginsAnewWithEveryFailure) {
  Backoff backoff;
  backoff.start(kNow, 2s);
  backoff.start(kNow + 1s, 2s);
  EXPECT_TRUE(backoff.isRunning(kNow + 2s));
}

}  // namespace
}  // namespace tarqo::lnx
