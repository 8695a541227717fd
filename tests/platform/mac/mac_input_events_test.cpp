#include "platform/mac/mac_input_events.h"

#include <signal.h>

#include <cstdio>
#include <utility>

#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::EventFields;

class InputEventsTest : public MacTest {
 protected:
  InputEventsTest() { quartz.heldModifiers = kCGEventFlagMaskCommand | kCGEventFlagMaskShift; }

  /// What is posted for one event.
  std::vector<EventFields> post(const InputEvent& event) {
    quartz.posted.clear();
    const auto created = input.create(source.get(), event);
    EXPECT_NE(created, nullptr);
    EXPECT_TRUE(quartz.posted.empty()) << "before it is posted";
    if (created != nullptr) {
      input.post(*created);
    }
    std::vector<EventFields> events;
    for (const standin::Posted& each : quartz.posted) {
      EXPECT_EQ(each.tap, kCGHIDEventTap);
      events.push_back(each.event);
    }
    return events;
  }
  EventFields postOne(const InputEvent& event) {
    const std::vector<EventFields> events = post(event);
    EXPECT_EQ(events.size(), 1u);
    return events.empty() ? EventFields{} : events.front();
  }

  std::optional<Pid> front = 700;
  std::vector<WindowInfo> windows;
  MacInputEvents input{[this] { return front; }, [this] { return windows; }};
  std::unique_ptr<EventSource> source = input.makeSource("");
};

struct MouseCase {
  MouseEventType type;
  int clickState;
  CGEventType expected;
  CGMouseButton button;
};

TEST_F(InputEventsTest, PostsEveryMouseEventFieldByField) {
  const MouseCase cases[] = {
      {MouseEventType::moved, 0, kCGEventMouseMoved, kCGMouseButtonLeft},
      {MouseEventType::leftDown, 1, kCGEventLeftMouseDown, kCGMouseButtonLeft},
      {MouseEventType::leftUp, 1, kCGEventLeftMouseUp, kCGMouseButtonLeft},
      {MouseEventType::leftDown, 2, kCGEventLeftMouseDown, kCGMouseButtonLeft},
      {MouseEventType::leftUp, 2, kCGEventLeftMouseUp, kCGMouseButtonLeft},
      {MouseEventType::leftDragged, 0, kCGEventLeftMouseDragged, kCGMouseButtonLeft},
      {MouseEventType::rightDown, 1, kCGEventRightMouseDown, kCGMouseButtonRight},
      {MouseEventType::rightUp, 1, kCGEventRightMouseUp, kCGMouseButtonRight},
  };
  for (const MouseCase& each : cases) {
    const EventFields event = postOne(MouseEvent{each.type, {12.5, -40}, each.clickState});
    EXPECT_EQ(event.type, each.expected);
    EXPECT_EQ(event.button, each.button);
    EXPECT_EQ(event.at->x, 12.5);
    EXPECT_EQ(event.at->y, -40);
    EXPECT_EQ(event.flags, 0u) << "whatever the user holds";
    EXPECT_EQ(event.source, "state 0");
    const std::map<int, std::int64_t> clickState{{kCGMouseEventClickState, each.clickState}};
    EXPECT_EQ(event.integers, each.clickState == 0 ? decltype(event.integers){} : clickState);
  }
}

TEST_F(InputEventsTest, PostsAKeyWithExactlyItsModifiers) {
  for (const bool down : {true, false}) {
    const EventFields event = postOne(KeyEvent{36, down, kModifierCommand | kModifierAlternate});
    EXPECT_EQ(event.type, down ? kCGEventKeyDown : kCGEventKeyUp);
    EXPECT_EQ(event.key, 36);
    EXPECT_EQ(event.down, down);
    EXPECT_EQ(event.flags, kCGEventFlagMaskCommand | kCGEventFlagMaskAlternate);
    EXPECT_EQ(event.text, u"");
    EXPECT_EQ(event.source, "state 0");
  }
}

