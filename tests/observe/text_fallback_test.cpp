// Text recognised in the window's pixels, where its tree has none or where it is asked for.

#include <stdexcept>

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

/// A window of 1024 x 512 points that shows no text through accessibility. Boxes of recognised text
/// count in parts of it, from its bottom left.
class TextFallback : public Scene {
 protected:
  void SetUp() override {
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
    desktop.recognizer().lines = {{"Hello", {0.125, 0.25, 0.25, 0.0625}, 0.5F}};
  }

  Json snapshot(Json args = Json::object()) {
    args.emplace("image", false);
    return result("observe", args).at("snapshot");
  }

  // A line whose top left corner and size are given in points of the window.
  static RecognizedLine line(const std::string& text, const Rect& box) {
    return {text,
            {box.x / 1024, 1 - (box.y + box.height) / 512, box.width / 1024, box.height / 512},
            1};
  }

  static std::vector<std::string> texts(const Json& snapshot) {
    std::vector<std::string> found;
    for (const Json& node : snapshot.at("nodes")) {
      if (node.contains("confidence")) {
        found.push_back(node.at("name"));
      }
    }
    return found;
  }

  int recognitions() { return desktop.recognizer().recognitions(); }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 1024, 512}, "Canvas");
};

TEST_F(TextFallback, ListsALineAtItsPlaceOnTheScreen) {
  const Json taken = snapshot();
  const std::string id = taken.at("id");
  ASSERT_EQ(taken.at("nodes").size(), 2U);
  EXPECT_EQ(
      taken.at("nodes")[1],
      Json({{"id", id + ":1"},
            {"parentId", id + ":0"},
            {"role", "text"},
            {"name", "Hello"},
            {"enabled", true},
            {"clickable", true},
            {"bounds", {{"x", 228}, {"y", 80 + 0.6875 * 512}, {"width", 256}, {"height", 32}}},
            {"confidence", 0.5}}));
}

TEST_F(TextFallback, TellsWhatItDid) {
  (void)snapshot();  // Proves once that captures work.
  desktop.recognizer().takes = 300ms;
  const Json taken = snapshot();
  EXPECT_EQ(taken.at("ocr"), Json({{"status", "ok"},
                                   {"nodes", 1},
                                   {"imageWidth", 1024},
                                   {"imageHeight", 512},
                                   {"durationMs", 320}}));
  EXPECT_EQ(taken.at("durationMs"), 320);
}

TEST_F(TextFallback, CountsThePixelsOfTheImage) {
  desktop.windowServer().displays[0].scale = 2;
  const Json ocr = snapshot().at("ocr");
  EXPECT_EQ(ocr.at("imageWidth"), 2048);
  EXPECT_EQ(ocr.at("imageHeight"), 1024);
}

TEST_F(TextFallback, AnImageWithoutTextIsNoFailure) {
  desktop.recognizer().lines.clear();
  const Json taken = snapshot();
  EXPECT_EQ(taken.at("ocr").at("status"), "ok");
  EXPECT_EQ(taken.at("ocr").at("nodes"), 0);
  EXPECT_EQ(taken.at("nodes").size(), 1U);
}

// When it runs.

TEST_F(TextFallback, RunsWhereNothingUnderTheWindowHasANameOrAValue) {
  window.group().button("").with("AXDescription", Value{" \n"});
  EXPECT_EQ(texts(snapshot()), (std::vector<std::string>{"Hello"}));
}

TEST_F(TextFallback, DoesNotRunWhereAnElementHasAName) {
  window.button("Save");
  const Json taken = snapshot();
  EXPECT_EQ(recognitions(), 0);
  EXPECT_FALSE(taken.contains("ocr"));
}

TEST_F(TextFallback, DoesNotRunWhereTheElementWithTheFocusHasAName) {
  notes.window({0, 0, 50, 50}).textField("query").focus();
  (void)snapshot();
  EXPECT_EQ(recognitions(), 0);
}

