// The proofs of a point: inside the target window, not covered, and the element there the one
// meant.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

constexpr const char* kOutside =
    "not_visible: Target has no visible position inside its window; take a fresh snapshot";
constexpr const char* kCovered =
    "target_covered: Another application's window covers the click position";
constexpr const char* kNoHit =
    "hit_test_failed: Cannot verify the element currently at the click position";

/// The button's middle is at 240,212. It offers no press, so every click is the pointer's.
class PointChecks : public ConnectedScene {
 protected:
  PointChecks() {
    save.withoutAction("AXPress").onClick([](int) {});
  }

  // "pointer" when the button is clicked; else why it is not.
  std::string click() {
    const std::string id = idOf("Save");
    const Json answer = call("click", {{"nodeId", id}});
    if (answer.contains("result")) {
      return answer.at("result").at("method");
    }
    EXPECT_EQ(desktop.posted(), Lines{}) << "posted before the refusal";
    return answer.at("error").at("code").get<std::string>() + ": " +
           answer.at("error").at("message").get<std::string>();
  }

  // Moves the button so that its middle lies at `point`, where the hit test finds it.
  void middleAt(Point point) {
    save.at({point.x - 40, point.y - 12, 80, 24});
    desktop.accessibility().hitTest(point, &save);
  }

  // A window of another application that comes over the button while the target comes forward.
  sim::ServerWindow& cover(const Rect& bounds = {200, 190, 100, 50}) {
    sim::ServerWindow& covering = desktop.windowServer().bareWindow(999, "Other", bounds);
    desktop.after(60ms, [this, each = &covering] { desktop.windowServer().toFront(*each); });
    return covering;
  }
};

// Inside the window.

TEST_F(PointChecks, APointOnePointAndAHalfOutsideTheWindowIsInside) {
  for (const Point point :
       {Point{98.5, 300}, Point{901.5, 300}, Point{300, 78.5}, Point{300, 681.5}}) {
    middleAt(point);
    EXPECT_EQ(click(), "pointer") << point.x << "," << point.y;
    desktop.eventLog().clear();
  }
}

TEST_F(PointChecks, APointMoreThanTwoPointsOutsideTheWindowIsOutside) {
  for (const Point point :
       {Point{97.75, 300}, Point{902.25, 300}, Point{300, 77.75}, Point{300, 682.25}}) {
    middleAt(point);
    EXPECT_EQ(click(), kOutside) << point.x << "," << point.y;
  }
}

TEST_F(PointChecks, AWindowWithoutAFrameHasNoInside) {
  const std::string id = idOf("Save");
  window.failing("AXSize");
  EXPECT_EQ(failure("click", {{"nodeId", id}}), kOutside);
}

TEST_F(PointChecks, OutsideIsToldBeforeACover) {
  (void)cover({0, 0, 1900, 1000});
  middleAt({97.5, 300});
  EXPECT_EQ(click(), kOutside);
}

// Covered.

TEST_F(PointChecks, AWindowOfAnotherApplicationCovers) {
  (void)cover();
  EXPECT_EQ(click(), kCovered);
}

TEST_F(PointChecks, ACoverIsToldBeforeAFailedHitTest) {
  (void)cover();
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(click(), kCovered);
}

TEST_F(PointChecks, AWindowOfAnUnknownOwnerCovers) {
  cover().info.ownerPid.reset();
  EXPECT_EQ(click(), kCovered);
}

TEST_F(PointChecks, AnInvisibleWindowOfAnotherApplicationCovers) {
  cover().info.alpha = 0;
  EXPECT_EQ(click(), kCovered);
}

TEST_F(PointChecks, TheProductsOwnWindowCoversOnTheOrdinaryLayer) {
  cover().info.ownerName = "Tarqo";
  EXPECT_EQ(click(), kCovered);
}

TEST_F(PointChecks, AWindowThatDoesNotReachThePointDoesNotCover) {
  (void)cover({241, 200, 100, 100});
  (void)cover({200, 200, 40, 100});  // Ends at the point, which is then no longer in it.
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, AWindowThatBeginsAtThePointCovers) {
  (void)cover({240, 212, 10, 10});
  EXPECT_EQ(click(), kCovered);
}

TEST_F(PointChecks, PanelsAndWindowsOfAnUnknownLayerDoNotCover) {
  desktop.accessibility().hitTest({240, 212}, &save);
  cover().info.layer = 3;
  cover().info.layer.reset();
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, AWindowWithoutBoundsDoesNotCover) {
  cover().info.bounds.reset();
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, ElementsOfTheDesktopDoNotCover) {
  desktop.accessibility().hitTest({240, 212}, &save);
  cover().desktopElement = true;
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, AnotherWindowOfTheTargetDoesNotCover) {
  desktop.accessibility().hitTest({240, 212}, &save);
  sim::Window& inspector = notes.window({200, 190, 100, 50}, "Inspector");
  desktop.after(60ms, [&] { inspector.toFront(); });
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, OnlyTheFrontmostWindowAtThePointCounts) {
  sim::Window& inspector = notes.window({200, 190, 100, 50}, "Inspector");
  (void)cover();
  desktop.after(70ms, [&] { inspector.toFront(); });
  desktop.accessibility().hitTest({240, 212}, &save);
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, AWindowServerThatDoesNotAnswerRefusesNothing) {
  desktop.windowServer().answers = false;
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, AWindowThatIsInNoListRefusesNothing) {
  desktop.accessibility().hitTest({240, 212}, &save);
  window.server().listed = false;
  EXPECT_EQ(click(), "pointer");
}

