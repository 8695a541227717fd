// Whether a press through accessibility was answered, as the result of a click shows it.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

class PressAnswer : public ConnectedScene {
 protected:
  void SetUp() override {
    ConnectedScene::SetUp();
    desktop.run(1s);
  }

  Json clickSave() {
    const std::string id = idOf("Save");
    const Instant start = desktop.clock().now();
    Json clicked = result("click", {{"nodeId", id}});
    took = desktop.clock().now() - start;
    return clicked;
  }

  void expectAnswered() {
    const Json clicked = clickSave();
    EXPECT_EQ(clicked["method"], "accessibility");
    EXPECT_FALSE(clicked.contains("fallback"));
    EXPECT_EQ(save.presses(), 1);
    EXPECT_EQ(save.clicks(), 0);
  }

  void expectUnanswered() {
    const Json clicked = clickSave();
    EXPECT_EQ(clicked["method"], "pointer");
    EXPECT_EQ(clicked["fallback"], "press_unanswered");
    EXPECT_EQ(save.presses(), 1);
    EXPECT_EQ(save.clicks(), 1);
  }

  static constexpr Duration kActivation = 120ms;
  Duration took{};
};

TEST_F(PressAnswer, IsAnyWatchedNotification) {
  save.action("AXPress").announces("AXValueChanged", 5ms);
  expectAnswered();
  EXPECT_EQ(took, kActivation + 20ms) << "looked for every 20 ms";
}

TEST_F(PressAnswer, IsNoFocusAndNoActivation) {
  save.action("AXPress")
      .announces("AXFocusedUIElementChanged", 5ms)
      .announces("AXApplicationActivated", 10ms);
  expectUnanswered();
}

TEST_F(PressAnswer, IsAnotherNotificationBesideThose) {
  save.action("AXPress")
      .announces("AXFocusedUIElementChanged", 5ms)
      .announces("AXWindowCreated", 10ms);
  expectAnswered();
}

TEST_F(PressAnswer, IsAnAcknowledgementWhereNothingElseIsAnnounced) {
  notes.facts.acknowledgesActions = true;
  expectAnswered();
}

TEST_F(PressAnswer, MayTake350Milliseconds) {
  save.action("AXPress").announces("AXValueChanged", 350ms);
  expectAnswered();
  EXPECT_EQ(took, kActivation + 360ms) << "18 slices";
}

TEST_F(PressAnswer, MayTakeNoLongerThanTheLastSlice) {
  save.action("AXPress").announces("AXValueChanged", 361ms);
  expectUnanswered();
}

TEST_F(PressAnswer, CountsFromThePressAndNotFromItsReturn) {
  save.action("AXPress").takes(250ms).announces("AXValueChanged", 150ms);
  // The press returns after 250 ms; 100 ms of the window are left, and 150 more are needed.
  expectUnanswered();
}

TEST_F(PressAnswer, IsNothingThatWasHeardBefore) {
  window.announce("AXValueChanged", 0ms);
  desktop.run(1ms);
  expectUnanswered();
}

TEST_F(PressAnswer, IsTakenForGrantedWhenNobodyListens) {
  notes.facts.refusesObservers = true;
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  expectAnswered();
  EXPECT_EQ(took, kActivation) << "there is nothing to wait for";
}

TEST_F(PressAnswer, IsListenedForAnewBeforeThePress) {
  notes.facts.refusesObservers = true;
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  notes.facts.refusesObservers = false;
  expectUnanswered();
}

}  // namespace
}  // namespace tarqo
