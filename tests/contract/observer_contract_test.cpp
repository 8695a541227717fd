// accessibility.h: observers

#include <algorithm>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

class ObserverContract : public TargetContract {
 protected:
  using Heard = Arrivals<std::string>;

  [[nodiscard]] std::unique_ptr<Observer> listen(const std::shared_ptr<Heard>& heard) {
    return ax.observe(target->pid(),
                      [heard](std::string_view name) { heard->add(std::string(name)); });
  }

  // Whatever a toolkit tells of a press: the text that it changes, or that it took it.
  static void subscribe(Observer& observer, const Element& element) {
    for (const char* name : {"AXValueChanged", "AXTitleChanged", "AXLayoutChanged"}) {
      observer.add(element, name);
    }
  }

  void press() {
    EXPECT_NE(ax.perform(control("AXButton", "Save"), "AXPress"), Performed::refused);
  }

  const std::shared_ptr<Heard> journal = std::make_shared<Heard>();
};

TEST_F(ObserverContract, HearsASignOfLifeAfterAPress) {
  const auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  subscribe(*observer, application());

  press();

  EXPECT_TRUE(waitUntil([&] { return !journal->all().empty(); }, 2s));
}

TEST_F(ObserverContract, HearsTheFocusMove) {
  const auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  EXPECT_TRUE(observer->add(application(), "AXFocusedUIElementChanged"));

  EXPECT_TRUE(ax.set(control("AXTextField", "Name"), "AXFocused", Value{true}));

  EXPECT_TRUE(waitUntil([&] {
    const std::vector<std::string> names = journal->all();
    return std::count(names.begin(), names.end(), "AXFocusedUIElementChanged") > 0;
  }));
}

TEST_F(ObserverContract, HearsWhileTheWorkerSleeps) {
  const auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  subscribe(*observer, application());

  press();
  const Instant deadline = clock.now() + 2s;
  while (journal->all().empty() && clock.now() < deadline) {
    clock.sleep(20ms);
  }

  EXPECT_FALSE(journal->all().empty());
}

TEST_F(ObserverContract, HearsOnlyNamesItAskedFor) {
  const auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  EXPECT_TRUE(observer->add(application(), "AXValueChanged"));

  EXPECT_TRUE(ax.set(control("AXTextField", "Name"), "AXFocused", Value{true}));
  press();
  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; }));
  clock.runLoopFor(300ms);

  for (const std::string& name : journal->all()) {
    EXPECT_EQ(name, "AXValueChanged");
  }
}

TEST_F(ObserverContract, HearsNothingOnceItEnded) {
  auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  subscribe(*observer, application());
  press();
  EXPECT_TRUE(waitUntil([&] { return !journal->all().empty(); }, 2s));

  observer.reset();
  const std::size_t before = journal->all().size();
  press();
  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 2"; }));
  clock.runLoopFor(300ms);

  EXPECT_EQ(journal->all().size(), before);
}

TEST_F(ObserverContract, DoesNotHearAnotherProcess) {
  const auto other = backend->startTarget("Other", {300, 200, 640, 480});
  const auto observer = ax.observe(
      other->pid(), [heard = journal](std::string_view name) { heard->add(std::string(name)); });
  ASSERT_NE(observer, nullptr);
  subscribe(*observer, ax.application(other->pid(), kMessagingTimeout));
  clock.runLoopFor(500ms);
  const std::size_t before = journal->all().size();

  press();
  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; }));
  clock.runLoopFor(300ms);

  EXPECT_EQ(journal->all().size(), before);
}

TEST_F(ObserverContract, TakesTheSameSubscriptionTwice) {
  const auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  EXPECT_TRUE(observer->add(application(), "AXValueChanged"));
  EXPECT_TRUE(observer->add(application(), "AXValueChanged"));
  EXPECT_TRUE(observer->add(window(), "AXValueChanged"));
}

TEST_F(ObserverContract, SurvivesTheEndOfItsProcess) {
  const auto observer = listen(journal);
  ASSERT_NE(observer, nullptr);
  subscribe(*observer, application());
  const Element app = application();
  target->end();
  clock.runLoopFor(300ms);

  const Instant begin = clock.now();
  observer->add(app, "AXValueChanged");
  observer->add(app, "AXTitleChanged");
  EXPECT_LT(clock.now() - begin, 2 * kMessagingTimeout + 200ms);
}

}  // namespace
}  // namespace tarqo::contract