TEST_F(TextFallback, DoesNotTakeTheMenuBarForTextOfTheWindow) {
  notes.menu("File").menuItem("Open");
  const Json taken = snapshot();
  EXPECT_EQ(recognitions(), 1);
  EXPECT_EQ(taken.at("nodes")[1].at("name"), "Hello");
  EXPECT_EQ(taken.at("nodes")[2].at("role"), "menubar");
}

TEST_F(TextFallback, RunsForAHiddenWindowElementThatListsNothing) {
  window.button("Save");
  window.hidden(true);
  const Json taken = snapshot();
  ASSERT_EQ(taken.at("nodes").size(), 1U);
  EXPECT_EQ(taken.at("nodes")[0].at("id"), taken.at("id").get<std::string>() + ":0");
  EXPECT_EQ(taken.at("nodes")[0].at("name"), "Hello");
}

TEST_F(TextFallback, DoesNotRunWhenSwitchedOff) {
  EXPECT_FALSE(snapshot({{"ocr", false}}).contains("ocr"));
  EXPECT_FALSE(snapshot({{"ocr", false}, {"forceOcr", true}}).contains("ocr"));
  EXPECT_EQ(recognitions(), 0);
}

TEST_F(TextFallback, IsSwitchedOffByAnExplicitFalseAlone) {
  EXPECT_TRUE(snapshot({{"ocr", "false"}}).contains("ocr"));
  EXPECT_TRUE(snapshot({{"ocr", 0}}).contains("ocr"));
}

TEST_F(TextFallback, RunsOverATreeWithTextWhenForced) {
  window.button("Save");
  EXPECT_EQ(texts(snapshot({{"forceOcr", true}})), (std::vector<std::string>{"Hello"}));
  EXPECT_FALSE(snapshot({{"forceOcr", "true"}}).contains("ocr"));
}

// What becomes of the lines.

TEST_F(TextFallback, ALineOverAPasswordFieldIsDropped) {
  window.secureField().at({300, 200, 200, 30});
  window.button("Sign in");
  desktop.recognizer().lines = {line("above", {200, 100, 200, 20}),
                                line("s3cret", {210, 125, 100, 20}),
                                line("half over", {100, 110, 110, 20})};
  EXPECT_EQ(texts(snapshot({{"forceOcr", true}})), (std::vector<std::string>{"above"}));
}

TEST_F(TextFallback, ALineOverAPasswordFieldElsewhereThatHasTheFocusIsDropped) {
  notes.window({0, 700, 300, 300}).secureField().at({300, 200, 200, 30}).focus();
  window.button("Sign in");
  desktop.recognizer().lines = {line("s3cret", {210, 125, 100, 20})};
  EXPECT_EQ(texts(snapshot({{"forceOcr", true}})), (std::vector<std::string>{}));
}

TEST_F(TextFallback, DroppedLinesAreNotCounted) {
  window.secureField().at({300, 200, 200, 30});
  window.button("Sign in");
  desktop.recognizer().lines = {line("s3cret", {210, 125, 100, 20})};
  EXPECT_EQ(snapshot({{"forceOcr", true}}).at("ocr").at("nodes"), 0);
}

TEST_F(TextFallback, ALineWhoseCentreLiesInSomethingClickableIsNotClickable) {
  window.button("Save").at({300, 200, 100, 30});
  desktop.recognizer().lines = {line("Save", {220, 125, 60, 20}),           // Centre at 350,215.
                                line("on the edge", {250, 125, 100, 20})};  // Centre at 400,215.
  const Json nodes = snapshot({{"forceOcr", true}}).at("nodes");
  ASSERT_EQ(nodes.size(), 4U);
  EXPECT_EQ(nodes[2].at("name"), "Save");
  EXPECT_EQ(nodes[2].at("clickable"), false);
  EXPECT_EQ(nodes[3].at("clickable"), true);
}

TEST_F(TextFallback, ALineInsideWhatCannotBeClickedIsClickable) {
  window.group("canvas").at({100, 80, 1024, 512});
  window.button("Off").enabled(false).at({100, 80, 1024, 512});
  EXPECT_EQ(snapshot({{"forceOcr", true}}).at("nodes").back().at("clickable"), true);
}

