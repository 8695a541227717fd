// Which applications there are, and by which connection they are read.
#include "platform/linux/atspi/read/registry.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>

#include "platform/linux/linux_clock.h"
#include "tests/platform/linux/atspi/scripted_bus.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

class RegistryTest : public testing::Test {
 protected:
  explicit RegistryTest(Pid pid = getpid()) : scripted(pid, answer()) {}

  ScriptedBus::Answer answer() {
    return [this](sd_bus_message* call) {
      const std::string member = sd_bus_message_get_member(call);
      if (member == "GetApplicationBusAddress") {
        return sd_bus_reply_method_return(call, "s", offers ? scripted.address().c_str() : "") + 1;
      }
      const char* interface = nullptr;
      const char* name = nullptr;
      if (member != "Get" || sd_bus_message_read(call, "ss", &interface, &name) <= 0) {
        return 0;
      }
      const std::string toolkit = isNamed ? "gtk" : "";
      return sd_bus_reply_method_return(call, "v", "s",
                                        name == std::string("Version") ? "3.24" : toolkit.c_str()) +
             1;
    };
  }

  std::atomic<bool> offers = true;
  std::atomic<bool> isNamed = true;
  ScriptedBus scripted;
  LinuxClock clock;
  Bus bus{clock};
  Registry registry{bus};
};

class RegistryOfAnotherProcess : public RegistryTest {
 protected:
  RegistryOfAnotherProcess() : RegistryTest(getppid()) {}
};

TEST_F(RegistryTest, AnApplicationIsFoundByItsProcess) {
  const auto found = registry.registrationsOf(getpid(), 2s);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].root, (Ref{ScriptedBus::kApplicationName, kRootPath}));
  EXPECT_TRUE(registry.registrationsOf(getppid(), 2s).empty());
}

TEST_F(RegistryTest, AToolkitIsAskedForOnce) {
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::gtk3);
  const int calls = scripted.calls()["Get"];
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::gtk3);
  EXPECT_EQ(scripted.calls()["Get"], calls);
}

TEST_F(RegistryTest, AToolkitWithoutANameIsAskedForAgainAfterASecond) {
  isNamed = false;
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::other);
  isNamed = true;
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::other);
  std::this_thread::sleep_for(1s);
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::gtk3);
}

TEST_F(RegistryTest, TheToolkitOfWhoDoesNotAnswerIsNotKnown) {
  scripted.behave([](const auto&, const auto&) { return Conduct::ignore; });
  EXPECT_FALSE(registry.toolkitOf(ScriptedBus::kApplicationName, 50ms).has_value());
  EXPECT_FALSE(registry.knownToolkitOf(ScriptedBus::kApplicationName).has_value());
}

TEST_F(RegistryTest, Gtk3IsReadPastTheBus) {
  static_cast<void>(registry.registrationsOf(getpid(), 2s));
  Bus& channel = registry.channelTo(ScriptedBus::kApplicationName, Toolkit::gtk3, 2s);
  EXPECT_TRUE(channel.isPeer());
  Batch batch(channel);
  bool isOk = false;
  batch.property({"", kRootPath}, kApplication, "ToolkitName",
                 [&isOk](Reply reply) { isOk = reply.ok; });
  EXPECT_EQ(batch.run({clock.now() + 2s, 2s}), BatchOutcome::complete);
  EXPECT_TRUE(isOk);
}

TEST_F(RegistryTest, OtherToolkitsAreReadThroughTheBus) {
  static_cast<void>(registry.registrationsOf(getpid(), 2s));
  EXPECT_FALSE(registry.channelTo(ScriptedBus::kApplicationName, Toolkit::qt, 2s).isPeer());
  offers = false;
  EXPECT_FALSE(registry.channelTo(ScriptedBus::kApplicationName, Toolkit::gtk3, 2s).isPeer());
}

TEST_F(RegistryOfAnotherProcess, AnAddressWhereAnotherProcessListensIsNotUsed) {
  ASSERT_EQ(registry.registrationsOf(getppid(), 2s).size(), 1U);
  EXPECT_FALSE(registry.channelTo(ScriptedBus::kApplicationName, Toolkit::gtk3, 2s).isPeer());
}

TEST_F(RegistryTest, EverythingIsAskedAnewOfANewBus) {
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::gtk3);
  bus.drop();
  isNamed = false;
  EXPECT_EQ(registry.toolkitOf(ScriptedBus::kApplicationName, 2s), Toolkit::other);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
