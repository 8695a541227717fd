#include "platform/linux/x11/connection.h"

#include <gtest/gtest.h>

namespace tarqo::lnx::x11 {
namespace {

TEST(DisplayNames, AreOfOneServerWhateverTheScreen) {
  EXPECT_TRUE(isSameDisplay(":0", ":0"));
  EXPECT_TRUE(isSameDisplay(":0", ":0.0"));
  EXPECT_TRUE(isSameDisplay(":10.1", ":10"));
  EXPECT_TRUE(isSameDisplay("unix:3", ":3"));
  EXPECT_TRUE(isSameDisplay("there:3.1", "there:3"));
}

TEST(DisplayNames, TellServersApart) {
  EXPECT_FALSE(isSameDisplay(":0", ":1"));
  EXPECT_FALSE(isSameDisplay(":1", ":10"));
  EXPECT_FALSE(isSameDisplay("there:0", ":0"));
}

TEST(DisplayNames, MayBeNone) {
  EXPECT_FALSE(isSameDisplay("", ":0"));
  EXPECT_FALSE(isSameDisplay(":0", "nonsense"));
  EXPECT_TRUE(isSameDisplay("nonsense", "nonsense"));
}

}  // namespace
}  // namespace tarqo::lnx::x11