TEST_F(TextFallback, LinesAreListedInReadingOrder) {
  desktop.recognizer().lines = {line("third", {20, 300, 100, 20}),
                                line("second", {200, 100, 100, 20}),
                                line("first", {20, 104, 100, 20})};
  EXPECT_EQ(texts(snapshot()), (std::vector<std::string>{"first", "second", "third"}));
}

// Failures.

TEST_F(TextFallback, AMissingGrantFailsAThinTreeEvenWithoutAnImage) {
  desktop.hostedBy("com.example.Terminal", "Terminal");
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(failure("observe", {{"image", false}}),
            "screen_capture_denied: Screen Recording is not granted to Terminal. macOS attributes "
            "this helper's grant to the app that launched the MCP server, so enable Terminal under "
            "System Settings → Privacy & Security → Screen & System Audio Recording, then run "
            "again.");
}

TEST_F(TextFallback, ARecognitionThatFailsFailsAThinTreeWithItsOwnText) {
  desktop.recognizer().error = "The model could not be loaded";
  EXPECT_EQ(error("observe", {{"image", false}}),
            Json({{"code", "ocr_failed"}, {"message", "The model could not be loaded"}}));
}

TEST_F(TextFallback, AWindowThatCannotBeCapturedFailsAThinTree) {
  window.minimize();
  EXPECT_EQ(error("observe", {{"image", false}}).at("code"), "window_not_visible");
}

TEST_F(TextFallback, AForcedRecognitionThatFailsIsOnlyReported) {
  window.button("Save");
  desktop.recognizer().error = "The model could not be loaded";
  (void)snapshot({{"forceOcr", true}});
  desktop.recognizer().takes = 70ms;
  const Json taken = snapshot({{"forceOcr", true}});
  EXPECT_EQ(taken.at("ocr"),
            Json({{"status", "failed"}, {"code", "ocr_failed"}, {"durationMs", 90}}));
  EXPECT_EQ(taken.at("nodes").size(), 2U);
}

TEST_F(TextFallback, AForcedRecognitionReportsWhyTheWindowWasNotCaptured) {
  (void)snapshot();  // Proves once that captures work.
  window.button("Save");
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(snapshot({{"forceOcr", true}}).at("ocr").at("code"), "screen_capture_denied");
  desktop.permissions().captureGranted = true;
  window.minimize();
  EXPECT_EQ(snapshot({{"forceOcr", true}}).at("ocr").at("code"), "window_not_visible");
  window.minimize(false);
  desktop.capture().windowImagesOf.emplace(*window.server().info.number, sim::Reply::nothing());
  desktop.capture().displayRegions = sim::Reply::nothing();
  EXPECT_EQ(snapshot({{"forceOcr", true}}).at("ocr").at("code"), "window_capture_failed");
}

TEST_F(TextFallback, AForcedRecognitionThatFailsStillListsTheMenuBar) {
  window.button("Save");
  notes.menu("File").menuItem("Open");
  desktop.recognizer().error = "no";
  EXPECT_EQ(snapshot({{"forceOcr", true}}).at("nodes").back().at("name"), "Open");
}

TEST_F(TextFallback, AWindowThatLosesItsFrameIsNotCaptured) {
  desktop.permissions().captureGranted = false;
  // The window is chosen with three calls and walked with four; the focus is asked for next.
  notes.afterCalls(8, [&] { window.failing("AXPosition"); });
  EXPECT_EQ(failure("observe", {{"image", false}}),
            "no_window: The target window disappeared during capture.");
  EXPECT_EQ(desktop.eventLog().count("request capture"), 0U);
}

// A recogniser that breaks the rule that services do not throw.
class ThrowingRecognizer final : public TextRecognizer {
 public:
  std::variant<std::vector<RecognizedLine>, std::string> recognize(
      const Image& /*image*/) override {
    throw std::length_error("too large");
  }
};

