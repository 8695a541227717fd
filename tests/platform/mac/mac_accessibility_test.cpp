#include "platform/mac/mac_accessibility.h"

#include <array>
#include <chrono>

#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::Answer;
using standin::Node;
using standin::Owned;
using namespace std::chrono_literals;

constexpr int kButton = 3;
using Names = std::vector<std::string>;

class StoppedClock final : public Clock {
 public:
  Instant time{1h};
  Instant now() override { return time; }
  WallTime wall() override { return {}; }
  void sleep(Duration duration) override { time += duration; }
  void runLoopFor(Duration slice) override { time += slice; }
  void background(std::function<void()> body) override { body(); }
};

class AccessibilityTest : public MacTest {
 protected:
  AccessibilityTest() {
    node(1).attributes["AXMain"] = {kAXErrorSuccess, applications.element(kPid, kButton)};
  }
  Node& node(int number) { return applications.node(kPid, number); }
  Element application() { return ax.application(kPid, 300ms); }
  Element button() { return *ax.attribute(application(), "AXMain")->as<Element>(); }
  float lastSeconds() { return applications.calls.back().seconds; }

  StoppedClock clock;
  MacAccessibility ax;
};

TEST_F(AccessibilityTest, ReadsAnAttribute) {
  node(kButton).attributes["AXTitle"] = {kAXErrorSuccess, standin::text("Save")};
  EXPECT_EQ(*ax.attribute(button(), "AXTitle")->as<std::string>(), "Save");
  EXPECT_EQ(applications.asked(), (Names{"read AXMain", "read AXTitle"}));
}

TEST_F(AccessibilityTest, FindsNoValueBehindASuccessWithoutOne) {
  node(kButton).attributes["AXTitle"] = {kAXErrorSuccess, {}};
  EXPECT_EQ(ax.attribute(button(), "AXTitle"), std::nullopt);
}

TEST_F(AccessibilityTest, ReleasesAValueThatCameWithAnError) {
  node(kButton).attributes["AXTitle"] = {kAXErrorFailure, standin::text("Save")};
  EXPECT_EQ(ax.attribute(button(), "AXTitle"), std::nullopt);
}

TEST_F(AccessibilityTest, AsksNothingUnderANameThatIsNotUtf8) {
  EXPECT_EQ(ax.attribute(application(), "\xff"), std::nullopt);
  EXPECT_EQ(ax.perform(application(), "\xff"), Performed::refused);
  EXPECT_FALSE(ax.set(application(), "\xff", {true}));
  EXPECT_FALSE(ax.isSettable(application(), "\xff"));
  const std::array<std::string_view, 2> names{"AXRole", "\xff"};
  EXPECT_TRUE(ax.attributes(application(), names).empty());
  EXPECT_EQ(applications.asked(), Names{});
}

TEST_F(AccessibilityTest, ReadsManyAttributesInOneRoundTrip) {
  const Element element = button();
  applications.calls.clear();
  node(kButton).attributes["AXTitle"] = {kAXErrorSuccess, standin::text("Save")};
  node(kButton).attributes["AXHelp"] = {kAXErrorNoValue, {}};
  node(kButton).attributes["AXEnabled"] = {kAXErrorSuccess, standin::boolean(true)};
  node(kButton).attributes["AXValue"] = {kAXErrorSuccess, standin::null()};
  const std::array<std::string_view, 5> names{"AXTitle", "AXHelp", "AXNone", "AXEnabled",
                                              "AXValue"};
  const auto values = ax.attributes(element, names);
  ASSERT_EQ(values.size(), 5u);
  EXPECT_EQ(*values[0]->as<std::string>(), "Save");
  EXPECT_EQ(values[1], std::nullopt);
  EXPECT_EQ(values[2], std::nullopt);
  EXPECT_EQ(*values[3]->as<bool>(), true);
  EXPECT_EQ(values[4], std::nullopt);
  EXPECT_EQ(applications.asked(), Names{"read many: AXTitle AXHelp AXNone AXEnabled AXValue"});
}

