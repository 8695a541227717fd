#include "platform/linux/base/spawn.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tarqo::lnx {
namespace {

TEST(ResolvedProgram, IsFoundAsALaunchWould) {
  EXPECT_EQ(resolvedProgram("sh"), std::filesystem::canonical("/bin/sh").string());
  EXPECT_EQ(resolvedProgram("/no/such/program"), "");
  EXPECT_EQ(resolvedProgram("no-such-program-anywhere"), "");
  EXPECT_EQ(resolvedProgram("/etc/passwd"), "") << "no program";
  EXPECT_EQ(resolvedProgram("/etc"), "") << "a folder";
}

}  // namespace
}  // namespace tarqo::lnx
