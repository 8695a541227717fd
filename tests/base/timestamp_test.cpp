#include "base/timestamp.h"

#include <gtest/gtest.h>

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using std::chrono::days;

using Moment = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

TEST(Timestamp, IsUtcWithMilliseconds) {
  EXPECT_EQ(timestamp(Moment(1794699016123ms)), "2026-11-14T23:30:16.123Z");
}

TEST(Timestamp, KeepsThreeDigitsAtAWholeSecond) {
  EXPECT_EQ(timestamp(Moment(0ms)), "1970-01-01T00:00:00.000Z");
}

TEST(Timestamp, DropsWhatIsBelowAMillisecond) {
  EXPECT_EQ(timestamp(Moment(7ms + 999us)), "1970-01-01T00:00:00.007Z");
}

TEST(Timestamp, KnowsLeapDays) {
  EXPECT_EQ(timestamp(Moment(19782 * days(1) + 1ms)), "2024-02-29T00:00:00.001Z");
}

TEST(Timestamp, CountsBackwardsBeforeTheEpoch) {
  EXPECT_EQ(timestamp(Moment(-1us)), "1969-12-31T23:59:59.999Z");
}

}  // namespace
}  // namespace tarqo
