// Scrolling: by the wheel, and by the two gestures that stand in for it.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

/// The field's middle is at 300,252. Connecting ends at 120 ms of virtual time, and bringing the
/// application forward at 240 ms. The inner area of the window is 744 x 544 points at 128,108.
class Scrolling : public ConnectedScene {
 protected:
  static constexpr const char* kUnbounded = "invalid_argument: Provide bounded scroll input.";
  static constexpr const char* kTooSmall = "input_failed: Swipe target is too small.";

  Json scrolling(const Json& deltas) {
    Json request = deltas;
    request["nodeId"] = idOf("hello");
    request["kind"] = "scroll";
    desktop.eventLog().clear();
    return request;
  }

  std::string refusal(const Json& deltas) {
    const std::string refused = failure("input", scrolling(deltas));
    EXPECT_EQ(desktop.posted(), Lines{}) << deltas;
    return refused;
  }

  // What is posted.
  Lines scroll(const Json& deltas) {
    EXPECT_EQ(result("input", scrolling(deltas)).at("method"), "pointer");
    return desktop.posted();
  }
};

// How far.

TEST_F(Scrolling, NeedsADistance) {
  EXPECT_EQ(refusal(Json::object()), kUnbounded);
  EXPECT_EQ(refusal({{"deltaX", 0}, {"deltaY", 0}}), kUnbounded);
}

TEST_F(Scrolling, ByWhatIsNoIntegerCountsAsNone) {
  for (const Json& delta : {Json(1.5), Json("120"), Json(true), Json(nullptr), Json({120})}) {
    EXPECT_EQ(refusal({{"deltaY", delta}}), kUnbounded) << delta;
    EXPECT_EQ(refusal({{"deltaX", delta}}), kUnbounded) << delta;
  }
  EXPECT_EQ(scroll({{"deltaX", 1.5}, {"deltaY", 120}}).back(), "scroll -120");
}

TEST_F(Scrolling, IsBounded) {
  for (const std::int64_t delta :
       {std::int64_t{2001}, std::int64_t{-2001}, INT64_MAX, INT64_MIN, std::int64_t{1} << 32}) {
    EXPECT_EQ(refusal({{"deltaY", delta}}), kUnbounded) << delta;
    EXPECT_EQ(refusal({{"deltaX", delta}}), kUnbounded) << delta;
    EXPECT_EQ(refusal({{"deltaX", 10}, {"deltaY", delta}}), kUnbounded) << delta;
  }
  EXPECT_EQ(scroll({{"deltaY", 2000}}).back(), "scroll -2000");
  EXPECT_EQ(scroll({{"deltaY", -2000}}).back(), "scroll 2000");
}

TEST_F(Scrolling, IsBoundedBeforeTheForegroundIsAwaited) {
  const Json request = scrolling(Json::object());
  desktop.after(110ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(failure("input", request), kUnbounded);
}

// By the wheel.

TEST_F(Scrolling, DownTurnsTheWheelOverTheNode) {
  const Json request = scrolling({{"deltaY", 120}});
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(result("input", request), Json({{"method", "pointer"},
                                                        {"nodeId", request.at("nodeId")},
                                                        {"at", "2025-01-01T00:00:00.390Z"}}));
            }),
            120 + 150);
  EXPECT_EQ(desktop.postedAt(), (Lines{"240 move 300,252", "240 scroll -120"}));
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

TEST_F(Scrolling, FarUpTurnsTheWheelToo) {
  EXPECT_EQ(scroll({{"deltaY", -401}}), (Lines{"move 300,252", "scroll 401"}));
}

TEST_F(Scrolling, TurnsTheWheelForASinglePoint) {
  EXPECT_EQ(scroll({{"deltaY", 1}}), (Lines{"move 300,252", "scroll -1"}));
}

TEST_F(Scrolling, WithoutAWheelEventIsAFailure) {
  desktop.input().refusesScroll = true;
  EXPECT_EQ(failure("input", scrolling({{"deltaY", 120}})),
            "input_failed: Could not create a scroll event.");
  EXPECT_EQ(desktop.posted(), Lines{"move 300,252"});
}

TEST_F(Scrolling, TurnsTheWheelWithoutMovingThePointerOnlyWhereItIsOverTheTarget) {
  desktop.input().refusesMouse = true;
  EXPECT_EQ(refusal({{"deltaY", 120}}),
            "target_covered: Another application's window covers the click position");
  desktop.input().pointer.location = {300, 252};
  EXPECT_EQ(scroll({{"deltaY", 120}}), Lines{"scroll -120"});
}

// By the wheel alone, where content does not move by being dragged.

class ScrollingByTheWheelAlone : public Scrolling {
 protected:
  ScrollingByTheWheelAlone() { desktop.input().scrollsByWheelAlone = true; }
};

TEST_F(ScrollingByTheWheelAlone, TurnsItForALittleUp) {
  EXPECT_EQ(scroll({{"deltaY", -120}}), (Lines{"move 300,252", "scroll 120"}));
}

