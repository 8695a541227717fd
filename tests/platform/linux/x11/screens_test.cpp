#include "platform/linux/x11/screens.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/x11/fake_x_server.h"

namespace tarqo::lnx::x11 {
namespace {

TEST(Screens, AreOneWithoutMonitors) {
  FakeXServer server;
  const std::vector<Screen> screens = readScreens(server.client());
  ASSERT_EQ(screens.size(), 1U);
  EXPECT_EQ(screens[0].frame, FakeXServer::kScreen);
  EXPECT_EQ(screens[0].scale, 1);
}

TEST(Screens, AreNoneOnceTheServerIsLost) {
  FakeXServer server;
  server.hangUp();
  EXPECT_TRUE(readScreens(server.client()).empty());
}

}  // namespace
}  // namespace tarqo::lnx::x11
