// Where the target window is shown, and whether anything lies over it.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

constexpr const char* kLocked =
    "session_locked: Unlock the macOS desktop before observing or controlling the target "
    "application.";

class Geometry : public ConnectedScene {
 protected:
  std::string visibility() { return result("geometry").at("visibility"); }

  sim::ServerWindow& foreign(const Rect& bounds, const std::string& owner = "Other") {
    return desktop.windowServer().bareWindow(999, owner, bounds);
  }

  WindowInfo& listed() { return window.server().info; }
};

TEST_F(Geometry, OfAWindowInPlainSight) {
  EXPECT_EQ(result("geometry"),
            Json({{"bounds", {{"x", 100}, {"y", 80}, {"width", 800}, {"height", 600}}},
                  {"visibility", "visible"},
                  {"minimized", false},
                  {"hidden", false}}));
}

TEST_F(Geometry, OfACoveredWindow) {
  foreign({0, 0, 300, 300});
  EXPECT_EQ(visibility(), "occluded");
}

TEST_F(Geometry, OfAMinimisedWindow) {
  window.minimize();
  const Json geometry = result("geometry");
  EXPECT_EQ(geometry.at("visibility"), "hidden");
  EXPECT_EQ(geometry.at("minimized"), true);
}

TEST_F(Geometry, OfAWindowThatCallsItselfMinimisedThoughItIsListed) {
  window.with("AXMinimized", Value{true});
  EXPECT_EQ(visibility(), "hidden");
}

TEST_F(Geometry, AMinimisedMarkThatIsNoBooleanMeansNothing) {
  window.with("AXMinimized", Value{"true"});
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, OfAHiddenApplication) {
  notes.facts.hidden = true;
  const Json geometry = result("geometry");
  EXPECT_EQ(geometry.at("visibility"), "hidden");
  EXPECT_EQ(geometry.at("hidden"), true);
}

TEST_F(Geometry, OfAnApplicationThatCallsItselfHidden) {
  notes.node().with("AXHidden", Value{true});
  const Json geometry = result("geometry");
  EXPECT_EQ(geometry.at("visibility"), "hidden");
  EXPECT_EQ(geometry.at("hidden"), true);
}

TEST_F(Geometry, AnApplicationThatDoesNotSayWhetherItIsHiddenIsNot) {
  notes.node().without("AXHidden");
  const Json geometry = result("geometry");
  EXPECT_EQ(geometry.at("visibility"), "visible");
  EXPECT_EQ(geometry.at("hidden"), false);
}

TEST_F(Geometry, AWindowNarrowerOrLowerThanAHundredAndTwentyPointsIsHidden) {
  window.resize({119, 500});
  EXPECT_EQ(visibility(), "hidden");
  window.resize({500, 119});
  EXPECT_EQ(visibility(), "hidden");
  window.resize({119.5, 119.5});
  EXPECT_EQ(visibility(), "hidden");
  window.resize({120, 120});
  EXPECT_EQ(visibility(), "visible");
}

// Displays.

TEST_F(Geometry, AWindowThatSharesAHundredAndTwentyPointsWithTheDisplayIsOnScreen) {
  window.moveTo({1920 - 120, 1080 - 120});
  EXPECT_EQ(visibility(), "visible");
  window.moveTo({1920 - 119, 1080 - 120});
  EXPECT_EQ(visibility(), "hidden");
  window.moveTo({1920 - 120, 1080 - 119});
  EXPECT_EQ(visibility(), "hidden");
  window.moveTo({-680, -480});
  EXPECT_EQ(visibility(), "visible");
  window.moveTo({-681, -480});
  EXPECT_EQ(visibility(), "hidden");
}

TEST_F(Geometry, OneDisplayHasToShowEnoughOfTheWindowByItself) {
  desktop.windowServer().addDisplay({1920, 0, 1920, 1080}, 1);
  window.resize({220, 600});
  window.moveTo({1920 - 110, 80});
  EXPECT_EQ(visibility(), "hidden");
}

TEST_F(Geometry, DisplaysAboveAndLeftOfTheFirstHaveNegativeCoordinates) {
  desktop.windowServer().addDisplay({0, -900, 1440, 900}, 2);
  desktop.windowServer().addDisplay({-800, 100, 800, 600}, 1);
  window.moveTo({100, -800});
  EXPECT_EQ(visibility(), "visible");
  window.moveTo({-800, 100});
  EXPECT_EQ(visibility(), "visible");
  window.moveTo({-800, -800});
  EXPECT_EQ(visibility(), "hidden");
}

TEST_F(Geometry, WithoutAnyDisplayTheWindowCountsAsOnScreen) {
  desktop.windowServer().displays.clear();
  EXPECT_EQ(visibility(), "visible");
}

// Covers.

TEST_F(Geometry, TheProductsOwnWindowsDoNotCover) {
  foreign({0, 0, 300, 300}, "Tarqo");
  foreign({0, 0, 300, 300}, "tarqo-app");
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, ANameThatOnlyResemblesTheProductsCovers) {
  foreign({0, 0, 300, 300}, "tarqo");
  EXPECT_EQ(visibility(), "occluded");
}

TEST_F(Geometry, AWindowOfAnUnnamedOwnerCovers) {
  foreign({0, 0, 300, 300}).info.ownerName.reset();
  EXPECT_EQ(visibility(), "occluded");
}