// The element at the point.

TEST_F(PointChecks, AFailedHitTestIsRefused) {
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(click(), kNoHit);
}

TEST_F(PointChecks, AnApplicationThatAnswersNoHitTestIsRefused) {
  notes.facts.refusesHitTest = true;
  EXPECT_EQ(click(), kNoHit);
}

TEST_F(PointChecks, ATextInsideTheButtonStandsForIt) {
  save.label("Save").at({210, 205, 60, 14});
  EXPECT_EQ(click(), "pointer");
  EXPECT_EQ(save.clicks(), 1);
}

TEST_F(PointChecks, AGroupAroundTheButtonStandsForIt) {
  window.group("over").at({150, 150, 300, 200});
  EXPECT_EQ(click(), "pointer");
}

TEST_F(PointChecks, AnotherElementOverTheButtonIsNamedWithItsPlace) {
  window.label("Saved").at({180, 190, 120, 40});
  EXPECT_EQ(click(),
            "target_covered: The position (240,212) holds AXStaticText [180,190 120x40], not the "
            "captured AXButton [200,200 80x24]; take a fresh snapshot");
}

TEST_F(PointChecks, AnotherElementIsNamedByItsTitle) {
  window.button(" Delete\n").at({180, 190, 120, 40});
  EXPECT_EQ(
      click(),
      "target_covered: The position (240,212) holds AXButton \"Delete\" [180,190 120x40], not "
      "the captured AXButton [200,200 80x24]; take a fresh snapshot");
}

TEST_F(PointChecks, CoordinatesAreCutOffTowardsZero) {
  window.moveTo({-50.75, -20.5});
  save.at({-30.25, -9.75, 20.9, 8.9});
  window.button("Delete").at({-31.9, -10.9, 40.9, 30.9});
  EXPECT_EQ(click(),
            "target_covered: The position (-19,-5) holds AXButton \"Delete\" [-31,-10 40x30], not "
            "the captured AXButton [-30,-9 20x8]; take a fresh snapshot");
}

TEST_F(PointChecks, AnElementWithoutAFrameIsNamedWithNone) {
  desktop.accessibility().hitTest({240, 212}, &window.button("Delete").withoutFrame());
  EXPECT_EQ(click(),
            "target_covered: The position (240,212) holds AXButton \"Delete\" [none], not the "
            "captured AXButton [200,200 80x24]; take a fresh snapshot");
}

TEST_F(PointChecks, AnElementThatTellsNothingIsStillNamed) {
  sim::Node& strange = window.add("AXUnknown").withoutFrame();
  strange.without("AXRole");
  desktop.accessibility().hitTest({240, 212}, &strange);
  EXPECT_EQ(click(),
            "target_covered: The position (240,212) holds  [none], not the captured AXButton "
            "[200,200 80x24]; take a fresh snapshot");
}

TEST_F(PointChecks, AnElementOfAnUnknownProcessIsRefused) {
  desktop.accessibility().hitTest({240, 212}, &save.withoutPid());
  EXPECT_EQ(click(),
            "target_covered: The position (240,212) holds AXButton \"Save\" [200,200 80x24], not "
            "the captured AXButton [200,200 80x24]; take a fresh snapshot");
}

TEST_F(PointChecks, AnElementOfAnotherApplicationIsRefusedEvenAtTheSamePlace) {
  sim::Window& panel = desktop.app("com.example.Other").window({0, 0, 10, 10});
  desktop.accessibility().hitTest({240, 212}, &panel.button("Save").at({200, 200, 80, 24}));
  EXPECT_EQ(click(),
            "target_covered: The position (240,212) holds AXButton \"Save\" [200,200 80x24], not "
            "the captured AXButton [200,200 80x24]; take a fresh snapshot");
}

// The helper's own overlay: a panel over the target, which the pointer goes through.

class OwnOverlay : public PointChecks {
 protected:
  OwnOverlay() {
    desktop.processes().ownProgram = "/Applications/Tarqo.app/Contents/MacOS/tarqo-ax";
    overlay.server().info.layer = 25;
  }

  static constexpr const char* kHeld =
      "target_covered: The position (240,212) holds AXWindow \"Overlay\" [0,0 1920x1080], not the "
      "captured AXButton [200,200 80x24]; take a fresh snapshot";

  sim::App& tarqo = desktop.app("com.tarqo.Tarqo");
  sim::Window& overlay = tarqo.window({0, 0, 1920, 1080}, "Overlay");
};

