// How long one call may take that needs many answers of a slow application.
#include "platform/linux/atspi/read/reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "platform/linux/linux_clock.h"
#include "tests/platform/linux/atspi/read/served_application.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

class NoWindows final : public x11::WindowLocator {
 public:
  std::vector<x11::LocatedWindow> windowsOf(Pid) override { return {}; }
  std::optional<x11::LocatedWindow> windowAt(Point) override { return std::nullopt; }
  bool raise(WindowNumber) override { return false; }
  bool awaitEventsHandled(WindowNumber, Duration) override { return false; }
  bool setMinimized(WindowNumber, bool) override { return false; }
};

/// The answers of an application whose objects hang one on another without end, and that takes its
/// time over each.
int answerSlowly(sd_bus_message* call) {
  std::this_thread::sleep_for(25ms);
  const std::string called = sd_bus_message_get_member(call);
  if (called == "GetRole") {
    return sd_bus_reply_method_return(call, "u", 39) + 1;
  }
  if (called == "GetState") {
    return sd_bus_reply_method_return(call, "au", 2, 1U << 25U, 0U) + 1;
  }
  const char* interface = nullptr;
  const char* property = nullptr;
  if (called == "Get" && sd_bus_message_read(call, "ss", &interface, &property) > 0 &&
      std::string(property) == "Parent") {
    const std::string above = std::string(sd_bus_message_get_path(call)) + "/up";
    return sd_bus_reply_method_return(call, "v", "(so)", ":1.1", above.c_str()) + 1;
  }
  return called == "Get" ? sd_bus_reply_method_return(call, "v", "s", "Odd") + 1 : 0;
}

TEST(Reader, TheWayUpToTheWindowTakesNoLongerThanOneTimeOut) {
  ServedApplication application(answerSlowly);
  LinuxClock clock;
  Bus bus(application.address(), clock);
  NoWindows windows;
  Reader reader(bus, windows);
  const ObjectHandle object{.pid = getpid(), .timeout = 300ms, .ref = {":1.1", "/a"}};
  reader.beginCall();
  const Instant begun = std::chrono::steady_clock::now();
  EXPECT_FALSE(reader.toplevelOf(object).has_value());
  const Duration taken = std::chrono::steady_clock::now() - begun;
  EXPECT_GE(taken, 250ms);
  EXPECT_LT(taken, 700ms);
  // It answered all the time, so there is no back-off.
  std::this_thread::sleep_for(100ms);
  reader.beginCall();
  EXPECT_NE(reader.read(object, Property::parent), nullptr);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
