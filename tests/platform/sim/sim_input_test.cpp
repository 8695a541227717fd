#include "platform/sim/sim_input.h"

#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimInput : public testing::Test {
 protected:
  void post(const InputEvent& event) {
    const auto created = input.create(nullptr, event);
    ASSERT_NE(created, nullptr);
    input.post(*created);
  }

  void click(Point point, int clickState = 1) {
    post(MouseEvent{MouseEventType::leftDown, point, clickState});
    post(MouseEvent{MouseEventType::leftUp, point, clickState});
  }

  Desktop desktop;
  InputEventsService& input = desktop.input();
  App& notes = desktop.app("com.example.Notes");
  Window& window = notes.window({100, 80, 800, 600});
  Node& save = window.button("Save").at({200, 200, 80, 24});
};

TEST_F(SimInput, IsWrittenDown) {
  post(MouseEvent{MouseEventType::moved, {412, 300.5}, 0});
  desktop.run(30ms);
  post(MouseEvent{MouseEventType::leftDown, {412, 300}, 1});
  post(MouseEvent{MouseEventType::leftDragged, {413, 300}, 0});
  post(MouseEvent{MouseEventType::leftUp, {413, 300}, 2});
  post(MouseEvent{MouseEventType::rightDown, {1.0 / 3, -4}, 1});
  post(MouseEvent{MouseEventType::rightUp, {0, 0}, 1});
  post(KeyEvent{36, true, kModifierCommand | kModifierShift});
  post(KeyEvent{36, false, 0});
  post(TextEvent{"한", true});
  post(TextEvent{"한", false});
  post(ScrollEvent{-120});

  EXPECT_EQ(desktop.posted(),
            (Lines{"move 412,300.5", "down(1) 412,300", "drag 413,300", "up(2) 413,300",
                   "rightDown(1) 0.333,-4", "rightUp(1) 0,0", "key 36 down flags=0x120000",
                   "key 36 up flags=0x0", "text 한 down", "text 한 up", "scroll -120"}));
  EXPECT_EQ(desktop.postedAt()[0], "0 move 412,300.5");
  EXPECT_EQ(desktop.postedAt()[1], "30 down(1) 412,300");
}