TEST_F(TextFallback, AForcedRecognitionThatBreaksOffCountsAsFailed) {
  window.button("Save");
  ThrowingRecognizer throwing;
  const Platform broken{platform.accessibility, platform.workspace,   platform.bundles,
                        platform.processes,     platform.permissions, platform.windowServer,
                        platform.screenCapture, platform.inputEvents, throwing,
                        platform.images,        platform.clock,       platform.random};
  Server brokenServer{broken};
  const auto ask = [&](const Json& request) {
    return Json::parse(brokenServer.serve(request.dump()).response.value());
  };
  ask({{"method", "connect"}, {"args", {{"bundleId", "com.example.Notes"}}}});
  const Json args = {{"image", false}, {"forceOcr", true}};
  const Json answer = ask({{"method", "observe"}, {"args", args}});
  EXPECT_EQ(answer.at("result").at("snapshot").at("ocr").at("code"), "ocr_failed");
}

// The image that recognition took.

TEST_F(TextFallback, ItsImageIsUsedForTheObservation) {
  desktop.recognizer().takes = 1s;
  const Json observation = result("observe");
  EXPECT_EQ(desktop.eventLog().count("window image"),
            2U);  // The proof that captures work, and one.
  EXPECT_EQ(observation.at("startedAt"), "2025-01-01T00:00:00.120Z");
  EXPECT_EQ(observation.at("imageCapturedAt"), "2025-01-01T00:00:00.160Z");
  EXPECT_EQ(observation.at("snapshotCapturedAt"), "2025-01-01T00:00:01.160Z");
  EXPECT_EQ(observation.at("image").at("width"), 1024);
}

TEST_F(TextFallback, ItsImageIsOfNoUseWhenTheWindowMovedDuringRecognition) {
  desktop.recognizer().takes = 1s;
  desktop.after(500ms, [&] { window.moveTo({140, 80}); });
  EXPECT_EQ(failure("observe"),
            "stale_snapshot: The target window changed during capture. Observe again.");
  EXPECT_EQ(result("observe").at("image").at("bounds").at("x"), 140);
}

TEST_F(TextFallback, ItsTextIsOfNoUseEitherWhenTheWindowMovedDuringRecognition) {
  desktop.recognizer().takes = 1s;
  desktop.after(500ms, [&] { window.moveTo({140, 80}); });
  EXPECT_EQ(failure("observe", {{"image", false}}),
            "stale_snapshot: The target window changed during capture. Observe again.");
}

// Text is proven by its window alone, so it must stay the text of that window.
TEST_F(TextFallback, IsTextOfItsOwnWindowAfterAnObservationOfAnotherFailed) {
  const Json text = snapshot().at("nodes").back();
  sim::Window& dialog = notes.window({500, 300, 300, 200}, "Discard?");
  dialog.button("Yes");
  notes.focusWindow(&dialog);
  desktop.images().encodingFails = PngError::failed;
  EXPECT_EQ(error("observe").at("code"), "image_encoding_failed");
  desktop.eventLog().clear();
  (void)result("input", {{"nodeId", text.at("id")}, {"kind", "scroll"}, {"deltaX", 300}});
  EXPECT_EQ(desktop.posted().front(), "move 128,463.68") << "at the left of the canvas";
}

TEST_F(TextFallback, ItsImageIsNotUsedForTheNextObservation) {
  (void)result("observe");
  window.button("Save");
  const std::size_t before = desktop.eventLog().count("window image");
  const Json observation = result("observe");
  EXPECT_EQ(desktop.eventLog().count("window image"), before + 1);
  EXPECT_EQ(observation.at("imageCapturedAt"), observation.at("capturedAt"));
}

TEST_F(TextFallback, ItsImageServesEvenWhenRecognitionFailed) {
  window.button("Save");
  desktop.recognizer().error = "no";
  (void)result("observe", {{"forceOcr", true}});
  EXPECT_EQ(desktop.eventLog().count("window image"), 2U);
}

}  // namespace
}  // namespace tarqo
