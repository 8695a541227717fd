// Every error code of the Accessibility API, from every call that can give one.
#include <array>
#include <chrono>

#include "platform/mac/mac_accessibility.h"
#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::Node;
using namespace std::chrono_literals;

class Clockless final : public Clock {
 public:
  Instant now() override { return Instant{}; }
  WallTime wall() override { return {}; }
  void sleep(Duration /*duration*/) override {}
  void runLoopFor(Duration /*slice*/) override {}
  void background(std::function<void()> body) override { body(); }
};

class AccessibilityErrors : public MacTest, public testing::WithParamInterface<AXError> {
 protected:
  Node& node() { return applications.node(kPid, 1); }

  Clockless clock;
  MacAccessibility ax;
  Element element = ax.application(kPid, 300ms);
};

TEST_P(AccessibilityErrors, LeaveNoAttribute) {
  node().attributes["AXTitle"] = {GetParam(), {}};
  EXPECT_EQ(ax.attribute(element, "AXTitle"), std::nullopt);
}

TEST_P(AccessibilityErrors, LeaveNoBatch) {
  node().attributes["AXTitle"] = {kAXErrorSuccess, standin::text("Save")};
  node().batch = {GetParam(), standin::array({standin::text("Save")})};
  const std::array<std::string_view, 1> names{"AXTitle"};
  EXPECT_TRUE(ax.attributes(element, names).empty());
}

TEST_P(AccessibilityErrors, EmptyTheirOwnSlotOfABatchAlone) {
  node().attributes["AXTitle"] = {GetParam(), {}};
  node().attributes["AXHelp"] = {kAXErrorSuccess, standin::text("Saves")};
  const std::array<std::string_view, 2> names{"AXTitle", "AXHelp"};
  const auto values = ax.attributes(element, names);
  ASSERT_EQ(values.size(), 2u);
  EXPECT_FALSE(values[0]);
  EXPECT_TRUE(values[1]);
}

TEST_P(AccessibilityErrors, LeaveNoActionNames) {
  node().actionNames = {GetParam(), standin::array({standin::text("AXPress")})};
  EXPECT_TRUE(ax.actionNames(element).empty());
}

TEST_P(AccessibilityErrors, SayThatAnActionWasNotTaken) {
  node().actions["AXPress"] = GetParam();
  EXPECT_EQ(ax.perform(element, "AXPress"),
            GetParam() == kAXErrorCannotComplete ? Performed::pending : Performed::refused);
}

TEST_P(AccessibilityErrors, SayThatAValueWasNotTaken) {
  node().takes["AXValue"] = GetParam();
  EXPECT_FALSE(ax.set(element, "AXValue", {true}));
}

TEST_P(AccessibilityErrors, SayThatAnAttributeIsNotSettable) {
  node().settable["AXValue"] = {GetParam(), standin::boolean(true)};
  EXPECT_FALSE(ax.isSettable(element, "AXValue"));
}

TEST_P(AccessibilityErrors, FailAHitTest) {
  applications.hitError = GetParam();
  applications.hit = applications.element(kPid, 3);
  EXPECT_EQ(ax.elementAt({1, 2}), std::nullopt);
}

TEST_P(AccessibilityErrors, LeaveNoProcess) {
  node().pidError = GetParam();
  EXPECT_EQ(ax.pidOf(element), std::nullopt);
}

TEST_P(AccessibilityErrors, LeaveNoObserver) {
  applications.observerError = GetParam();
  EXPECT_EQ(ax.observe(kPid, [](std::string_view) {}), nullptr);
}

TEST_P(AccessibilityErrors, RefuseASubscriptionUnlessItIsThereAlready) {
  const auto observer = ax.observe(kPid, [](std::string_view) {});
  node().subscriptionErrors["AXCreated"] = GetParam();
  EXPECT_EQ(observer->add(element, "AXCreated"),
            GetParam() == kAXErrorNotificationAlreadyRegistered);
}

INSTANTIATE_TEST_SUITE_P(Each, AccessibilityErrors,
                         testing::Values(kAXErrorFailure, kAXErrorIllegalArgument,
                                         kAXErrorInvalidUIElement, kAXErrorInvalidUIElementObserver,
                                         kAXErrorCannotComplete, kAXErrorAttributeUnsupported,
                                         kAXErrorActionUnsupported, kAXErrorNotificationUnsupported,
                                         kAXErrorNotImplemented,
                                         kAXErrorNotificationAlreadyRegistered,
                                         kAXErrorNotificationNotRegistered, kAXErrorAPIDisabled,
                                         kAXErrorNoValue, kAXErrorParameterizedAttributeUnsupported,
                                         kAXErrorNotEnoughPrecision),
                         [](const auto& each) { return "Code" + std::to_string(-each.param); });

}  // namespace
}  // namespace tarqo::mac
