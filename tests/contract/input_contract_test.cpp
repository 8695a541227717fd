// input_events.h

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

class InputContract : public TargetContract {
 protected:
  void post(EventSource* source, const InputEvent& event) {
    const auto created = input.create(source, event);
    ASSERT_NE(created, nullptr);
    input.post(*created);
    clock.runLoopFor(30ms);
  }

  void click(Point point, MouseEventType down, MouseEventType up) {
    const auto source = input.makeSource("");
    post(source.get(), MouseEvent{MouseEventType::moved, point, 0});
    post(source.get(), MouseEvent{down, point, 1});
    post(source.get(), MouseEvent{up, point, 1});
  }

  [[nodiscard]] Point centre(const Element& element) const {
    return frame(element).value_or(Rect{}).center();
  }

  InputEvents& input = platform.inputEvents;
};

TEST_F(InputContract, CreatesEventsWithAndWithoutASource) {
  const auto source = input.makeSource("한a");
  EXPECT_NE(source, nullptr);
  for (EventSource* each : {source.get(), static_cast<EventSource*>(nullptr)}) {
    EXPECT_NE(input.create(each, MouseEvent{MouseEventType::moved, {10, 10}, 0}), nullptr);
    EXPECT_NE(input.create(each, KeyEvent{36, true, 0}), nullptr);
    EXPECT_NE(input.create(each, ScrollEvent{-120}), nullptr);
  }
  EXPECT_NE(input.create(source.get(), TextEvent{"한", true}), nullptr);
}

TEST_F(InputContract, DoesNothingBeforeAnEventIsPosted) {
  post(nullptr, MouseEvent{MouseEventType::moved, {200, 200}, 0});
  ASSERT_TRUE(waitUntil([&] { return input.pointerLocation() == Point{200, 200}; }));

  EXPECT_NE(input.create(nullptr, MouseEvent{MouseEventType::moved, {300, 300}, 0}), nullptr);
  clock.runLoopFor(100ms);

  EXPECT_EQ(input.pointerLocation(), (Point{200, 200}));
}

TEST_F(InputContract, MovesThePointer) {
  for (const Point point : {Point{200, 150}, Point{33, 44}}) {
    post(nullptr, MouseEvent{MouseEventType::moved, point, 0});
    EXPECT_TRUE(waitUntil([&] { return input.pointerLocation() == point; }));
  }
}

TEST_F(InputContract, ClicksOnce) {
  click(centre(control("AXButton", "Save")), MouseEventType::leftDown, MouseEventType::leftUp);

  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; })) << status();
  clock.runLoopFor(300ms);
  EXPECT_EQ(status(), "Status: saved 1");
}

TEST_F(InputContract, DoesNotClickWithTheOtherButton) {
  click(centre(control("AXButton", "Save")), MouseEventType::rightDown, MouseEventType::rightUp);
  clock.runLoopFor(300ms);
  EXPECT_EQ(status(), "Status: idle");
}

TEST_F(InputContract, PressesKeysWithTheirOwnModifiersAlone) {
  constexpr std::uint16_t kReturn = 36;
  if (!target->keys()) {
    GTEST_SKIP() << "this backend's test application does not write down its keys";
  }
  std::vector<std::string> expected;
  for (const bool isShiftHeld : {false, true}) {
    if (isShiftHeld && !backend->holdShift(true)) {
      break;
    }
    const auto source = input.makeSource("");
    for (const auto& [modifiers, name] :
         {std::pair<Modifiers, const char*>{0, "key Return"},
          std::pair<Modifiers, const char*>{kModifierControl, "key Control+Return"},
          std::pair<Modifiers, const char*>{kModifierControl | kModifierAlternate | kModifierShift,
                                            "key Control+Alt+Shift+Return"}}) {
      post(source.get(), KeyEvent{kReturn, true, modifiers});
      post(source.get(), KeyEvent{kReturn, false, modifiers});
      expected.emplace_back(name);
    }
  }
  (void)backend->holdShift(false);
  EXPECT_TRUE(waitUntil([&] { return target->keys()->size() >= expected.size(); }));
  EXPECT_EQ(*target->keys(), expected);
}

TEST_F(InputContract, PostsToTheProcessThatGetsTheEventAlone) {
  constexpr std::uint16_t kReturn = 36;
  const auto other = backend->startTarget("Other", {780, 300, 300, 200});
  bringToFront(*target);
  const Point save = centre(control("AXButton", "Save"));
  const auto source = input.makeSource("");
  post(source.get(), MouseEvent{MouseEventType::moved, save, 0});
  // A button that is down would have grabbed the pointer for the scrolling after it.
  const InputEvent acting[] = {KeyEvent{kReturn, true, 0}, ScrollEvent{-40},
                               MouseEvent{MouseEventType::leftDown, save, 1}};
  for (const InputEvent& event : acting) {
    const auto created = input.create(source.get(), event);
    ASSERT_NE(created, nullptr);
    EXPECT_FALSE(input.postTo(other->pid(), *created));
    EXPECT_TRUE(input.postTo(target->pid(), *created));
  }
  post(source.get(), KeyEvent{kReturn, false, 0});
  post(source.get(), MouseEvent{MouseEventType::leftUp, save, 1});
  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; })) << status();
}

TEST_F(InputContract, TypesTextIntoTheFocusedField) {
  const Element field = control("AXTextField", "Name");
  click(centre(field), MouseEventType::leftDown, MouseEventType::leftUp);
  ASSERT_TRUE(waitUntil([&] { return read<bool>(field, "AXFocused") == true; }));

  const auto source = input.makeSource("Hi 한글é😀");
  for (const char* cluster : {"H", "i", " ", "한", "글", "é", "😀"}) {
    post(source.get(), TextEvent{cluster, true});
    post(source.get(), TextEvent{cluster, false});
  }

  EXPECT_TRUE(waitUntil([&] { return text(field, "AXValue") == "Hi 한글é😀"; }))
      << text(field, "AXValue");
}

}  // namespace
}  // namespace tarqo::contract
