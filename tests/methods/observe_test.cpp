// One look at the target: tree, pixels and times of the same window, or a failure.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;
using sim::Topic;

constexpr const char* kWindowChanged =
    "stale_snapshot: The target window changed during capture. Observe again.";
constexpr const char* kClosed = "app_closed: The application closed; reconnect before continuing.";

class Observe : public ConnectedScene {
 protected:
  Observe() {
    save.action("AXPress").announces("AXValueChanged");
    desktop.capture().shareableWindowsExist = true;  // Captures are proven by a list of windows.
  }

  // Whether a node can still be acted on.
  bool isUsable(const std::string& id) {
    return call("click", {{"nodeId", id}}).contains("result");
  }

  // The next image takes a while, and `deed` happens meanwhile.
  void duringCapture(std::function<void()> deed) {
    desktop.capture().windowImagesOf.insert_or_assign(*window.server().info.number,
                                                      sim::Reply::after(500ms));
    desktop.after(250ms, std::move(deed));
  }

  // `deed` happens when so many calls to the application remain of an observation without an image.
  // Its last three prove which window is in front (one, and one for its frame), then its frame; the
  // one before those reads the frame that is captured.
  void beforeTheLastCalls(int calls, std::function<void()> deed) {
    const int before = notes.calls();
    lastId = nodeNamed(observe(), "Save").at("id");
    notes.afterCalls(notes.calls() - before - calls + 1, std::move(deed));
  }

  std::string lastId;  // Of the button, in the observation that was counted.
};

TEST_F(Observe, HasTheseMembersWithAnImage) {
  EXPECT_EQ(keysOf(observe({})),
            (std::vector<std::string>{"capturedAt", "image", "imageCapturedAt", "omissions",
                                      "snapshot", "snapshotCapturedAt", "startedAt"}));
}

TEST_F(Observe, HasTheseMembersWithoutAnImage) {
  EXPECT_EQ(keysOf(observe({{"image", false}})),
            (std::vector<std::string>{"capturedAt", "omissions", "snapshot", "snapshotCapturedAt",
                                      "startedAt"}));
}

TEST_F(Observe, TakesAnImageUnlessToldOtherwiseByABoolean) {
  EXPECT_TRUE(observe({{"image", true}}).contains("image"));
  EXPECT_TRUE(observe({{"image", "false"}}).contains("image"));
  EXPECT_TRUE(observe({{"image", 0}}).contains("image"));
}

TEST_F(Observe, TellsWhatItLeftOut) {
  EXPECT_EQ(observe({}).at("omissions"),
            Json({"Only the selected target window is captured; other windows and the desktop are "
                  "excluded."}));
  EXPECT_EQ(observe({{"image", false}}).at("omissions"),
            Json({"No window image was captured (image: false)."}));
  EXPECT_EQ(observe({{"image", false}, {"maxNodes", 2}}).at("omissions"),
            Json({"No window image was captured (image: false).",
                  "The UI tree was truncated by the configured observation budget."}));
  EXPECT_EQ(observe({{"maxNodes", 2}}).at("omissions"),
            Json({"Only the selected target window is captured; other windows and the desktop are "
                  "excluded.",
                  "The UI tree was truncated by the configured observation budget."}));
}

TEST_F(Observe, StampsEachPartWithItsTime) {
  notes.facts.eachCallTakes = 10ms;
  const Json observation = observe({});
  EXPECT_EQ(observation.at("startedAt"), "2025-01-01T00:00:00.120Z");
  EXPECT_EQ(observation.at("snapshotCapturedAt"), "2025-01-01T00:00:00.340Z");
  // The window's frame (1 call), the proof that captures work (10 ms), the placement (2 calls),
  // the image (20 ms).
  EXPECT_EQ(observation.at("imageCapturedAt"), "2025-01-01T00:00:00.400Z");
  EXPECT_EQ(observation.at("capturedAt"), "2025-01-01T00:00:00.430Z");
}

