// The pointer's way to its target and what its button does there, to the millisecond.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

/// The button's middle is at 240,212. Connecting ends at 120 ms of virtual time, and so does
/// bringing the application forward at 240 ms.
class PointerEvents : public ConnectedScene {
 protected:
  PointerEvents() {
    save.withoutAction("AXPress");
    desktop.input().pointer.location = Point{180, 152};
  }

  Json click(const Json& args = Json::object()) {
    Json request = args;
    request["nodeId"] = idOf("Save");
    return result("click", request);
  }
};

TEST_F(PointerEvents, GlideInSixStepsRestAndPressTheButton) {
  (void)click();
  EXPECT_EQ(desktop.postedAt(), (Lines{"240 move 190,162", "270 move 200,172", "300 move 210,182",
                                       "330 move 220,192", "360 move 230,202", "390 move 240,212",
                                       "670 down(1) 240,212", "710 up(1) 240,212"}));
  EXPECT_EQ(save.clicks(), 1);
}

TEST_F(PointerEvents, EndFortyMillisecondsAfterTheButtonIsUp) {
  const std::string id = idOf("Save");
  EXPECT_EQ(millisecondsOf([&] {
              (void)result("click", {{"nodeId", id}});
            }),
            120 + 180 + 250 + 2 * 40);
}

TEST_F(PointerEvents, OfADoubleClickCountTheClicks) {
  (void)click({{"count", 2}});
  const Lines posted = desktop.postedAt();
  ASSERT_EQ(posted.size(), 10U);
  EXPECT_EQ(Lines(posted.begin() + 6, posted.end()),
            (Lines{"670 down(1) 240,212", "710 up(1) 240,212", "750 down(2) 240,212",
                   "790 up(2) 240,212"}));
}

TEST_F(PointerEvents, OfADoubleClickCostEightyMillisecondsMore) {
  const std::string id = idOf("Save");
  EXPECT_EQ(millisecondsOf([&] {
              (void)result("click", {{"nodeId", id}, {"count", 2}});
            }),
            120 + 180 + 250 + 4 * 40);
}

TEST_F(PointerEvents, ReachTheElementAsOneDoubleClick) {
  std::vector<int> states;
  save.onClick([&](int state) { states.push_back(state); });
  (void)click({{"count", 2}});
  EXPECT_EQ(states, (std::vector<int>{1, 2}));
}

TEST_F(PointerEvents, BeginFortyPointsAboveWhenThePointerCannotBeRead) {
  desktop.input().pointer.location.reset();
  save.at({200, 188, 80, 24});  // Its middle is at 240,200, so steps count from 240,160.
  (void)click();
  const Lines posted = desktop.posted();
  EXPECT_EQ(Lines(posted.begin(), posted.begin() + 6),
            (Lines{"move 240,166.667", "move 240,173.333", "move 240,180", "move 240,186.667",
                   "move 240,193.333", "move 240,200"}));
}

TEST_F(PointerEvents, GlideEvenWhenThePointerIsThereAlready) {
  desktop.input().pointer.location = Point{240, 212};
  (void)click();
  EXPECT_EQ(desktop.posted()[0], "move 240,212");
  EXPECT_EQ(desktop.posted().size(), 8U);
}

TEST_F(PointerEvents, HitAHalfPointInTheMiddle) {
  save.at({200, 200, 81, 25});
  (void)click();
  EXPECT_EQ(desktop.posted().back(), "up(1) 240.5,212.5");
}

TEST_F(PointerEvents, ThatCannotBeMadeAreLeftOutSilently) {
  desktop.input().refusesMouse = true;
  EXPECT_EQ(click().at("method"), "pointer");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(PointerEvents, NeverPressAButtonThatCouldNotBeLetGo) {
  desktop.input().refusesButtonsUp = true;
  EXPECT_EQ(click({{"count", 2}}).at("method"), "pointer-double");
  EXPECT_EQ(desktop.posted().size(), 6U);
  EXPECT_EQ(desktop.posted().back(), "move 240,212");
}

TEST_F(PointerEvents, ArePostedEvenWithoutASource) {
  desktop.input().refusesSources = true;
  (void)click();
  EXPECT_EQ(desktop.posted().size(), 8U);
}

TEST_F(PointerEvents, ShareOneSourceWithoutText) {
  (void)click({{"count", 2}});
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

// Recognised text. The window is 1024 x 512 points, so that a line's place is exact.

class TextClick : public Scene {
 protected:
  void SetUp() override {
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
    desktop.recognizer().lines = {{"Start", {0.125, 0.25, 0.25, 0.0625}, 1}};
    const Json observation = result("observe", {{"image", false}});
    id = nodeNamed(observation, "Start").at("id");
  }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 1024, 512}, "Canvas");
  std::string id;
};

TEST_F(TextClick, IsThePointersInTheMiddleOfTheLine) {
  int clicks = 0;
  window.onClick([&](int) { ++clicks; });
  const Json answer = result("click", {{"nodeId", id}});
  EXPECT_EQ(answer.at("method"), "pointer");
  EXPECT_EQ(answer.at("via"), "ocr");
  EXPECT_EQ(answer.size(), 4U);
  EXPECT_EQ(desktop.posted().back(), "up(1) 356,448");
  EXPECT_EQ(clicks, 1);
}

TEST_F(TextClick, IsOneClickWhateverTheCount) {
  EXPECT_EQ(result("click", {{"nodeId", id}, {"count", 2}}).at("method"), "pointer");
  EXPECT_EQ(desktop.posted().size(), 8U);
}

TEST_F(TextClick, BringsTheApplicationForwardFirst) {
  desktop.app("com.example.Other").bringToFront();
  notes.facts.comesToFront.reset();
  EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), "focus_failed");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(TextClick, StaysWhereTheTextWasSeen) {
  window.moveTo({110, 80});
  (void)result("click", {{"nodeId", id}});
  EXPECT_EQ(desktop.posted().back(), "up(1) 356,448");
}

TEST_F(TextClick, HitsWhateverTheWindowShowsThere) {
  window.group("canvas").at({100, 80, 1024, 512});
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "pointer");
}

TEST_F(TextClick, OfALineThatIsNotClickableIsNotRefused) {
  window.button("Start now").at({228, 432, 256, 32});
  const Json observation = result("observe", {{"image", false}, {"forceOcr", true}});
  const Json line = nodeNamed(observation, "Start");
  EXPECT_EQ(line.at("clickable"), false);
  EXPECT_EQ(result("click", {{"nodeId", line.at("id")}}).at("via"), "ocr");
}

TEST_F(TextClick, SpendsEveryNode) {
  (void)result("click", {{"nodeId", id}});
  EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), "stale_snapshot");
}

}  // namespace
}  // namespace tarqo
