// The pixels of the target window: which window, when it is waited for, when it is refused.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;
using sim::Topic;

constexpr const char* kCovered =
    "window_covered: Another application's window is in front of the target window's area, so "
    "reading its pixels would read that window. Bring the target window to the front, then look "
    "again.";
constexpr const char* kNotVisible =
    "window_not_visible: The target window is not shown at its place (Stage Manager side strip, "
    "minimized or hidden), so its pixels cannot be read. Bring it to the front, then look again.";

/// That captures work has been proven, so an image costs 20 ms, one slice of waiting for it.
class Capture : public ConnectedScene {
 protected:
  void SetUp() override {
    ConnectedScene::SetUp();
    (void)observe({});
    desktop.eventLog().clear();
  }

  // Another application's window over the target's left edge, with that application in front.
  sim::Window& cover() {
    sim::App& other = desktop.app("com.example.Other");
    sim::Window& covering = other.window({0, 0, 300, 300}, "Cover");
    other.bringToFront();
    return covering;
  }

  // Keeps a window in front whatever else comes there.
  void keepInFront(sim::Window& covering) {
    desktop.every(10ms, 500, [each = &covering] { each->toFront(); });
  }

  std::string captureFailure() { return failure("observe", Json::object()); }

  Image imageOf(const Json& observation) {
    const std::string png = bytesOfBase64(observation.at("image").at("base64"));
    const auto image = desktop.images().decodePng(png);
    EXPECT_TRUE(image);
    return image.value_or(Image{});
  }
};

TEST_F(Capture, ShowsTheWindowsPixelsAtItsPlace) {
  const Json observation = observe({});
  EXPECT_EQ(keysOf(observation.at("image")),
            (std::vector<std::string>{"base64", "bounds", "height", "mimeType", "width"}));
  EXPECT_EQ(observation.at("image").at("mimeType"), "image/png");
  EXPECT_EQ(observation.at("image").at("width"), 800);
  EXPECT_EQ(observation.at("image").at("height"), 600);
  EXPECT_EQ(observation.at("image").at("bounds"),
            Json({{"x", 100}, {"y", 80}, {"width", 800}, {"height", 600}}));
  EXPECT_EQ(sim::pixelAt(imageOf(observation), 799, 599), window.server().fill);
}

TEST_F(Capture, ShowsNothingOfAPanelOverTheWindow) {
  sim::ServerWindow& panel = desktop.windowServer().bareWindow(999, "Other", {100, 80, 50, 50});
  panel.info.layer = 3;
  EXPECT_EQ(sim::pixelAt(imageOf(observe({})), 0, 0), window.server().fill);
}

TEST_F(Capture, OnADisplayOfScaleTwoHasTwiceAsManyPixelsEachWay) {
  desktop.windowServer().displays[0].scale = 2;
  const Json image = observe({}).at("image");
  EXPECT_EQ(image.at("width"), 1600);
  EXPECT_EQ(image.at("height"), 1200);
  EXPECT_EQ(image.at("bounds").at("width"), 800);
}

TEST_F(Capture, OfAWindowInPlaceDoesNotActivateOrWait) {
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 20);
  EXPECT_EQ(desktop.eventLog().lines(Topic::workspace), Lines{});
}

TEST_F(Capture, OfAWindowInPlaceDoesNotNeedItsApplicationInFront) {
  desktop.app("com.example.Other").bringToFront();
  (void)observe({});
  EXPECT_EQ(desktop.eventLog().lines(Topic::workspace), Lines{});
}

// Covered.

TEST_F(Capture, OfACoveredWindowBringsItsApplicationForwardOnce) {
  (void)cover();
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 120 + 250 + 20);
  EXPECT_EQ(desktop.eventLog().lines(Topic::workspace),
            (Lines{"unhide com.example.Notes", "activate com.example.Notes"}));
  EXPECT_EQ(desktop.eventLog().count("perform AXRaise AXWindow \"Notes\""), 1U);
}

TEST_F(Capture, OfACoveredWindowWaitsForASlowActivation) {
  (void)cover();
  notes.facts.comesToFront = 1s;
  // Looked for every 30 ms: seen at 1020.
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 1020 + 120 + 250 + 20);
}

TEST_F(Capture, OfACoveredWindowThatCannotComeForwardFailsAfterASecondAndAHalf) {
  (void)cover();
  notes.facts.comesToFront.reset();
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(captureFailure(),
                        "focus_failed: Could not bring the target application to the front");
            }),
            1500);
}

TEST_F(Capture, OfAWindowThatStaysCoveredIsRefusedWhenItsTimeToSettleHasPassed) {
  keepInFront(cover());
  // 370 for the activation; then slices of 150 until 1200 have passed.
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(captureFailure(), kCovered); }), 370 + 6 * 150);
  EXPECT_EQ(desktop.eventLog().count("activate"), 1U);
  EXPECT_EQ(desktop.eventLog().count("window image"), 0U);
}

