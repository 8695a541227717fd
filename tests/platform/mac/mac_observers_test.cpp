#include "platform/mac/mac_observers.h"

#include <atomic>
#include <chrono>
#include <semaphore>
#include <stdexcept>
#include <thread>

#include "platform/mac/mac_element.h"
#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

constexpr int kApplication = 1;
constexpr int kWindow = 2;
using Heard = std::vector<std::string>;

class ObserversTest : public MacTest {
 protected:
  Element element(int number, Pid pid = kPid) {
    return makeElement(retain(static_cast<AXUIElementRef>(applications.element(pid, number).get())),
                       std::chrono::milliseconds(300));
  }
  std::unique_ptr<Observer> listen(Pid pid = kPid) {
    return observers.observe(pid, [this](std::string_view name) { heard.emplace_back(name); });
  }

  Heard heard;
  MacObservers observers;
};

TEST_F(ObserversTest, HearWhatTheySubscribedTo) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  EXPECT_EQ(applications.notify(kPid, kWindow, "AXCreated"), 1);
  EXPECT_EQ(applications.notify(kPid, kWindow, "AXMoved"), 0);
  EXPECT_EQ(heard, Heard{"AXCreated"});
}

TEST_F(ObserversTest, HearAWholeApplicationThroughItsElement) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(element(kApplication), "AXCreated"));
  applications.notify(kPid, kWindow, "AXCreated");
  EXPECT_EQ(heard, Heard{"AXCreated"});
}

TEST_F(ObserversTest, TakeARepeatedSubscriptionForOne) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  applications.notify(kPid, kWindow, "AXCreated");
  EXPECT_EQ(heard, Heard{"AXCreated"});
}

TEST_F(ObserversTest, WaitForASubscriptionNoLongerThanTheElementMay) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  EXPECT_FLOAT_EQ(applications.calls.back().seconds, 0.3f);
}

TEST_F(ObserversTest, SubscribeToNothingThatHasNoName) {
  const auto observer = listen();
  EXPECT_FALSE(observer->add(element(kWindow), "\xff"));
}

TEST_F(ObserversTest, AreNoneWhereTheSystemMakesNone) {
  applications.observerIsNull = true;
  EXPECT_EQ(listen(), nullptr);
  EXPECT_EQ(applications.sourcesOnTheLoop(), 0u);
}

TEST_F(ObserversTest, AreHeardOnTheMainLoopUntilTheyEnd) {
  auto observer = listen();
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  EXPECT_EQ(applications.sourcesOnTheLoop(), 1u);
  observer.reset();
  EXPECT_EQ(applications.sourcesOnTheLoop(), 0u);
  EXPECT_EQ(applications.notify(kPid, kWindow, "AXCreated"), 0);
  EXPECT_EQ(heard, Heard{});
}

TEST_F(ObserversTest, EndWithoutARoundTrip) {
  auto observer = listen();
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  const std::size_t calls = applications.calls.size();
  observer.reset();
  EXPECT_EQ(applications.calls.size(), calls);
}

TEST_F(ObserversTest, HearNothingThatWasOnItsWayWhenTheyEnded) {
  auto observer = listen();
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  applications.beforeDelivery = [&] { observer.reset(); };
  EXPECT_EQ(applications.notify(kPid, kWindow, "AXCreated"), 1);
  EXPECT_EQ(heard, Heard{});
}

TEST_F(ObserversTest, HearNothingThatWasOnItsWayToOneBeforeThem) {
  auto first = listen();
  EXPECT_TRUE(first->add(element(kWindow), "AXCreated"));
  std::unique_ptr<Observer> second;
  applications.beforeDelivery = [&] {
    first.reset();
    second = listen();
  };
  EXPECT_EQ(applications.notify(kPid, kWindow, "AXCreated"), 1);
  EXPECT_EQ(heard, Heard{});
}

TEST_F(ObserversTest, FollowOneAnother) {
  for (int i = 0; i < 3; ++i) {
    const auto observer = listen();
    EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
    applications.notify(kPid, kWindow, "AXCreated");
  }
  EXPECT_EQ(heard, (Heard{"AXCreated", "AXCreated", "AXCreated"}));
}

TEST_F(ObserversTest, HearTheirOwnProcessesSideBySide) {
  Heard others;
  const auto observer = listen();
  const auto other =
      observers.observe(kPid + 1, [&](std::string_view name) { others.emplace_back(name); });
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  EXPECT_TRUE(other->add(element(kWindow, kPid + 1), "AXMoved"));
  applications.notify(kPid + 1, kWindow, "AXMoved");
  EXPECT_EQ(heard, Heard{});
  EXPECT_EQ(others, Heard{"AXMoved"});
}

TEST_F(ObserversTest, ThrowNothingThroughTheRunLoop) {
  const auto observer =
      observers.observe(kPid, [](std::string_view) { throw std::runtime_error("full"); });
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  EXPECT_NO_THROW(applications.notify(kPid, kWindow, "AXCreated"));
}

TEST_F(ObserversTest, EndOnlyWhenTheirCallbackHas) {
  std::binary_semaphore entered(0);
  std::binary_semaphore mayReturn(0);
  std::atomic<bool> returned = false;
  auto observer = observers.observe(kPid, [&](std::string_view) {
    entered.release();
    mayReturn.acquire();
    returned = true;
  });
  EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
  std::jthread mainThread([&] { applications.notify(kPid, kWindow, "AXCreated"); });
  entered.acquire();
  bool returnedFirst = false;
  std::jthread worker([&] {
    observer.reset();
    returnedFirst = returned;
  });
  // Time enough to end too early.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  mayReturn.release();
  worker.join();
  EXPECT_TRUE(returnedFirst);
}

TEST_F(ObserversTest, MayEndWhileTheMainThreadCallsThem) {
  constexpr int kRounds = 200;
  std::atomic<bool> done = false;
  std::jthread mainThread([&] {
    while (!done) {
      applications.notify(kPid, kWindow, "AXCreated");
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    auto alive = std::make_unique<std::atomic<int>>(0);
    auto observer = observers.observe(kPid, [&count = *alive](std::string_view) { ++count; });
    EXPECT_TRUE(observer->add(element(kWindow), "AXCreated"));
    observer.reset();
    alive.reset();  // A callback after this would touch freed memory.
  }
  done = true;
}

}  // namespace
}  // namespace tarqo::mac
