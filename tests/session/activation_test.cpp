// Bringing the target to the front.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using sim::Lines;

class Activation : public ConnectedScene {
 protected:
  void SetUp() override {
    ConnectedScene::SetUp();
    other.window({1000, 80, 300, 300}, "Other");
    // A press is answered within the first slice of waiting for it.
    save.action("AXPress").announces("AXValueChanged", 1ms);
  }

  /// Milliseconds that a click takes until it presses.
  double clickTakes() {
    constexpr double kAnswer = 20;
    const std::string id = idOf("Save");
    return millisecondsOf([&] { (void)result("click", {{"nodeId", id}}); }) - kAnswer;
  }

  sim::App& other = desktop.app("com.example.Other");
};

TEST_F(Activation, LetsTheSwitchFinishFor120Milliseconds) { EXPECT_EQ(clickTakes(), 120); }

TEST_F(Activation, LooksEvery30Milliseconds) {
  other.bringToFront();
  notes.facts.comesToFront = 80ms;
  EXPECT_EQ(clickTakes(), 90 + 120);
}

TEST_F(Activation, AsksInThisOrder) {
  other.bringToFront();
  notes.facts.hidden = true;
  const std::string id = idOf("Save");
  desktop.eventLog().clear();
  (void)result("click", {{"nodeId", id}});
  EXPECT_EQ(desktop.eventLog().lines(),
            (Lines{"unhide com.example.Notes", "set AXFrontmost AXApplication \"Notes\" = true",
                   "activate com.example.Notes", "perform AXRaise AXWindow \"Notes\"",
                   "perform AXPress AXButton \"Save\""}));
}

TEST_F(Activation, FailsWhenTheTargetStaysBehindFor1500Milliseconds) {
  other.bringToFront();
  notes.facts.comesToFront.reset();
  const std::string id = idOf("Save");
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(failure("click", {{"nodeId", id}}),
                        "focus_failed: Could not bring the target application to the front");
            }),
            1500);
  EXPECT_EQ(save.presses(), 0);
}

TEST_F(Activation, SucceedsJustBeforeItsLimit) {
  other.bringToFront();
  notes.facts.comesToFront = 1480ms;
  EXPECT_EQ(clickTakes(), 1500 + 120);
}

TEST_F(Activation, FailureUsesUpTheNodes) {
  other.bringToFront();
  notes.facts.comesToFront.reset();
  const std::string id = idOf("Save");
  (void)error("click", {{"nodeId", id}});
  EXPECT_EQ(error("click", {{"nodeId", id}})["code"], "stale_snapshot");
}

TEST_F(Activation, DoesNotMindThatTheWindowCannotBeRaised) {
  window.action("AXRaise").refused();
  EXPECT_EQ(clickTakes(), 120);
  EXPECT_EQ(save.presses(), 1);
}

}  // namespace
}  // namespace tarqo