TEST_F(InputEventsTest, ClearsTheModifiersThatAKeyDoesNotHave) {
  EXPECT_EQ(postOne(KeyEvent{36, true, 0}).flags, 0u);
}

TEST_F(InputEventsTest, PostsTextOnAKeyThatGoesDownAndUp) {
  for (const bool down : {true, false}) {
    const EventFields event = postOne(TextEvent{"한", down});
    EXPECT_EQ(event.type, down ? kCGEventKeyDown : kCGEventKeyUp);
    EXPECT_EQ(event.key, 0);
    EXPECT_EQ(event.text, u"한");
    EXPECT_EQ(event.flags, 0u);
    EXPECT_EQ(event.source, "state 0");
  }
}

TEST_F(InputEventsTest, PostsAComposedEmojiOnOneKey) {
  EXPECT_EQ(postOne(TextEvent{"\U0001F44D\U0001F3FD", true}).text, u"\U0001F44D\U0001F3FD");
}

TEST_F(InputEventsTest, PostsTwentyUnitsOnOneKey) {
  EXPECT_EQ(postOne(TextEvent{std::string(20, 'a'), true}).text, std::u16string(20, u'a'));
}

TEST_F(InputEventsTest, SharesALongClusterOutToSeveralKeys) {
  std::string cluster = "e";
  std::u16string units = u"e";
  for (int i = 0; i < 44; ++i) {
    cluster += "\u0301";
    units += u'\u0301';
  }
  const std::vector<EventFields> down = post(TextEvent{cluster, true});
  const std::vector<EventFields> up = post(TextEvent{cluster, false});
  ASSERT_EQ(down.size(), 5u);
  ASSERT_EQ(up.size(), 1u);
  const std::u16string pieces[] = {units.substr(0, 20), units.substr(20, 20), units.substr(40)};
  const std::pair<std::u16string, bool> expected[] = {{pieces[0], true},
                                                      {pieces[0], false},
                                                      {pieces[1], true},
                                                      {pieces[1], false},
                                                      {pieces[2], true}};
  for (std::size_t i = 0; i < down.size(); ++i) {
    EXPECT_EQ(down[i].text, expected[i].first);
    EXPECT_EQ(down[i].down, expected[i].second);
  }
  EXPECT_EQ(up[0].text, pieces[2]);
  EXPECT_EQ(up[0].down, false);
}

TEST_F(InputEventsTest, TearsNoSurrogatePair) {
  // The pair would be units 20 and 21.
  const std::vector<EventFields> down =
      post(TextEvent{std::string(19, 'a') + "\U0001F600" + "b", true});
  ASSERT_EQ(down.size(), 3u);
  EXPECT_EQ(down[0].text, std::u16string(19, u'a'));
  EXPECT_EQ(down[2].text, u"\U0001F600b");
}

TEST_F(InputEventsTest, MakesNoKeyWithoutText) {
  // It would be the key of the letter A.
  EXPECT_EQ(input.create(source.get(), TextEvent{"", true}), nullptr);
  EXPECT_EQ(input.create(source.get(), TextEvent{"\xff", true}), nullptr);
}

TEST_F(InputEventsTest, PostsATurnOfTheWheelInPixels) {
  for (const std::int32_t pixels : {-120, 401}) {
    const EventFields event = postOne(ScrollEvent{pixels});
    EXPECT_EQ(event.type, kCGEventScrollWheel);
    EXPECT_EQ(event.unit, kCGScrollEventUnitPixel);
    EXPECT_EQ(event.wheels, std::vector<std::int32_t>{pixels});
    EXPECT_EQ(event.flags, 0u);
    EXPECT_EQ(event.source, "state 0");
  }
}

