// How far a click of the wheel moves.
#include "platform/linux/atspi/wheel_steps.h"

#include <gtest/gtest.h>

namespace tarqo::lnx::atspi {
namespace {

TEST(WheelSteps, OfGtkGrowWithTheAreaSlowerThanIt) {
  EXPECT_DOUBLE_EQ(gtkWheelStep(1000), 100);
  EXPECT_DOUBLE_EQ(gtkWheelStep(216), 36);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
