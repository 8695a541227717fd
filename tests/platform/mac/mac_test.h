// The ground of every test of the macOS backend's C half: a fresh system, and at the end the proof
// that every reference was given back, once.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/accessibility.h"
#include "tests/platform/mac/standin/accessibility.h"
#include "tests/platform/mac/standin/core_foundation.h"
#include "tests/platform/mac/standin/heap.h"
#include "tests/platform/mac/standin/quartz.h"

namespace tarqo::mac {

/// The application that the tests ask of.
inline constexpr Pid kPid = 7;

class MacTest : public testing::Test {
 protected:
  MacTest() {
    standin::complain = [](const std::string& what) { ADD_FAILURE() << what; };
    startAnew();
  }

  /// What the test itself holds is gone by now, since its members are those of a derived class.
  ~MacTest() override {
    startAnew();
    EXPECT_EQ(standin::Heap::instance().living(), std::vector<std::string>{});
    standin::Heap::instance().forgetAll();
  }

  standin::Applications& applications = standin::Applications::instance();
  standin::Quartz& quartz = standin::Quartz::instance();

 private:
  void startAnew() {
    applications.reset();
    quartz.reset();
  }
};

}  // namespace tarqo::mac