TEST_F(InputEventsTest, MakesEventsWithoutASource) {
  quartz.refusesSources = true;
  source = input.makeSource("abc");
  EXPECT_EQ(source, nullptr);
  EXPECT_EQ(postOne(KeyEvent{36, true, 0}).source, "none");
  EXPECT_EQ(postOne(MouseEvent{}).source, "none");
  EXPECT_EQ(postOne(TextEvent{"a", true}).source, "none");
  EXPECT_EQ(postOne(ScrollEvent{5}).source, "none");
}

TEST_F(InputEventsTest, MakesNothingThatTheSystemCannot) {
  quartz.eventsLeft = 0;
  EXPECT_EQ(input.create(source.get(), MouseEvent{MouseEventType::leftDown, {}, 1}), nullptr);
  EXPECT_EQ(input.create(source.get(), KeyEvent{36, true, 0}), nullptr);
  EXPECT_EQ(input.create(source.get(), TextEvent{"a", true}), nullptr);
  EXPECT_EQ(input.create(source.get(), ScrollEvent{5}), nullptr);
}

TEST_F(InputEventsTest, MakesNoPartOfAClusterThatCannotBeMadeWhole) {
  for (int made = 0; made < 3; ++made) {
    quartz.eventsLeft = made;
    EXPECT_EQ(input.create(source.get(), TextEvent{std::string(25, 'a'), true}), nullptr);
  }
}

TEST_F(InputEventsTest, PostsAnEventAfterItsSourceIsGone) {
  const auto created = input.create(source.get(), KeyEvent{36, true, 0});
  source.reset();
  input.post(*created);
  EXPECT_EQ(quartz.posted.size(), 1u);
}

TEST_F(InputEventsTest, PostsKeysOnlyToTheApplicationInFront) {
  const InputEvent keys[] = {KeyEvent{36, true, 0}, TextEvent{"a", true}};
  for (const InputEvent& key : keys) {
    const auto created = input.create(source.get(), key);
    EXPECT_TRUE(input.postTo(700, *created));
    EXPECT_EQ(quartz.posted.size(), 1u);
    front = 701;
    EXPECT_FALSE(input.postTo(700, *created));
    front.reset();
    EXPECT_FALSE(input.postTo(700, *created));
    EXPECT_EQ(quartz.posted.size(), 1u);
    front = 700;
    quartz.posted.clear();
  }
}

TEST_F(InputEventsTest, AsksForTheApplicationInFrontAnewBeforeEachKey) {
  int asked = 0;
  MacInputEvents counting([&] { return ++asked < 3 ? std::optional<Pid>(700) : std::nullopt; },
                          [&] { return windows; });
  const auto created = counting.create(source.get(), KeyEvent{36, true, 0});
  EXPECT_TRUE(counting.postTo(700, *created));
  EXPECT_TRUE(counting.postTo(700, *created));
  EXPECT_FALSE(counting.postTo(700, *created));
}

// In a process of its own: asked to end while something is down, it ends only after the release.
class EndingInputDeathTest : public InputEventsTest {
 protected:
  EndingInputDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }

  void pressAndBeAskedToEnd(const InputEvent& down, const InputEvent& up) {
    const auto press = input.create(nullptr, down);
    const auto release = input.create(nullptr, up);
    input.post(*press);
    (void)raise(SIGTERM);
    std::fprintf(stderr, "still there");
    input.post(*release);
    std::fprintf(stderr, "not ended");
  }
};

TEST_F(EndingInputDeathTest, WaitsForTheReleaseOfAButton) {
  EXPECT_EXIT(pressAndBeAskedToEnd(MouseEvent{MouseEventType::leftDown, {5, 5}, 1},
                                   MouseEvent{MouseEventType::leftUp, {5, 5}, 1}),
              testing::KilledBySignal(SIGTERM), "^still there$");
}