TEST_F(SimInput, IsOnlyWrittenDownWhenPosted) {
  EXPECT_NE(input.create(nullptr, ScrollEvent{1}), nullptr);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(SimInput, MovesThePointer) {
  EXPECT_EQ(input.pointerLocation(), (Point{0, 0}));
  post(MouseEvent{MouseEventType::moved, {50, 60}, 0});
  EXPECT_EQ(input.pointerLocation(), (Point{50, 60}));
  input.pointer.location = std::nullopt;
  EXPECT_FALSE(input.pointerLocation());
}

TEST_F(SimInput, MayBeRefusedByKind) {
  input.refusesMouse = true;
  EXPECT_EQ(input.create(nullptr, MouseEvent{}), nullptr);
  EXPECT_NE(input.create(nullptr, KeyEvent{}), nullptr);
  input.refusesKeys = true;
  EXPECT_EQ(input.create(nullptr, KeyEvent{}), nullptr);
  EXPECT_NE(input.create(nullptr, TextEvent{}), nullptr);
  input.refusesText = true;
  EXPECT_EQ(input.create(nullptr, TextEvent{}), nullptr);
  EXPECT_NE(input.create(nullptr, ScrollEvent{}), nullptr);
  input.refusesScroll = true;
  EXPECT_EQ(input.create(nullptr, ScrollEvent{}), nullptr);
}

TEST_F(SimInput, MayBeRefusedJustWhereItLetsGo) {
  input.refusesButtonsUp = true;
  EXPECT_EQ(input.create(nullptr, MouseEvent{MouseEventType::leftUp, {}, 0}), nullptr);
  EXPECT_EQ(input.create(nullptr, MouseEvent{MouseEventType::rightUp, {}, 0}), nullptr);
  EXPECT_NE(input.create(nullptr, MouseEvent{MouseEventType::leftDown, {}, 0}), nullptr);
  EXPECT_NE(input.create(nullptr, MouseEvent{MouseEventType::moved, {}, 0}), nullptr);
}

TEST_F(SimInput, HasSourcesOrNot) {
  EXPECT_NE(input.makeSource("한글"), nullptr);
  input.refusesSources = true;
  EXPECT_EQ(input.makeSource(""), nullptr);
  EXPECT_EQ(input.sourceTexts, (Lines{"한글", ""}));
}

TEST_F(SimInput, ClicksWhatLiesUnderThePointer) {
  int pressed = 0;
  save.onPress([&] { ++pressed; });

  click({210, 210});

  EXPECT_EQ(pressed, 1);
  EXPECT_EQ(save.clicks(), 1);
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(SimInput, CountsInAnEffectWhetherPressedOrClicked) {
  std::vector<int> counts;
  save.onPress([&counts, count = 0]() mutable { counts.push_back(++count); });

  click({210, 210});
  EXPECT_EQ(desktop.accessibility().perform(save.element(), "AXPress"), Performed::taken);
  click({210, 210});

  EXPECT_EQ(counts, (std::vector<int>{1, 2, 3}));
}

TEST_F(SimInput, ClicksTheControlAroundALabel) {
  int pressed = 0;
  save.onPress([&] { ++pressed; });
  Node& text = save.label("Save").at({210, 202, 40, 20});

  click({220, 210});

  EXPECT_EQ(pressed, 1);
  EXPECT_EQ(save.clicks(), 1);
  EXPECT_EQ(text.clicks(), 0);
}

TEST_F(SimInput, TellsTheFirstClickFromTheSecond) {
  std::vector<int> states;
  save.onClick([&](int clickState) { states.push_back(clickState); });

  click({210, 210}, 1);
  click({210, 210}, 2);

  EXPECT_EQ(states, (std::vector<int>{1, 2}));
}

TEST_F(SimInput, DoesNotClickWhenTheButtonIsReleasedElsewhere) {
  post(MouseEvent{MouseEventType::leftDown, {210, 210}, 1});
  post(MouseEvent{MouseEventType::leftUp, {500, 500}, 1});
  post(MouseEvent{MouseEventType::leftUp, {210, 210}, 1});

  EXPECT_EQ(save.clicks(), 0);
}

TEST_F(SimInput, ClicksTheWindowThatLiesInFront) {
  App& mail = desktop.app("com.example.Mail");
  Window& cover = mail.window({150, 150, 300, 300});
  Node& send = cover.button("Send").at({200, 200, 80, 24});
  cover.toFront();

  click({210, 210});

  EXPECT_EQ(save.clicks(), 0);
  EXPECT_EQ(send.clicks(), 1);
  EXPECT_EQ(desktop.frontmost(), &mail);
}

TEST_F(SimInput, RightClicks) {
  int menus = 0;
  save.onRightClick([&] { ++menus; });

  post(MouseEvent{MouseEventType::rightDown, {210, 210}, 1});
  post(MouseEvent{MouseEventType::rightUp, {210, 210}, 1});

  EXPECT_EQ(menus, 1);
  EXPECT_EQ(save.rightClicks(), 1);
  EXPECT_EQ(save.clicks(), 0);
}

TEST_F(SimInput, IsLostOnAHungApplication) {
  int pressed = 0;
  save.onPress([&] { ++pressed; });
  notes.facts.hung = true;

  click({210, 210});

  EXPECT_EQ(pressed, 0);
}

TEST_F(SimInput, TypesIntoTheFocusedFieldOfTheApplicationInFront) {
  Node& field = window.textField("a").at({200, 300, 100, 24});
  Node& other = desktop.app("com.example.Mail").window({0, 0, 50, 50}).textField();
  other.focus();

  click({210, 310});
  post(TextEvent{"한", true});
  post(TextEvent{"한", false});

  EXPECT_EQ(field.readText("AXValue"), "a한");
  EXPECT_EQ(other.readText("AXValue"), "");
}

TEST_F(SimInput, GivesKeysToTheApplicationInFront) {
  std::vector<KeyEvent> keys;
  notes.onKey([&](const KeyEvent& key) { keys.push_back(key); });
  desktop.app("com.example.Mail").onKey([&](const KeyEvent&) { FAIL() << "not in front"; });

  post(KeyEvent{36, true, kModifierCommand});

  EXPECT_EQ(keys, (std::vector<KeyEvent>{{36, true, kModifierCommand}}));
}

TEST_F(SimInput, TogglesACheckBoxByPressOrClick) {
  Node& box = window.checkBox("Wrap", false).at({200, 400, 80, 24});

  click({210, 410});
  EXPECT_EQ(*box.read("AXValue")->as<double>(), 1);
  EXPECT_EQ(desktop.accessibility().perform(box.element(), "AXPress"), Performed::taken);
  EXPECT_EQ(*box.read("AXValue")->as<double>(), 0);
  EXPECT_EQ(box.activations(), 2);
}

}  // namespace
}  // namespace tarqo::sim