TEST_F(OwnOverlay, IsGoneThrough) { EXPECT_EQ(click(), "pointer"); }

TEST_F(OwnOverlay, IsRecognisedThroughALink) {
  desktop.bundles().links["/Users/user/Desktop/Tarqo.app"] = "/Applications/Tarqo.app";
  tarqo.facts.bundlePath = "/Users/user/Desktop/Tarqo.app/";
  EXPECT_EQ(click(), "pointer");
}

TEST_F(OwnOverlay, IsKnownByItsPlaceAndNotByItsIdentifier) {
  tarqo.facts.bundleId = "com.example.Other";
  EXPECT_EQ(click(), "pointer");
  tarqo.facts.bundleId.reset();
  EXPECT_EQ(click(), "pointer");
}

TEST_F(OwnOverlay, OfAnotherApplicationIsNot) {
  tarqo.facts.bundlePath = "/Applications/Other.app";
  EXPECT_EQ(click(), kHeld);
}

TEST_F(OwnOverlay, OfAProcessWithoutABundleIsNot) {
  tarqo.facts.bundlePath.reset();
  EXPECT_EQ(click(), kHeld);
}

TEST_F(OwnOverlay, OfABundleWithANameOfOneLetterIsGoneThrough) {
  desktop.processes().ownProgram = "/Applications/T.app/Contents/MacOS/tarqo-ax";
  tarqo.facts.bundlePath = "/Applications/T.app";
  EXPECT_EQ(click(), "pointer");
}

TEST_F(OwnOverlay, DoesNotExistForAFolderThatIsAllExtension) {
  desktop.processes().ownProgram = "/Applications/.app/Contents/MacOS/tarqo-ax";
  tarqo.facts.bundlePath = "/Applications/.app";
  EXPECT_EQ(click(), kHeld);
}

TEST_F(OwnOverlay, DoesNotExistForAHelperOutsideAnyBundle) {
  desktop.processes().ownProgram = "/opt/tarqo/bin/tarqo-ax";
  EXPECT_EQ(click(), kHeld);
}

TEST_F(OwnOverlay, BelongsToTheInnermostBundleThatHoldsTheHelper) {
  desktop.processes().ownProgram =
      "/Applications/Suite.app/Contents/Tarqo.app/Contents/MacOS/tarqo-ax";
  tarqo.facts.bundlePath = "/Applications/Suite.app";
  EXPECT_EQ(click(), kHeld);
  tarqo.facts.bundlePath = "/Applications/Suite.app/Contents/Tarqo.app";
  EXPECT_EQ(click(), "pointer");
}

TEST_F(OwnOverlay, ABundleIsAFolderWithExactlyThatEnding) {
  desktop.processes().ownProgram = "/Applications/Tarqo.apps/x.APP/tarqo-ax";
  tarqo.facts.bundlePath = "/Applications/Tarqo.apps";
  EXPECT_EQ(click(), kHeld);
}

TEST_F(OwnOverlay, IsNotGoneThroughWhereTheTargetIsNot) {
  save.remove();
  field.remove();
  label.remove();
  window.at({100, 80, 1024, 512});
  window.server().info.bounds = Rect{100, 80, 1024, 512};
  // One point and a half outside the window, where the window itself is not.
  desktop.recognizer().lines = {{"edge", {-2.0 / 1024, 0.25, 1.0 / 1024, 0.0625}, 1}};
  const std::string id = idOf("edge");
  EXPECT_EQ(failure("click", {{"nodeId", id}}),
            "target_covered: The position (98,448) holds AXWindow \"Overlay\" [0,0 1920x1080], not "
            "the captured AXWindow [100,80 1024x512]; take a fresh snapshot");
}

// What is in the way has a name where the system gives one.

TEST_F(PointChecks, TheWindowThatCoversIsNamed) {
  sim::ServerWindow& covering = cover();
  covering.info.title = "Save as";
  covering.info.caption = "the dialog \"Save as\" of Other";
  EXPECT_EQ(click(), std::string(kCovered) + ". In the way is the dialog \"Save as\" of Other.");
}

TEST_F(PointChecks, ThePopupUnderThePointerIsNamed) {
  sim::ServerWindow& covering = cover();
  covering.info.layer = 101;
  covering.info.caption = "the notification of Other";
  desktop.accessibility().hitTest({240, 212}, nullptr);
  EXPECT_EQ(click(), std::string(kNoHit) + ". In the way is the notification of Other.");
}

TEST_F(PointChecks, TheDetailTellsTheApplicationAndTheTitle) {
  sim::ServerWindow& covering = cover();
  covering.info.title = "Save as";
  covering.info.caption = "the dialog \"Save as\" of Other";
  EXPECT_EQ(error("click", {{"nodeId", idOf("Save")}}).at("inTheWay"),
            (Json{{"application", "Other"}, {"title", "Save as"}}));
}

}  // namespace
}  // namespace tarqo