TEST_F(EndingInputDeathTest, WaitsForTheReleaseOfAKey) {
  EXPECT_EXIT(pressAndBeAskedToEnd(KeyEvent{36, true, 0}, KeyEvent{36, false, 0}),
              testing::KilledBySignal(SIGTERM), "^still there$");
  EXPECT_EXIT(pressAndBeAskedToEnd(TextEvent{"a", true}, TextEvent{"a", false}),
              testing::KilledBySignal(SIGTERM), "^still there$");
}

TEST_F(EndingInputDeathTest, WaitsForNothingOnceAllIsReleased) {
  EXPECT_EXIT(pressAndBeAskedToEnd(MouseEvent{MouseEventType::leftUp, {5, 5}, 1},
                                   MouseEvent{MouseEventType::moved, {5, 5}, 0}),
              testing::KilledBySignal(SIGTERM), "^$");
}

WindowInfo window(Pid owner, const Rect& bounds, int layer = 0, double alpha = 1) {
  return {1, owner, "Owner", bounds, layer, alpha, "Title", std::nullopt};
}

class ReceiverTest : public InputEventsTest {
 protected:
  ReceiverTest() { quartz.pointer = {50, 50}; }

  /// Whether a button and a turn of the wheel at 50,50 would reach the process 700.
  std::string reached() {
    const bool button = input.postTo(
        700, *input.create(nullptr, MouseEvent{MouseEventType::leftDown, {50, 50}, 1}));
    const bool wheel = input.postTo(700, *input.create(nullptr, ScrollEvent{5}));
    EXPECT_EQ(quartz.posted.size(), static_cast<std::size_t>(button) + (wheel ? 1 : 0));
    quartz.posted.clear();
    return std::string(button ? "button" : "-") + (wheel ? " wheel" : " -");
  }
};

TEST_F(ReceiverTest, IsTheOwnerOfTheUppermostWindowThere) {
  windows = {window(700, {0, 0, 100, 100}), window(701, {0, 0, 500, 500})};
  EXPECT_EQ(reached(), "button wheel");
  std::swap(windows[0], windows[1]);
  EXPECT_EQ(reached(), "- -");
}

TEST_F(ReceiverTest, IsNobodyWhereThereIsNoWindow) {
  windows = {window(700, {60, 60, 100, 100})};
  EXPECT_EQ(reached(), "- -");
  windows.clear();
  EXPECT_EQ(reached(), "- -");
}

TEST_F(ReceiverTest, MayBeUnderAnOverlayOrHaveAMenuOverAnother) {
  windows = {window(701, {0, 0, 500, 500}, 25), window(702, {0, 0, 500, 500}, 0, 0),
             window(700, {0, 0, 100, 100})};
  EXPECT_EQ(reached(), "button wheel");
  windows = {window(700, {40, 40, 20, 20}, 101), window(701, {0, 0, 500, 500})};
  EXPECT_EQ(reached(), "button wheel");
}

TEST_F(ReceiverTest, OfWhatFollowsAButtonIsWhoeverGotThat) {
  for (const MouseEventType type :
       {MouseEventType::leftUp, MouseEventType::leftDragged, MouseEventType::rightUp}) {
    EXPECT_TRUE(input.postTo(700, *input.create(nullptr, MouseEvent{type, {50, 50}, 1})));
  }
}

TEST_F(ReceiverTest, OfTheWheelIsNobodyWhileThePointerCannotBeRead) {
  windows = {window(700, {0, 0, 100, 100})};
  const auto wheel = input.create(nullptr, ScrollEvent{5});
  quartz.eventsLeft = 0;
  EXPECT_FALSE(input.postTo(700, *wheel));
  EXPECT_TRUE(quartz.posted.empty());
}

TEST_F(InputEventsTest, ReadsWhereThePointerIs) {
  quartz.pointer = {640.5, -12};
  EXPECT_EQ(input.pointerLocation(), (Point{640.5, -12}));
  quartz.eventsLeft = 0;
  EXPECT_EQ(input.pointerLocation(), std::nullopt);
}

}  // namespace
}  // namespace tarqo::mac
