// The hover method: the pointer comes to rest on a node, and presses nothing.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

/// The button's middle is at 240,212. Connecting ends at 120 ms of virtual time, and so does
/// bringing the application forward at 240 ms.
class Hover : public ConnectedScene {
 protected:
  static constexpr const char* kExpired =
      "stale_snapshot: This node reference expired. Take a new snapshot before hovering.";
  static constexpr const char* kChanged =
      "stale_snapshot: The captured element changed. Take a new snapshot before acting.";
  static constexpr const char* kNoFrame = "not_visible: The element no longer has a visible frame";

  Hover() { desktop.input().pointer.location = Point{180, 152}; }

  std::string hoverFailure(const std::string& id) { return failure("hover", {{"nodeId", id}}); }
  Json hover(const std::string& name) { return result("hover", {{"nodeId", idOf(name)}}); }
};

TEST_F(Hover, AnswersWithMethodNodeAndTime) {
  const std::string id = idOf("Save");
  EXPECT_EQ(result("hover", {{"nodeId", id}}),
            Json({{"method", "pointer"}, {"nodeId", id}, {"at", "2025-01-01T00:00:00.870Z"}}));
}

TEST_F(Hover, GlidesInSixStepsAndRests) {
  const std::string id = idOf("Save");
  EXPECT_EQ(millisecondsOf([&] { (void)result("hover", {{"nodeId", id}}); }), 120 + 180 + 450);
  EXPECT_EQ(desktop.postedAt(),
            (Lines{"240 move 190,162", "270 move 200,172", "300 move 210,182", "330 move 220,192",
                   "360 move 230,202", "390 move 240,212"}));
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

TEST_F(Hover, BeginsFortyPointsAboveWhenThePointerCannotBeRead) {
  desktop.input().pointer.location.reset();
  save.at({200, 188, 80, 24});  // Its middle is at 240,200.
  (void)hover("Save");
  EXPECT_EQ(desktop.posted().front(), "move 240,166.667");
  EXPECT_EQ(desktop.posted().back(), "move 240,200");
}

TEST_F(Hover, PressesNothing) {
  save.action("AXPress").announces("AXValueChanged");
  (void)hover("Save");
  EXPECT_EQ(save.activations(), 0);
  EXPECT_EQ(desktop.eventLog().count("perform AXPress"), 0U);
}

TEST_F(Hover, OverAChildOrAnotherElementIsNoFailure) {
  save.label("Save").at({210, 205, 60, 14});
  EXPECT_EQ(hover("Save").at("method"), "pointer");
  window.button("Delete").at({180, 190, 120, 40});
  EXPECT_EQ(hover("Save").at("method"), "pointer");
}

TEST_F(Hover, NeedsNoHitTest) {
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(hover("Save").at("method"), "pointer");
}

TEST_F(Hover, ThatPostsNothingIsNotReported) {
  desktop.input().refusesMouse = true;
  EXPECT_EQ(hover("Save").at("method"), "pointer");
  EXPECT_EQ(desktop.posted(), Lines{});
}

// The node.

TEST_F(Hover, NeedsAKnownNode) {
  (void)observe();
  EXPECT_EQ(hoverFailure("unknown:0"), kExpired);
  EXPECT_EQ(hoverFailure(""), kExpired);
  EXPECT_EQ(failure("hover"), kExpired);
  EXPECT_EQ(failure("hover", {{"nodeId", 7}}), kExpired);
}

TEST_F(Hover, OfANodeSixtySecondsOldIsStale) {
  std::string id = idOf("Save");
  desktop.run(60s - 1ns);
  EXPECT_EQ(result("hover", {{"nodeId", id}}).at("method"), "pointer");
  id = idOf("Save");
  desktop.run(60s);
  EXPECT_EQ(hoverFailure(id), kExpired);
}

TEST_F(Hover, SpendsEveryNodeWhateverComesOfIt) {
  std::string id = idOf("Save");
  (void)result("hover", {{"nodeId", id}});
  EXPECT_EQ(hoverFailure(id), kExpired);
  id = idOf("Save");
  EXPECT_EQ(failure("hover"), kExpired);
  EXPECT_EQ(hoverFailure(id), kExpired);
  id = idOf("Save");
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(error("hover", {{"nodeId", id}}).at("code"), "session_locked");
  desktop.windowServer().session.locked = false;
  EXPECT_EQ(hoverFailure(id), kExpired);
}

TEST_F(Hover, CountsAsAnActionEvenWhenItFails) {
  notes.announce("AXTitleChanged");
  desktop.run(500ms);
  EXPECT_EQ(failure("hover"), kExpired);
  EXPECT_EQ(result("settle").at("heard"), Json::array());
}

TEST_F(Hover, PassesTheGateBeforeItsArgumentsAreRead) {
  notes.kill();
  EXPECT_EQ(failure("hover"), "app_closed: The application closed; reconnect before continuing.");
}

// The order of the checks: identity, forward, identity again, frame, window, cover.

TEST_F(Hover, OfAnotherElementIsRefusedBeforeTheApplicationComesForward) {
  const std::string id = idOf("Save");
  desktop.eventLog().clear();
  save.title("Delete").withoutFrame();
  EXPECT_EQ(hoverFailure(id), kChanged);
  EXPECT_EQ(desktop.eventLog().count("activate"), 0U);
}

TEST_F(Hover, OfAnElementThatBecomesAnotherMeanwhileIsRefused) {
  const std::string id = idOf("Save");
  desktop.after(60ms, [&] { save.title("Delete").withoutFrame(); });
  EXPECT_EQ(hoverFailure(id), kChanged);
}

TEST_F(Hover, OfADisabledElementIsRefused) {
  const std::string id = idOf("Save");
  save.enabled(false);
  EXPECT_EQ(hoverFailure(id),
            "not_clickable: The element is disabled, protected, or not clickable");
}

TEST_F(Hover, NeedsAFrameOfOnePointEachWay) {
  for (const Rect& frame : {Rect{200, 200, 0.9, 24}, Rect{200, 200, 80, 0.9}}) {
    const std::string id = idOf("Save");
    save.at(frame);
    EXPECT_EQ(hoverFailure(id), kNoFrame);
    save.at({200, 200, 80, 24});
  }
  const std::string id = idOf("Save");
  save.at({200, 200, 1, 1});
  EXPECT_EQ(result("hover", {{"nodeId", id}}).at("method"), "pointer");
}

TEST_F(Hover, OutsideTheWindowIsRefusedWithoutAMove) {
  const std::string id = idOf("Save");
  save.at({950, 200, 80, 24});
  EXPECT_EQ(hoverFailure(id),
            "not_visible: Target has no visible position inside its window; take a fresh snapshot");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(Hover, BelowAnotherApplicationsWindowIsRefusedWithoutAMove) {
  const std::string id = idOf("Save");
  sim::ServerWindow& cover = desktop.windowServer().bareWindow(999, "Other", {200, 190, 100, 50});
  desktop.after(60ms, [&] { desktop.windowServer().toFront(cover); });
  EXPECT_EQ(hoverFailure(id),
            "target_covered: Another application's window covers the click position");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(Hover, OverAnApplicationThatDoesNotComeForwardIsRefused) {
  const std::string id = idOf("Save");
  desktop.app("com.example.Other").bringToFront();
  notes.facts.comesToFront.reset();
  EXPECT_EQ(error("hover", {{"nodeId", id}}).at("code"), "focus_failed");
}

// Recognised text has no way of its own: its element is the window.
TEST_F(Hover, OfRecognisedTextIsRefusedAsAnotherElement) {
  desktop.recognizer().lines = {{"Start", {0.125, 0.25, 0.25, 0.0625}, 1}};
  const std::string id = idOf("Start", {{"image", false}, {"forceOcr", true}});
  EXPECT_EQ(hoverFailure(id), kChanged);
}

}  // namespace
}  // namespace tarqo