TEST_F(Observe, TellsTheTimeByTheCalendarOfTheDay) {
  desktop.clock().setWall(WallTime(std::chrono::sys_days(std::chrono::year(2024) / 2 / 29)) + 23h +
                          59min + 59s + 999500us);
  EXPECT_EQ(observe().at("startedAt"), "2024-02-29T23:59:59.999Z");
}

// The checks before anything is looked at, in their order.

TEST_F(Observe, ALockedDesktopIsToldFirst) {
  desktop.windowServer().session.locked = true;
  desktop.permissions().trusted = false;
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(error("observe").at("code"), "session_locked");
}

TEST_F(Observe, AMissingAccessibilityGrantIsToldBeforeAnEndedApplication) {
  desktop.permissions().trusted = false;
  notes.kill();
  EXPECT_EQ(error("observe").at("code"), "ax_not_trusted");
}

TEST_F(Observe, AnEndedApplicationIsToldBeforeAMissingCaptureGrant) {
  desktop.permissions().captureGranted = false;
  notes.kill();
  EXPECT_EQ(failure("observe"), kClosed);
  EXPECT_EQ(desktop.eventLog().count("request capture"), 0U);
}

TEST_F(Observe, AMissingCaptureGrantIsToldBeforeAnExpiredNode) {
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(error("observe", {{"previousNodeId", "unknown"}}).at("code"), "screen_capture_denied");
}

TEST_F(Observe, AMissingCaptureGrantIsToldBeforeAnyWork) {
  desktop.permissions().captureGranted = false;
  const int before = notes.calls();
  EXPECT_EQ(error("observe").at("code"), "screen_capture_denied");
  EXPECT_EQ(notes.calls(), before);
}

TEST_F(Observe, AnExpiredNodeIsToldBeforeAMissingWindow) {
  window.close();
  EXPECT_EQ(failure("observe", {{"image", false}, {"previousNodeId", "unknown"}}),
            "stale_snapshot: This node reference expired. Observe and select a current node.");
}

TEST_F(Observe, WithoutAnImageNeedsNoCaptureGrantAndAsksForNone) {
  desktop.permissions().captureGranted = false;
  (void)observe({{"image", false}});
  EXPECT_EQ(desktop.eventLog().lines(Topic::permissions), Lines{});
}

TEST_F(Observe, TheChecksLeaveTheNodesUsable) {
  const std::string id = idOf("Save");
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(error("observe").at("code"), "screen_capture_denied");
  EXPECT_TRUE(isUsable(id));
}

// The picture.

TEST_F(Observe, APictureWithoutAnEncoderFails) {
  desktop.images().encodingFails = PngError::noEncoder;
  EXPECT_EQ(error("observe"), Json({{"code", "image_encoding_failed"},
                                    {"message", "Could not encode the captured target window."}}));
}

TEST_F(Observe, APictureThatCannotBeEncodedFails) {
  desktop.images().encodingFails = PngError::failed;
  EXPECT_EQ(error("observe"),
            Json({{"code", "image_encoding_failed"}, {"message", "PNG encoding failed."}}));
}

// The same window all along.

TEST_F(Observe, AWindowResizedByOnePointDuringCaptureIsAnotherLook) {
  duringCapture([&] { window.resize({801, 600}); });
  EXPECT_EQ(failure("observe"), kWindowChanged);
}

TEST_F(Observe, AWindowMovedByAFractionOfAPointDuringCaptureIsAnotherLook) {
  duringCapture([&] { window.moveTo({100.25, 80}); });
  EXPECT_EQ(failure("observe"), kWindowChanged);
}

TEST_F(Observe, AWindowThatIsBackAtItsPlaceIsTheSame) {
  duringCapture([&] { window.moveTo({110, 80}); });
  desktop.after(400ms, [&] { window.moveTo({100, 80}); });
  EXPECT_TRUE(observe({}).contains("image"));
}

TEST_F(Observe, ADialogThatComesUpDuringCaptureIsAnotherWindow) {
  duringCapture([&] {
    sim::Window& dialog = notes.window({100, 80, 800, 600}, "Discard?");
    notes.focusWindow(&dialog);
  });
  EXPECT_EQ(failure("observe"), kWindowChanged);
}