TEST_F(ScrollingByTheWheelAlone, TurnsItSidewaysTowardsWhatIsShownNext) {
  EXPECT_EQ(scroll({{"deltaX", 300}}), (Lines{"move 300,252", "scroll sideways -300"}));
  EXPECT_EQ(scroll({{"deltaX", -300}}), (Lines{"move 300,252", "scroll sideways 300"}));
}

TEST_F(ScrollingByTheWheelAlone, GoesUpOrDownBeforeItGoesSideways) {
  EXPECT_EQ(scroll({{"deltaX", 10}, {"deltaY", 500}}),
            (Lines{"move 300,252", "scroll -500", "move 300,252", "scroll sideways -10"}));
}

TEST_F(ScrollingByTheWheelAlone, ProvesTheNodeBeforeEveryTurn) {
  const Json request = scrolling({{"deltaX", 10}, {"deltaY", 500}});
  desktop.input().beforePost = [this](const InputEvent& event) {
    if (const auto* turn = std::get_if<ScrollEvent>(&event); turn != nullptr && turn->pixels != 0) {
      field.remove();
    }
  };
  EXPECT_EQ(failure("input", request).substr(0, 13), "stale_target:");
  EXPECT_EQ(desktop.posted(), (Lines{"move 300,252", "scroll -500", "move 300,252"}));
}

// A short way up: a pull downward from the middle.

TEST_F(Scrolling, ALittleUpPullsDownFromTheMiddle) {
  const Json request = scrolling({{"deltaY", -120}});
  EXPECT_EQ(millisecondsOf([&] { (void)result("input", request); }), 120 + 12 + 12 + 6 * 10 + 350);
  EXPECT_EQ(desktop.postedAt(),
            (Lines{"240 move 500,380", "252 down(1) 500,380", "264 drag(1) 500,398.333",
                   "274 drag(1) 500,416.667", "284 drag(1) 500,435", "294 drag(1) 500,453.333",
                   "304 drag(1) 500,471.667", "314 drag(1) 500,490", "324 up(1) 500,490"}));
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

TEST_F(Scrolling, PullsTheSameWayWhateverTheShortDistance) {
  for (const int delta : {-1, -400}) {
    const Lines posted = scroll({{"deltaY", delta}});
    EXPECT_EQ(posted.front(), "move 500,380") << delta;
    EXPECT_EQ(posted.back(), "up(1) 500,490") << delta;
  }
}

TEST_F(Scrolling, PullsNoFurtherThanFourPointsAboveTheInnerEdge) {
  window.resize({800, 200});  // The inner area ends at 252, its middle is at 180.
  field.at({200, 140, 200, 24});
  const Lines posted = scroll({{"deltaY", -120}});
  EXPECT_EQ(posted.front(), "move 500,180");
  EXPECT_EQ(posted.back(), "up(1) 500,248");
}

TEST_F(Scrolling, PullsInAWindowFiftyPointsHigh) {
  window.resize({800, 50});  // Its inner area is 33 points high, from 88.333 to 121.667.
  field.at({200, 90, 200, 24});
  const Lines posted = scroll({{"deltaY", -120}});
  EXPECT_EQ(posted.front(), "move 500,105");
  EXPECT_EQ(posted.back(), "up(1) 500,117.667");
}

// Sideways: a swipe across the lower part.

TEST_F(Scrolling, SidewaysSwipesFasterAndFaster) {
  const Json request = scrolling({{"deltaX", 320}});
  EXPECT_EQ(millisecondsOf([&] { (void)result("input", request); }), 120 + 12 + 12 + 8 * 8 + 500);
  EXPECT_EQ(desktop.postedAt(),
            (Lines{"240 move 128,532.32", "252 down(1) 128,532.32", "264 drag(1) 133,532.32",
                   "272 drag(1) 148,532.32", "280 drag(1) 173,532.32", "288 drag(1) 208,532.32",
                   "296 drag(1) 253,532.32", "304 drag(1) 308,532.32", "312 drag(1) 373,532.32",
                   "320 drag(1) 448,532.32", "328 up(1) 448,532.32"}));
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

TEST_F(Scrolling, SwipesFromTheLeftEdgeOfANarrowerWindowToo) {
  window.resize({600, 600});
  const Lines posted = scroll({{"deltaX", 300}});
  EXPECT_EQ(posted.front(), "move 128,532.32");
  EXPECT_EQ(posted.back(), "up(1) 428,532.32");
}

TEST_F(Scrolling, TheOtherWaySwipesFromTheOtherEdge) {
  const Lines posted = scroll({{"deltaX", -100}});
  EXPECT_EQ(posted.front(), "move 872,532.32");
  EXPECT_EQ(posted.back(), "up(1) 772,532.32");
}

TEST_F(Scrolling, SwipesNoFurtherThanTheOtherEdge) {
  EXPECT_EQ(scroll({{"deltaX", -2000}}).back(), "up(1) 128,532.32");
  EXPECT_EQ(scroll({{"deltaX", 2000}}).back(), "up(1) 872,532.32");
}

TEST_F(Scrolling, SwipesAShortWayAsItIs) {
  EXPECT_EQ(scroll({{"deltaX", 8}}).back(), "up(1) 136,532.32");
}

TEST_F(Scrolling, SidewaysGoesBeforeUpAndDown) {
  const Lines posted = scroll({{"deltaX", 10}, {"deltaY", 500}});
  EXPECT_EQ(posted.front(), "move 128,532.32");
  EXPECT_EQ(posted.back(), "up(1) 138,532.32");
  EXPECT_EQ(scroll({{"deltaX", -10}, {"deltaY", -10}}).front(), "move 872,532.32");
}

TEST_F(Scrolling, DragsPostedInPartAreNoFailure) {
  desktop.input().refusesMouse = true;
  EXPECT_EQ(scroll({{"deltaX", 320}}), Lines{});
  EXPECT_EQ(scroll({{"deltaY", -120}}), Lines{});
}

TEST_F(Scrolling, NeverBeginsADragThatCouldNotEnd) {
  desktop.input().refusesButtonsUp = true;
  EXPECT_EQ(scroll({{"deltaX", 320}}), Lines{"move 128,532.32"});
  EXPECT_EQ(scroll({{"deltaY", -120}}), Lines{"move 500,380"});
}

// Where gestures happen.

TEST_F(Scrolling, NeedsRoomForAGesture) {
  window.resize({12, 600});
  field.at({104, 240, 4, 24});
  EXPECT_EQ(refusal({{"deltaX", 100}}), kTooSmall);
  EXPECT_EQ(refusal({{"deltaY", -100}}), kTooSmall);
}

TEST_F(Scrolling, NeedsMoreThanEightPointsOfRoom) {
  window.resize({800, 12});  // Its inner area is exactly 8 points high.
  field.at({200, 82, 200, 8});
  EXPECT_EQ(failure("input", scrolling({{"deltaY", -120}})), kTooSmall);
  window.resize({800, 12.75});
  EXPECT_EQ(scroll({{"deltaY", -120}}).size(), 9U);
}

TEST_F(Scrolling, NeedsNoRoomForTheWheel) {
  window.resize({800, 12});
  field.at({200, 82, 200, 8});
  EXPECT_EQ(scroll({{"deltaY", 120}}).back(), "scroll -120");
}

TEST_F(Scrolling, ByAGestureIsRefusedWheneverTheWindowLosesItsPlaceBefore) {
  int refused = 0;
  for (bool lost = true; lost; ++refused) {
    window.failing("AXSize", false);
    const Json request = scrolling({{"deltaX", 100}});
    lost = false;
    notes.afterCalls(refused + 1, [&] {
      window.failing("AXSize");
      lost = true;
    });
    const Json response = call("input", request);
    EXPECT_EQ(response.contains("error"), lost) << response;
    EXPECT_EQ(desktop.posted().empty() || desktop.posted().back().starts_with("move"), lost);
  }
  EXPECT_GT(refused, 8);
}

// Recognised text. The window is 1024 x 512 points, so that a line's place is exact.

class ScrollingRecognisedText : public Scene {
 protected:
  void SetUp() override {
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
    desktop.recognizer().lines = {{"Start", {0.125, 0.25, 0.25, 0.125}, 1}};
    const Json observation = result("observe", {{"image", false}});
    id = nodeNamed(observation, "Start").at("id");
    desktop.eventLog().clear();
  }

  Json scroll(Json request) {
    request["nodeId"] = id;
    request["kind"] = "scroll";
    return call("input", request);
  }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 1024, 512}, "Canvas");
  std::string id;
};