TEST_F(Geometry, TransparentWindowsDoNotCover) {
  sim::ServerWindow& pane = foreign({0, 0, 300, 300});
  pane.info.alpha = 0;
  EXPECT_EQ(visibility(), "visible");
  pane.info.alpha = -1;
  EXPECT_EQ(visibility(), "visible");
  pane.info.alpha = 0.01;
  EXPECT_EQ(visibility(), "occluded");
}

TEST_F(Geometry, AWindowOfUnknownTransparencyCovers) {
  foreign({0, 0, 300, 300}).info.alpha.reset();
  EXPECT_EQ(visibility(), "occluded");
}

TEST_F(Geometry, PanelsAndWindowsOfAnUnknownLayerDoNotCover) {
  sim::ServerWindow& panel = foreign({0, 0, 300, 300});
  panel.info.layer = 3;
  EXPECT_EQ(visibility(), "visible");
  panel.info.layer = -1;
  EXPECT_EQ(visibility(), "visible");
  panel.info.layer.reset();
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, WindowsOfUnknownOwnerOrPlaceDoNotCover) {
  foreign({0, 0, 300, 300}).info.ownerPid.reset();
  foreign({0, 0, 300, 300}).info.bounds.reset();
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, AWindowBesideTheTargetDoesNotMatter) {
  foreign({901, 0, 100, 1000});
  foreign({0, 0, 100, 1000});  // Touches the left edge.
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, AWindowBehindTheTargetDoesNotMatter) {
  foreign({0, 0, 300, 300});
  window.toFront();
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, ElementsOfTheDesktopDoNotCover) {
  foreign({0, 0, 1920, 1080}).desktopElement = true;
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, TheTargetsOwnOtherWindowsDoNotCover) {
  notes.window({0, 0, 300, 300}, "Inspector").toFront();
  EXPECT_EQ(visibility(), "visible");
}

// Recognising the target's window.

TEST_F(Geometry, EachSideMayDifferByTwoPoints) {
  listed().bounds = Rect{102, 78, 798, 602};
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, ADifferenceOfMoreThanTwoPointsOnAnySideIsAnotherWindow) {
  for (const Rect& bounds : {Rect{102.25, 80, 800, 600}, Rect{100, 77.75, 800, 600},
                             Rect{100, 80, 802.25, 600}, Rect{100, 80, 800, 597.75}}) {
    listed().bounds = bounds;
    EXPECT_EQ(visibility(), "hidden") << Json({bounds.x, bounds.y, bounds.width, bounds.height});
  }
}

TEST_F(Geometry, AnotherEntryMayMatchInstead) {
  listed().bounds = Rect{102.5, 80, 800, 600};
  notes.window({100, 80, 800, 600}, "Shadow");
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, AnEntryWithoutANumberIsPassedOver) {
  listed().number.reset();
  EXPECT_EQ(visibility(), "hidden");
}

TEST_F(Geometry, AnEntryThatIsInvisibleOrOnAnotherLayerIsPassedOver) {
  listed().alpha = 0;
  EXPECT_EQ(visibility(), "hidden");
  listed().alpha.reset();
  EXPECT_EQ(visibility(), "visible");
  listed().layer = 8;
  EXPECT_EQ(visibility(), "hidden");
}

TEST_F(Geometry, ACoverInFrontOfAnUnrecognisedWindowStillCounts) {
  listed().bounds = Rect{102.5, 80, 800, 600};
  foreign({0, 0, 300, 300});
  EXPECT_EQ(visibility(), "occluded");
}

TEST_F(Geometry, AWindowServerThatDoesNotAnswerShowsNothing) {
  desktop.windowServer().answers = false;
  EXPECT_EQ(visibility(), "hidden");
}

// Failures, in their order.

TEST_F(Geometry, WithoutAWindowFails) {
  window.close();
  EXPECT_EQ(error("geometry"), Json({{"code", "no_window"},
                                     {"message", "The application has no accessible window."}}));
}

TEST_F(Geometry, OfABoundSiteThatIsGoneFailsTheSameWay) {
  window.shows("https://example.com/");
  (void)result("connect", {{"bundleId", "com.example.Notes"}, {"site", "https://example.com"}});
  window.shows("https://other.example/");
  EXPECT_EQ(failure("geometry"), "no_window: The application has no accessible window.");
}

TEST_F(Geometry, ALockedDesktopIsToldBeforeAnEndedApplication) {
  notes.kill();
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(failure("geometry"), kLocked);
  desktop.windowServer().session.locked = false;
  EXPECT_EQ(failure("geometry"),
            "app_closed: The application closed; reconnect before continuing.");
}

TEST_F(Geometry, NeedsNoGrantToRecordTheScreen) {
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(visibility(), "visible");
}

TEST_F(Geometry, LeavesTheNodesUsable) {
  const std::string id = idOf("Save");
  (void)result("geometry");
  save.action("AXPress").announces("AXValueChanged");
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "accessibility");
}

TEST_F(Geometry, OfADialogDoesNotMakeItTheWindowThatIsActedIn) {
  const std::string id = idOf("Save");
  sim::Window& dialog = notes.window({300, 800, 400, 200}, "Discard?");
  notes.focusWindow(&dialog);
  EXPECT_EQ(result("geometry").at("bounds").at("y"), 800);
  save.withoutAction("AXPress");
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "pointer");
}

}  // namespace
}  // namespace tarqo