TEST_F(AccessibilityTest, GivesOneSlotForEachNameHoweverManyCameBack) {
  const std::array<std::string_view, 2> names{"AXTitle", "AXRole"};
  const Owned one = standin::text("a");
  const Element element = button();
  node(kButton).batch = {kAXErrorSuccess, standin::array({one})};
  auto values = ax.attributes(element, names);
  ASSERT_EQ(values.size(), 2u);
  EXPECT_TRUE(values[0]);
  EXPECT_FALSE(values[1]);
  node(kButton).batch = {kAXErrorSuccess, standin::array({one, one, one})};
  EXPECT_EQ(ax.attributes(element, names).size(), 2u);
}

TEST_F(AccessibilityTest, TakesNoBatchThatIsNoList) {
  const std::array<std::string_view, 1> names{"AXTitle"};
  const Element element = button();
  for (const Owned& answer : {standin::text("a"), Owned()}) {
    node(kButton).batch = {kAXErrorSuccess, answer};
    EXPECT_TRUE(ax.attributes(element, names).empty());
  }
}

TEST_F(AccessibilityTest, ReadsActionNamesInTheirOrder) {
  node(kButton).actionNames = {
      kAXErrorSuccess, standin::array({standin::text("AXShowMenu"), standin::text("AXPress")})};
  EXPECT_EQ(ax.actionNames(button()), (Names{"AXShowMenu", "AXPress"}));
}

TEST_F(AccessibilityTest, TakesNoActionNamesButAListOfTexts) {
  const Element element = button();
  const Owned name = standin::text("AXPress");
  for (const Owned& answer : {Owned(), name, standin::array({name, standin::integer(1)})}) {
    node(kButton).actionNames = {kAXErrorSuccess, answer};
    EXPECT_EQ(ax.actionNames(element), Names{});
  }
}

TEST_F(AccessibilityTest, PerformsAnAction) {
  node(kButton).actions["AXPress"] = kAXErrorSuccess;
  EXPECT_EQ(ax.perform(button(), "AXPress"), Performed::taken);
  EXPECT_EQ(applications.asked().back(), "perform AXPress");
}

TEST_F(AccessibilityTest, TakesAnActionThatWasNotAnsweredForPendingWhateverElseIsAnswered) {
  node(kButton).actions["AXPress"] = kAXErrorCannotComplete;
  node(kButton).attributes["AXRole"] = {kAXErrorSuccess, standin::text("AXButton")};
  EXPECT_EQ(ax.perform(button(), "AXPress"), Performed::pending);
  EXPECT_EQ(applications.asked(), (Names{"read AXMain", "perform AXPress"}));
}

TEST_F(AccessibilityTest, FearsNoKeysWhileAnActionIsPending) {
  node(kButton).actions["AXPress"] = kAXErrorCannotComplete;
  EXPECT_EQ(ax.perform(button(), "AXPress"), Performed::pending);
  EXPECT_FALSE(ax.isEndangeredByKeys(kPid));
}

TEST_F(AccessibilityTest, SetsAnAttribute) {
  node(kButton).takes["AXValue"] = kAXErrorSuccess;
  EXPECT_TRUE(ax.set(button(), "AXValue", {std::string("Notes")}));
  EXPECT_EQ(standin::describe(node(kButton).taken["AXValue"].get()), "text Notes");
}

TEST_F(AccessibilityTest, SendsNoValueThatCannotBeSent) {
  node(kButton).takes["AXValue"] = kAXErrorSuccess;
  EXPECT_FALSE(ax.set(button(), "AXValue", {OtherValue{}}));
  EXPECT_TRUE(node(kButton).taken.empty());
}

TEST_F(AccessibilityTest, TellsWhatCanBeSet) {
  node(kButton).settable["AXValue"] = {kAXErrorSuccess, standin::boolean(true)};
  node(kButton).settable["AXTitle"] = {kAXErrorSuccess, standin::boolean(false)};
  node(kButton).settable["AXHelp"] = {kAXErrorFailure, standin::boolean(true)};
  EXPECT_TRUE(ax.isSettable(button(), "AXValue"));
  EXPECT_FALSE(ax.isSettable(button(), "AXTitle"));
  EXPECT_FALSE(ax.isSettable(button(), "AXHelp"));
  EXPECT_FALSE(ax.isSettable(button(), "AXRole"));
}