TEST_F(ScrollingRecognisedText, TurnsTheWheelInItsMiddleWithoutAHitTest) {
  desktop.accessibility().hitTestFails = true;
  const Json answer = scroll({{"deltaY", 120}}).at("result");
  EXPECT_EQ(answer, Json({{"method", "pointer"}, {"nodeId", id}, {"at", answer.at("at")}}));
  EXPECT_EQ(desktop.posted(), (Lines{"move 356,432", "scroll -120"}));
}

TEST_F(ScrollingRecognisedText, HappensInTheWindow) {
  (void)scroll({{"deltaX", -2000}});
  EXPECT_EQ(desktop.posted().front(), "move 1096,463.68");
}

TEST_F(ScrollingRecognisedText, BySwipingIsRefusedWhenTheWindowHasNoPlace) {
  window.failing("AXSize");
  EXPECT_EQ(scroll({{"deltaX", -2000}}).at("error").at("code"), "not_visible");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(ScrollingRecognisedText, ByTheWheelIsRefusedWhenTheWindowHasNoPlace) {
  window.failing("AXSize");
  EXPECT_EQ(scroll({{"deltaY", 120}}).at("error").at("code"), "not_visible");
  EXPECT_EQ(desktop.eventLog().count("scroll"), 0U);
}

TEST_F(ScrollingRecognisedText, IsRefusedBehindAnotherApplication) {
  desktop.after(110ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(scroll({{"deltaY", 120}}).at("error").at("code"), "target_covered");
  EXPECT_EQ(desktop.posted(), Lines{});
}

}  // namespace
}  // namespace tarqo