TEST_F(Observe, AWindowThatClosesDuringCaptureIsGone) {
  duringCapture([&] { window.close(); });
  EXPECT_EQ(failure("observe"), kWindowChanged);
}

TEST_F(Observe, AWindowReplacedByAnEqualOneIsAnother) {
  duringCapture([&] { window.recreate(); });
  EXPECT_EQ(failure("observe"), kWindowChanged);
}

TEST_F(Observe, ADesktopThatLocksDuringCaptureIsTold) {
  duringCapture([&] { desktop.windowServer().session.locked = true; });
  EXPECT_EQ(error("observe").at("code"), "session_locked");
}

TEST_F(Observe, AnApplicationThatEndsDuringCaptureIsTold) {
  duringCapture([&] { notes.kill(); });
  EXPECT_EQ(failure("observe"), kClosed);
}

TEST_F(Observe, WithoutAnImageTheWindowIsProvenToo) {
  beforeTheLastCalls(3, [&] { window.resize({801, 600}); });
  EXPECT_EQ(failure("observe", {{"image", false}}), kWindowChanged);
}

TEST_F(Observe, AWindowThatIsGoneBeforeItsCaptureFails) {
  beforeTheLastCalls(4, [&] { window.close(); });
  EXPECT_EQ(
      error("observe", {{"image", false}}),
      Json({{"code", "no_window"}, {"message", "The target window disappeared during capture."}}));
}

// The nodes from before the call.

class FailedObserve : public Observe {
 protected:
  void SetUp() override {
    Observe::SetUp();
    id = idOf("Save");
  }

  std::string id;
};

TEST_F(FailedObserve, AfterAChangedWindowTheOldNodesAreUsable) {
  duringCapture([&] { window.resize({801, 600}); });
  EXPECT_EQ(failure("observe"), kWindowChanged);
  EXPECT_TRUE(isUsable(id));
}

TEST_F(FailedObserve, AfterAFailedCaptureTheOldNodesAreUsable) {
  (void)observe({});  // Proves once that captures work.
  id = idOf("Save");
  window.minimize();
  EXPECT_EQ(error("observe").at("code"), "window_not_visible");
  window.minimize(false);
  EXPECT_TRUE(isUsable(id));
}

TEST_F(FailedObserve, AfterAFailedEncodingTheOldNodesAreUsable) {
  desktop.images().encodingFails = PngError::failed;
  EXPECT_EQ(error("observe").at("code"), "image_encoding_failed");
  EXPECT_TRUE(isUsable(id));
}

TEST_F(FailedObserve, AfterALockTheOldNodesAreUsable) {
  duringCapture([&] { desktop.windowServer().session.locked = true; });
  EXPECT_EQ(error("observe").at("code"), "session_locked");
  desktop.windowServer().session.locked = false;
  EXPECT_TRUE(isUsable(id));
}

TEST_F(FailedObserve, AfterAVanishedWindowTheOldNodesAreUsable) {
  beforeTheLastCalls(4, [&] { window.failing("AXSize"); });
  EXPECT_EQ(failure("observe", {{"image", false}}),
            "no_window: The target window disappeared during capture.");
  window.failing("AXSize", false);
  EXPECT_TRUE(isUsable(lastId));
}

TEST_F(FailedObserve, TheOldNodesAreAsOldAsTheyWere) {
  desktop.images().encodingFails = PngError::failed;
  desktop.run(59s);
  EXPECT_EQ(error("observe").at("code"), "image_encoding_failed");
  desktop.run(1s);
  EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), "stale_snapshot");
}

TEST_F(FailedObserve, OfAThinTreeLeavesNoOldNodeUsable) {
  save.remove();
  field.remove();
  label.remove();
  desktop.recognizer().error = "no";
  EXPECT_EQ(error("observe", {{"image", false}}).at("code"), "ocr_failed");
  EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), "stale_snapshot");
}

}  // namespace
}  // namespace tarqo