TEST_F(Capture, OfAWindowThatIsUncoveredInTimeSucceeds) {
  sim::Window& covering = cover();
  keepInFront(covering);
  desktop.after(600ms, [&] { covering.minimize(); });
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 370 + 2 * 150 + 20);
}

TEST_F(Capture, OfAWindowThatIsCoveredAgainByAnotherInFrontIsRefusedAtOnce) {
  keepInFront(cover());
  // No longer in front when the activation has been waited for.
  desktop.after(300ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(captureFailure(), kCovered); }), 370);
}

TEST_F(Capture, APartOfAPointThatIsCoveredCounts) {
  sim::Window& covering = cover();
  covering.moveTo({-199.5, 0});  // Its right half point lies over the target's left edge.
  keepInFront(covering);
  EXPECT_EQ(captureFailure(), kCovered);
}

// Missing.

TEST_F(Capture, OfAMinimisedWindowIsRefusedAfterItsTimeToSettleWithoutActivating) {
  window.minimize();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(captureFailure(), kNotVisible); }), 1200);
  EXPECT_EQ(desktop.eventLog().lines(Topic::workspace), Lines{});
}

TEST_F(Capture, OfAMinimisedWindowInTheBackgroundIsRefusedAtOnce) {
  window.minimize();
  desktop.app("com.example.Other").bringToFront();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(captureFailure(), kNotVisible); }), 0);
}

TEST_F(Capture, OfAWindowOnItsWayIsTakenWhenItArrives) {
  window.server().info.bounds->x += 50;
  desktop.after(400ms, [&] { window.server().info.bounds->x -= 50; });
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 450 + 20);
}

TEST_F(Capture, OfAWindowThatArrivesWithTheLastSliceIsTaken) {
  window.server().info.bounds->x += 50;
  desktop.after(1200ms, [&] { window.server().info.bounds->x -= 50; });
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 1200 + 20);
}

TEST_F(Capture, StopsWaitingWhenTheApplicationLosesTheFront) {
  window.minimize();
  desktop.after(400ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(captureFailure(), kNotVisible); }), 450);
}

TEST_F(Capture, OfAWindowThatAppearsCoveredBringsItForward) {
  window.minimize();
  desktop.after(100ms, [&] {
    window.minimize(false);
    cover().app().world().frontmost = &notes;  // Over the target, though not in front.
  });
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 150 + 120 + 250 + 20);
}

TEST_F(Capture, OfAHiddenApplicationIsRefusedWithoutShowingIt) {
  notes.facts.hidden = true;
  EXPECT_EQ(captureFailure(), kNotVisible);
  EXPECT_EQ(desktop.eventLog().count("unhide"), 0U);
}

TEST_F(Capture, OfATinyWindowIsRefused) {
  window.resize({119, 500});
  EXPECT_EQ(captureFailure(), kNotVisible);
}

// Before anything is looked at.

class UnprovenCapture : public ConnectedScene {
 protected:
  UnprovenCapture() { desktop.hostedBy("com.example.Terminal", "Terminal"); }
};

TEST_F(UnprovenCapture, WithAGrantThatDoesNotApplyNamesTheHost) {
  desktop.capture().windowImages = sim::Reply::nothing();
  EXPECT_EQ(
      error("observe"),
      Json({{"code", "screen_capture_stale"},
            {"message",
             "Screen Recording lists Terminal as allowed, but the grant does not apply to the "
             "running build. Switch Terminal off and on again in System Settings → Privacy & "
             "Security → Screen & System Audio Recording, then retry."},
            {"permission", "screen"},
            {"host", result("host").at("host")}}));
}

TEST_F(UnprovenCapture, WithAGrantThatDoesNotApplyIsToldBeforeTheWindowsPlace) {
  desktop.capture().windowImages = sim::Reply::nothing();
  window.resize({119, 500});
  EXPECT_EQ(error("observe").at("code"), "screen_capture_stale");
}

TEST_F(UnprovenCapture, IsProvenOnce) {
  (void)observe({});
  (void)observe({});
  EXPECT_EQ(desktop.eventLog().count("window image"), 3U);
}

TEST_F(UnprovenCapture, PassesTheGateOnceMoreBeforeBringingTheWindowForward) {
  desktop.app("com.example.Other").window({0, 0, 300, 300}).toFront();
  desktop.after(10ms, [&] { desktop.windowServer().session.locked = true; });  // While proving.
  EXPECT_EQ(error("observe").at("code"), "session_locked");
  EXPECT_EQ(desktop.eventLog().count("activate"), 1U);  // That of connecting.
}

TEST_F(UnprovenCapture, IsNeitherProvenNorTakenWithoutAnImage) {
  (void)observe();
  EXPECT_EQ(desktop.eventLog().lines(Topic::capture), Lines{});
}

}  // namespace
}  // namespace tarqo
