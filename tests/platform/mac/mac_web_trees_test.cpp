// Which applications are asked for the trees of their web pages, and how often.

#include <array>
#include <chrono>

#include "platform/mac/mac_accessibility.h"
#include "tests/platform/mac/mac_test.h"
#include "tests/platform/mac/standin/faults.h"

namespace tarqo::mac {
namespace {

using standin::Node;
using namespace std::chrono_literals;

constexpr int kPage = 3;
constexpr std::array<std::string_view, 2> kDescription{"AXRole", "AXTitle"};
using Names = std::vector<std::string>;

class WebTreesTest : public MacTest {
 protected:
  WebTreesTest() {
    node(1).attributes["AXMain"] = {kAXErrorSuccess, applications.element(kPid, kPage)};
    node(kPage).attributes["AXRole"] = {kAXErrorSuccess, standin::text("AXWebArea")};
    node(kPage).attributes["AXChildren"] = {kAXErrorSuccess, standin::array({})};
    node(1).takes["AXManualAccessibility"] = kAXErrorSuccess;
    node(1).takes["AXEnhancedUserInterface"] = kAXErrorSuccess;
  }
  Node& node(int number) { return applications.node(kPid, number); }

  /// Describes the page and lists what is in it, as a walk over the tree does.
  void walk(int times = 1) {
    const Element page = *ax.attribute(ax.application(kPid, 300ms), "AXMain")->as<Element>();
    for (int i = 0; i < times; ++i) {
      (void)ax.attributes(page, kDescription);
      (void)ax.attribute(page, "AXChildren");
    }
  }

  /// What was set meanwhile.
  Names switches() {
    Names set;
    for (const standin::Call& call : applications.calls) {
      if (call.what.rfind("set ", 0) == 0) {
        set.push_back(call.what.substr(4) + " of " + std::to_string(call.node));
        EXPECT_FLOAT_EQ(call.seconds, 0.3F);
      }
    }
    return set;
  }

  MacAccessibility ax;
};

const Names kManualAlone{"AXManualAccessibility of 1"};
const Names kBoth{"AXManualAccessibility of 1", "AXEnhancedUserInterface of 1"};

TEST_F(WebTreesTest, AreAskedForOnceWhenAWebAreaIsEmpty) {
  walk(3);
  EXPECT_EQ(switches(), kManualAlone);
  EXPECT_TRUE(
      CFBooleanGetValue(static_cast<CFBooleanRef>(node(1).taken["AXManualAccessibility"].get())));
}

TEST_F(WebTreesTest, AreAskedForTheOlderWayWhereTheOtherIsUnknown) {
  node(1).takes.erase("AXManualAccessibility");
  walk(2);
  EXPECT_EQ(switches(), kBoth);
}

TEST_F(WebTreesTest, AreNotAskedForTwiceWhenTheAnswerIsLate) {
  node(1).takes["AXManualAccessibility"] = kAXErrorCannotComplete;
  walk(2);
  EXPECT_EQ(switches(), kManualAlone);
}

TEST_F(WebTreesTest, AreAskedForWhereAWebAreaKnowsOfNoChildren) {
  node(kPage).attributes["AXChildren"] = {kAXErrorNoValue, {}};
  walk();
  EXPECT_EQ(switches(), kManualAlone);
}

TEST_F(WebTreesTest, AreThereWhenAWebAreaHasChildren) {
  node(kPage).attributes["AXChildren"] = {kAXErrorSuccess,
                                          standin::array({applications.element(kPid, 4)})};
  walk();
  EXPECT_EQ(switches(), Names{});
}

TEST_F(WebTreesTest, AreNotMissedWhereTheApplicationDidNotAnswer) {
  node(kPage).attributes["AXChildren"] = {kAXErrorCannotComplete, {}};
  walk();
  EXPECT_EQ(switches(), Names{});
}

TEST_F(WebTreesTest, AreNotSoughtInWhatIsNoWebArea) {
  node(kPage).attributes["AXRole"] = {kAXErrorSuccess, standin::text("AXGroup")};
  walk();
  EXPECT_EQ(switches(), Names{});
}

TEST_F(WebTreesTest, OfAnotherProcessAreAskedForToo) {
  walk();
  constexpr Pid kOther = 8;
  applications.node(kOther, 1) = node(1);
  applications.node(kOther, 1).attributes["AXMain"] = {kAXErrorSuccess,
                                                       applications.element(kOther, kPage)};
  applications.node(kOther, kPage) = node(kPage);
  const Element page = *ax.attribute(ax.application(kOther, 300ms), "AXMain")->as<Element>();
  (void)ax.attributes(page, kDescription);
  (void)ax.attribute(page, "AXChildren");
  EXPECT_EQ(switches(), (Names{"AXManualAccessibility of 1", "AXManualAccessibility of 1"}));
}

TEST_F(WebTreesTest, AreLeftAloneWhereTheSystemMakesNoElement) {
  const Element page = *ax.attribute(ax.application(kPid, 300ms), "AXMain")->as<Element>();
  standin::Faults::instance().set("AXUIElementCreateApplication",
                                  {standin::Fault::Kind::fails, std::nullopt});
  (void)ax.attributes(page, kDescription);
  (void)ax.attribute(page, "AXChildren");
  standin::Faults::instance().reset();
  EXPECT_EQ(switches(), Names{});
}

}  // namespace
}  // namespace tarqo::mac
