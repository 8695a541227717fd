// The showMenu method: a node's context menu, by its own action or by the right button.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

/// The button's middle is at 240,212. Connecting ends at 120 ms of virtual time, and so does
/// bringing the application forward at 240 ms.
class ShowMenu : public ConnectedScene {
 protected:
  static constexpr const char* kExpired =
      "stale_snapshot: This node reference expired. Take a new snapshot before opening its menu.";
  static constexpr const char* kChanged =
      "stale_snapshot: The captured element changed. Take a new snapshot before acting.";
  static constexpr const char* kNoFrame = "not_visible: The element no longer has a visible frame";

  std::string menuFailure(const std::string& id) { return failure("showMenu", {{"nodeId", id}}); }
  Json showMenu() { return result("showMenu", {{"nodeId", idOf("Save")}}); }
};

// By its own action.

TEST_F(ShowMenu, PerformsTheActionWhereTheElementOffersOne) {
  int opened = 0;
  save.action("AXShowMenu").effect([&] { ++opened; });
  const std::string id = idOf("Save");
  EXPECT_EQ(
      result("showMenu", {{"nodeId", id}}),
      Json({{"method", "accessibility"}, {"nodeId", id}, {"at", "2025-01-01T00:00:00.490Z"}}));
  EXPECT_EQ(opened, 1);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(ShowMenu, WaitsAQuarterOfASecondForTheMenu) {
  save.action("AXShowMenu");
  const std::string id = idOf("Save");
  EXPECT_EQ(millisecondsOf([&] { (void)result("showMenu", {{"nodeId", id}}); }), 120 + 250);
}

TEST_F(ShowMenu, ByItsActionNeedsNoHitTest) {
  save.action("AXShowMenu");
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(showMenu().at("method"), "accessibility");
}

// By the right button.

TEST_F(ShowMenu, PressesTheRightButtonWhereTheElementOffersNothing) {
  const std::string id = idOf("Save");
  EXPECT_EQ(result("showMenu", {{"nodeId", id}}),
            Json({{"method", "pointer"}, {"nodeId", id}, {"at", "2025-01-01T00:00:00.620Z"}}));
  EXPECT_EQ(desktop.postedAt(),
            (Lines{"240 move 240,212", "290 rightDown(1) 240,212", "330 rightUp(1) 240,212"}));
  EXPECT_EQ(save.rightClicks() + save.clicks() * 100, 1);
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

TEST_F(ShowMenu, ByTheRightButtonEndsAQuarterOfASecondAfterTheClick) {
  const std::string id = idOf("Save");
  EXPECT_EQ(millisecondsOf([&] {
              (void)result("showMenu", {{"nodeId", id}});
            }),
            120 + 50 + 2 * 40 + 250);
}

TEST_F(ShowMenu, PressesTheRightButtonWhenTheActionIsRefused) {
  save.action("AXShowMenu").refused();
  EXPECT_EQ(showMenu().at("method"), "pointer");
  EXPECT_EQ(desktop.eventLog().count("perform AXShowMenu"), 1U);
  EXPECT_EQ(desktop.posted().size(), 3U);
}

TEST_F(ShowMenu, PressesTheRightButtonWhenItsActionsCannotBeRead) {
  save.action("AXShowMenu");
  save.failingActionNames();
  EXPECT_EQ(showMenu().at("method"), "pointer");
  EXPECT_EQ(desktop.eventLog().count("perform AXShowMenu"), 0U);
}

TEST_F(ShowMenu, DoesNotGlide) {
  desktop.input().pointer.location = Point{900, 600};
  (void)showMenu();
  EXPECT_EQ(desktop.posted().front(), "move 240,212");
}

TEST_F(ShowMenu, ByTheRightButtonProvesThePoint) {
  const std::string id = idOf("Save");
  window.label("Saved").at({180, 190, 120, 40});
  EXPECT_EQ(menuFailure(id),
            "target_covered: The position (240,212) holds AXStaticText [180,190 120x40], not the "
            "captured AXButton [200,200 80x24]; take a fresh snapshot");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(ShowMenu, ByTheRightButtonNeedsAHitTest) {
  const std::string id = idOf("Save");
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(menuFailure(id),
            "hit_test_failed: Cannot verify the element currently at the click position");
}

TEST_F(ShowMenu, ThatPostsNothingIsNotReported) {
  desktop.input().refusesMouse = true;
  EXPECT_EQ(showMenu().at("method"), "pointer");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(ShowMenu, NeverPressesAButtonThatCouldNotBeLetGo) {
  desktop.input().refusesButtonsUp = true;
  EXPECT_EQ(showMenu().at("method"), "pointer");
  EXPECT_EQ(desktop.posted(), Lines{"move 240,212"});
}

// The node.

TEST_F(ShowMenu, NeedsAKnownNode) {
  (void)observe();
  EXPECT_EQ(menuFailure("unknown:0"), kExpired);
  EXPECT_EQ(menuFailure(""), kExpired);
  EXPECT_EQ(failure("showMenu"), kExpired);
  EXPECT_EQ(failure("showMenu", {{"nodeId", {1}}}), kExpired);
}

TEST_F(ShowMenu, OfANodeSixtySecondsOldIsStale) {
  const std::string id = idOf("Save");
  desktop.run(60s);
  EXPECT_EQ(menuFailure(id), kExpired);
}

TEST_F(ShowMenu, SpendsEveryNodeWhateverComesOfIt) {
  std::string id = idOf("Save");
  (void)result("showMenu", {{"nodeId", id}});
  EXPECT_EQ(menuFailure(id), kExpired);
  id = idOf("Save");
  save.enabled(false);
  EXPECT_EQ(error("showMenu", {{"nodeId", id}}).at("code"), "not_clickable");
  save.enabled(true);
  EXPECT_EQ(menuFailure(id), kExpired);
}

TEST_F(ShowMenu, CountsAsAnActionEvenWhenItFails) {
  notes.announce("AXTitleChanged");
  desktop.run(500ms);
  EXPECT_EQ(failure("showMenu"), kExpired);
  EXPECT_EQ(result("settle").at("heard"), Json::array());
}

TEST_F(ShowMenu, PassesTheGateBeforeItsArgumentsAreRead) {
  desktop.permissions().trusted = false;
  EXPECT_EQ(error("showMenu").at("code"), "ax_not_trusted");
}

// The order of the checks: identity, forward, identity again, frame, then the action.

TEST_F(ShowMenu, OfAnotherElementIsRefusedBeforeTheApplicationComesForward) {
  save.action("AXShowMenu");
  const std::string id = idOf("Save");
  desktop.eventLog().clear();
  save.title("Delete").withoutFrame();
  EXPECT_EQ(menuFailure(id), kChanged);
  EXPECT_EQ(desktop.eventLog().count("activate"), 0U);
}

TEST_F(ShowMenu, OfAnElementThatBecomesAnotherMeanwhileIsRefused) {
  save.action("AXShowMenu");
  const std::string id = idOf("Save");
  desktop.after(60ms, [&] { save.title("Delete"); });
  EXPECT_EQ(menuFailure(id), kChanged);
  EXPECT_EQ(desktop.eventLog().count("perform AXShowMenu"), 0U);
}

TEST_F(ShowMenu, NeedsAFrameEvenForTheAction) {
  save.action("AXShowMenu");
  const std::string id = idOf("Save");
  save.at({200, 200, 80, 0.5});
  EXPECT_EQ(menuFailure(id), kNoFrame);
  EXPECT_EQ(desktop.eventLog().count("perform AXShowMenu"), 0U);
}

TEST_F(ShowMenu, OfRecognisedTextIsRefusedAsAnotherElement) {
  desktop.recognizer().lines = {{"Start", {0.125, 0.25, 0.25, 0.0625}, 1}};
  const std::string id = idOf("Start", {{"image", false}, {"forceOcr", true}});
  EXPECT_EQ(menuFailure(id), kChanged);
}

}  // namespace
}  // namespace tarqo
