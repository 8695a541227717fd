// What becomes of calls that are sent together.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "platform/linux/atspi/wire/codec.h"
#include "platform/linux/linux_clock.h"
#include "tests/platform/linux/atspi/scripted_bus.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

class BatchTest : public testing::Test {
 protected:
  static Ref object(const std::string& path) { return {ScriptedBus::kApplicationName, path}; }

  BatchOutcome run(Batch& batch, Duration whole, Duration perAnswer) {
    return batch.run({clock.now() + whole, perAnswer});
  }

  /// Calls that many objects, and counts the answers that are roles.
  void callAll(Batch& batch, int count) {
    for (int i = 0; i < count; ++i) {
      batch.call(object("/o/" + std::to_string(i)), kAccessible, "GetRole", [this](Reply reply) {
        ++answers;
        roles += reply.ok && readNumber(reply.message) == 43U ? 1 : 0;
      });
    }
  }

  ScriptedBus scripted{
      getpid(), [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "u", 43) + 1; }};
  LinuxClock clock;
  Bus bus{clock};
  int answers = 0;
  int roles = 0;
};

TEST_F(BatchTest, EveryCallIsAnsweredOfMoreThanAreSentAtOnce) {
  Batch batch(bus);
  callAll(batch, 1000);
  EXPECT_EQ(run(batch, 10s, 5s), BatchOutcome::complete);
  EXPECT_EQ(roles, 1000);
}

TEST_F(BatchTest, AnErrorIsAnAnswer) {
  scripted.behave([](const auto&, const auto&) { return Conduct::refuse; });
  Batch batch(bus);
  callAll(batch, 3);
  EXPECT_EQ(run(batch, 10s, 5s), BatchOutcome::complete);
  EXPECT_EQ(answers, 3);
  EXPECT_EQ(roles, 0);
}

TEST_F(BatchTest, AMissingAnswerIsAwaitedAsLongAsOneMayTake) {
  scripted.behave([](const auto&, const std::string& path) {
    return path == "/o/1" ? Conduct::ignore : Conduct::answer;
  });
  Batch batch(bus);
  callAll(batch, 3);
  const Instant begun = clock.now();
  EXPECT_EQ(run(batch, 10s, 50ms), BatchOutcome::timedOut);
  EXPECT_GE(clock.now() - begun, 50ms);
  EXPECT_LT(clock.now() - begun, 5s);
  EXPECT_EQ(roles, 2);
}

TEST_F(BatchTest, AnswersThatComeInTimeDoNotPutOffTheEnd) {
  scripted.behave([](const auto&, const auto&) { return Conduct::answerLate; });
  Batch batch(bus);
  callAll(batch, 200);
  EXPECT_EQ(run(batch, 100ms, 5s), BatchOutcome::timedOut);
  EXPECT_GT(roles, 0);
  EXPECT_LT(roles, 200);
}

TEST_F(BatchTest, ALostConnectionAnswersNothing) {
  scripted.behave([](const auto&, const std::string& path) {
    return path == "/o/3" ? Conduct::breakOff : Conduct::answer;
  });
  Batch batch(bus);
  callAll(batch, 6);
  EXPECT_EQ(run(batch, 10s, 5s), BatchOutcome::lost);
  EXPECT_LE(answers, 3);
  EXPECT_EQ(roles, answers);
}

TEST_F(BatchTest, AfterALostConnectionANewOneIsMade) {
  scripted.behave([](const auto&, const auto&) { return Conduct::breakOff; });
  Batch lost(bus);
  callAll(lost, 1);
  EXPECT_EQ(run(lost, 10s, 5s), BatchOutcome::lost);
  const int generation = bus.generation();
  scripted.behave([](const auto&, const auto&) { return Conduct::answer; });
  Batch batch(bus);
  callAll(batch, 1);
  EXPECT_EQ(run(batch, 10s, 5s), BatchOutcome::complete);
  EXPECT_EQ(roles, 1);
  EXPECT_EQ(bus.generation(), generation + 1);
}

TEST_F(BatchTest, AHandlerMayAddCallsAndStop) {
  Batch batch(bus);
  batch.call(object("/o"), kAccessible, "GetRole", [&](Reply) {
    batch.property(object("/o"), kAccessible, "Name", [&](Reply) { batch.stop(); });
    callAll(batch, 1);
  });
  EXPECT_EQ(run(batch, 10s, 5s), BatchOutcome::complete);
  EXPECT_EQ(scripted.calls()["Get"], 1);
}

TEST(BusWithout, AnAccessibilityBusFailsSoonAndDoesNotThrow) {
  const EnvironmentVariable nowhere("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
  const EnvironmentVariable none("AT_SPI_BUS_ADDRESS", "");
  LinuxClock clock;
  Bus bus(clock);
  const Instant begun = clock.now();
  EXPECT_EQ(bus.connection(), nullptr);
  Batch batch(bus);
  bool isOk = true;
  batch.call({":1.7", "/o"}, kAccessible, "GetRole", [&isOk](Reply reply) { isOk = reply.ok; });
  EXPECT_FALSE(isOk);
  EXPECT_EQ(batch.run({clock.now() + 5s, 5s}), BatchOutcome::lost);
  EXPECT_LT(clock.now() - begun, 2s);
}

TEST(BusAddress, OfTheEnvironmentServesWithoutASessionBus) {
  ScriptedBus scripted(getpid(), [](auto*) { return 0; });
  const EnvironmentVariable nowhere("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
  const EnvironmentVariable address("AT_SPI_BUS_ADDRESS", scripted.address());
  LinuxClock clock;
  Bus bus(clock);
  EXPECT_NE(bus.connection(), nullptr);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