TEST_F(AccessibilityTest, FindsTheElementAtAPointOfTheScreen) {
  applications.hit = applications.element(kPid, kButton);
  const auto found = ax.elementAt({100.25, -20});
  ASSERT_TRUE(found);
  EXPECT_EQ(*found, button());
  EXPECT_EQ(applications.hitPoint, std::pair(100.25f, -20.0f));
}

TEST_F(AccessibilityTest, FindsNoElementBehindASuccessWithoutOne) {
  EXPECT_EQ(ax.elementAt({1, 2}), std::nullopt);
}

TEST_F(AccessibilityTest, KnowsTheProcessOfAnElementWithoutAsking) {
  const Element element = button();
  const std::size_t calls = applications.calls.size();
  EXPECT_EQ(ax.pidOf(element), kPid);
  node(kButton).pidError = kAXErrorInvalidUIElement;
  EXPECT_EQ(ax.pidOf(element), std::nullopt);
  EXPECT_EQ(applications.calls.size(), calls);
}

TEST_F(AccessibilityTest, TellsElementsApart) {
  EXPECT_EQ(button(), button());
  EXPECT_EQ(application(), application());
  EXPECT_NE(button(), application());
  EXPECT_NE(application(), ax.application(kPid + 1, 300ms));
}

TEST_F(AccessibilityTest, ReadsNothingAhead) {
  EXPECT_EQ(ax.readTree(application(), {Instant{}, 100}), nullptr);
  EXPECT_EQ(applications.asked(), Names{});
}

class MessagingTimeoutTest : public AccessibilityTest {};

TEST_F(MessagingTimeoutTest, HoldsForTheApplicationElement) {
  (void)ax.attribute(application(), "AXTitle");
  EXPECT_FLOAT_EQ(lastSeconds(), 0.3f);
}

TEST_F(MessagingTimeoutTest, IsGivenToEveryReferenceOnTheWayDown) {
  node(kButton).attributes["AXChildren"] = {kAXErrorSuccess,
                                            standin::array({applications.element(kPid, 4)})};
  const Element child = *ax.attribute(button(), "AXChildren")->as<Values>()->at(0).as<Element>();
  EXPECT_FLOAT_EQ(lastSeconds(), 0.3f);
  (void)ax.actionNames(child);
  EXPECT_FLOAT_EQ(lastSeconds(), 0.3f);
}

TEST_F(MessagingTimeoutTest, IsGivenToReferencesOutOfABatch) {
  const std::array<std::string_view, 1> names{"AXMain"};
  const auto values = ax.attributes(application(), names);
  (void)ax.perform(*values.at(0)->as<Element>(), "AXPress");
  EXPECT_FLOAT_EQ(lastSeconds(), 0.3f);
}

TEST_F(MessagingTimeoutTest, BelongsToOneReferenceAndNotToItsEquals) {
  const Element patient = ax.application(kPid, 2s);
  const Element brief = ax.application(kPid, 100ms);
  ASSERT_EQ(patient, brief);
  (void)ax.attribute(patient, "AXTitle");
  EXPECT_FLOAT_EQ(lastSeconds(), 2.0f);
  (void)ax.attribute(brief, "AXTitle");
  EXPECT_FLOAT_EQ(lastSeconds(), 0.1f);
}

TEST_F(MessagingTimeoutTest, HoldsForHitTestsAndForWhatTheyFind) {
  (void)application();
  applications.hit = applications.element(kPid + 1, kButton);
  const auto found = ax.elementAt({1, 2});
  EXPECT_FLOAT_EQ(lastSeconds(), 0.3f);
  (void)ax.attribute(*found, "AXRole");
  EXPECT_FLOAT_EQ(lastSeconds(), 0.3f);
}

TEST_F(MessagingTimeoutTest, BoundsAHitTestBeforeThereIsAnApplication) {
  (void)ax.elementAt({1, 2});
  EXPECT_FLOAT_EQ(lastSeconds(), 0.5f);
}

TEST_F(MessagingTimeoutTest, IsNeverTheSystemsOwnLimit) {
  for (const Duration none : {Duration(0s), Duration(-1s)}) {
    (void)ax.attribute(ax.application(kPid, none), "AXTitle");
    EXPECT_FLOAT_EQ(lastSeconds(), 0.001f);
  }
}

}  // namespace
}  // namespace tarqo::mac
