// Who gets an event on the X server, and with which modifiers it arrives.

#include <X11/keysym.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "platform/linux/input/event_receivers.h"
#include "platform/linux/input/keyboard_map.h"
#include "platform/linux/input/linux_input_events.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/x11/focus.h"
#include "tests/contract/x_witness.h"

namespace tarqo::lnx::input {
namespace {

using contract::XStranger;
using contract::XUser;
using contract::XWitness;
using Lines = std::vector<std::string>;

constexpr Rect kPlace{20, 20, 200, 100};
constexpr Rect kElsewhere{20, 400, 50, 50};
constexpr Point kInside{60, 50};
constexpr Point kOutside{600, 700};
constexpr std::uint16_t kReturn = 36;

/// The window manager, stopped: it would give the focus to a window that it knows.
class ManagerAtRest {
 public:
  ManagerAtRest() { signalManager(SIGSTOP); }
  ~ManagerAtRest() { signalManager(SIGCONT); }
  ManagerAtRest(const ManagerAtRest&) = delete;
  ManagerAtRest& operator=(const ManagerAtRest&) = delete;

 private:
  static void signalManager(int signal) {
    const char* pid = std::getenv("TARQO_DESKTOP_WM_PID");  // NOLINT(concurrency-mt-unsafe)
    if (pid != nullptr) {
      kill(std::stoi(pid), signal);
    }
  }
};

class LinuxEventReceivers : public testing::Test {
 protected:
  void SetUp() override {
    x11::Server* server = display.server();
    ASSERT_NE(server, nullptr);
    const auto keymap = readKeymap(*server);
    ASSERT_TRUE(keymap);
    control = keymap->find(XK_Control_L, 0, 0).value_or(0);
    shift = keymap->find(XK_Shift_L, 0, 0).value_or(0);
    enter = keymap->find(XK_Return, 0, 0).value_or(0);
    post(MouseEvent{MouseEventType::moved, kOutside, 0});
    witness.focus();
  }

  void TearDown() override {
    for (const xcb_keycode_t key : {control, shift}) {
      user.release(key);
    }
    witness.giveFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
  }

  void post(const InputEvent& event) {
    const auto created = events.create(source.get(), event);
    ASSERT_NE(created, nullptr);
    events.post(*created);
  }

  bool postTo(Pid receiver, const InputEvent& event) {
    const auto created = events.create(source.get(), event);
    return created != nullptr && events.postTo(receiver, *created);
  }

  bool press(Pid receiver, Modifiers modifiers = 0) {
    const bool posted = postTo(receiver, KeyEvent{kReturn, true, modifiers});
    post(KeyEvent{kReturn, false, modifiers});
    return posted;
  }

  bool click(Pid receiver, Point at = kInside) {
    const bool posted = postTo(receiver, MouseEvent{MouseEventType::leftDown, at, 1});
    post(MouseEvent{MouseEventType::leftUp, at, 1});
    return posted;
  }

  /// What has arrived of buttons.
  Lines buttons() {
    Lines lines = witness.arrived();
    std::erase_if(lines, [](const std::string& each) {
      return !each.starts_with("press") && !each.starts_with("release");
    });
    return lines;
  }

  static std::string line(const char* what, xcb_keycode_t key, int state) {
    return std::string(what) + " " + std::to_string(key) + " +" + std::to_string(state);
  }

  const Pid self = getpid();
  const Pid other = getppid();
  const MouseEvent down{MouseEventType::leftDown, kInside, 1};
  const MouseEvent up{MouseEventType::leftUp, kInside, 1};

  ManagerAtRest manager;
  LinuxClock clock;
  x11::Display display{clock};
  LinuxInputEvents events{display, clock};
  std::unique_ptr<EventSource> source = events.makeSource("");
  XWitness witness{kPlace};
  XUser user;
  xcb_keycode_t control = 0;
  xcb_keycode_t shift = 0;
  xcb_keycode_t enter = 0;
};

TEST_F(LinuxEventReceivers, KeysGoToWhoHasTheFocus) {
  EXPECT_FALSE(press(other));
  EXPECT_EQ(witness.arrived(), Lines{});
  EXPECT_TRUE(press(self));
  EXPECT_EQ(witness.arrived(), (Lines{line("key", enter, 0), line("up", enter, 0)}));
  EXPECT_EQ(x11::focusedProcess(*display.server()), self);
}

TEST_F(LinuxEventReceivers, KeysGoToAWindowInsideWhoHasTheFocus) {
  witness.focusInside();
  EXPECT_FALSE(press(other));
  EXPECT_TRUE(press(self));
  EXPECT_EQ(x11::focusedProcess(*display.server()), self);
}

TEST_F(LinuxEventReceivers, KeysGoToNobodyWithoutAFocus) {
  witness.giveFocus(XCB_NONE);
  EXPECT_FALSE(press(self));
  EXPECT_EQ(x11::focusedProcess(*display.server()), std::nullopt);
}

TEST_F(LinuxEventReceivers, KeysGoWhereThePointerIsWhenTheFocusFollowsIt) {
  witness.giveFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
  EXPECT_FALSE(press(self));
  post(MouseEvent{MouseEventType::moved, kInside, 0});
  EXPECT_TRUE(press(self));
  EXPECT_EQ(witness.arrived().size(), 2U);
}

TEST_F(LinuxEventReceivers, KeysGoToAnotherProcessThatHasTheFocus) {
  const XStranger stranger(kElsewhere);
  witness.giveFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
  post(MouseEvent{MouseEventType::moved, {30, 410}, 0});
  EXPECT_FALSE(press(self));
  EXPECT_TRUE(press(stranger.pid()));
}

TEST_F(LinuxEventReceivers, KeysGoToNobodyKnownWhileTheKeyboardIsGrabbed) {
  XWitness popupOfAnother(kElsewhere, "_NET_WM_WINDOW_TYPE_TOOLTIP");
  const XStranger stranger(kElsewhere);
  popupOfAnother.grabKeyboard();
  EXPECT_FALSE(press(self));
  EXPECT_EQ(popupOfAnother.arrived(), Lines{});
  popupOfAnother.ungrab();
  EXPECT_TRUE(press(self));
  EXPECT_EQ(popupOfAnother.arrived(), Lines{});
}

TEST_F(LinuxEventReceivers, KeysGoToTheReceiversOwnMenuThatHasGrabbedTheKeyboard) {
  XWitness menu(kElsewhere);
  menu.grabKeyboard();
  EXPECT_TRUE(press(self));
  EXPECT_EQ(menu.arrived().size(), 2U);
  {
    const XStranger tooltip(kElsewhere, "_NET_WM_WINDOW_TYPE_TOOLTIP");
    EXPECT_TRUE(press(self));
  }
  const XStranger popup(kElsewhere);
  EXPECT_FALSE(press(self));
}

TEST_F(LinuxEventReceivers, AGrabThatPassesIsWaitedFor) {
  const XStranger stranger(kElsewhere);
  witness.grabKeyboard();
  std::thread passing([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    witness.ungrab();
  });
  EXPECT_TRUE(press(self));
  passing.join();
  EXPECT_EQ(witness.arrived(), (Lines{line("key", enter, 0), line("up", enter, 0)}));
}

TEST_F(LinuxEventReceivers, TheMouseGoesToTheUppermostWindow) {
  EXPECT_FALSE(click(other));
  EXPECT_FALSE(click(self, kOutside));
  EXPECT_EQ(witness.arrived(), Lines{});
  EXPECT_TRUE(click(self));
  EXPECT_EQ(witness.arrived(), (Lines{"press 1 +0", "move 60,50 +256", "release 1 +256"}));

  const XStranger stranger({50, 40, 30, 30});
  EXPECT_FALSE(click(self));
  EXPECT_FALSE(postTo(self, MouseEvent{MouseEventType::moved, kInside, 0}));
  EXPECT_FALSE(postTo(self, ScrollEvent{-120}));  // The pointer is still there.
  EXPECT_TRUE(click(stranger.pid()));
  EXPECT_EQ(witness.arrived(), Lines{});
}

TEST_F(LinuxEventReceivers, TheMouseGoesToNobodyKnownWhileItIsGrabbed) {
  post(MouseEvent{MouseEventType::moved, kInside, 0});
  const XStranger stranger(kElsewhere);
  witness.grabPointer();
  EXPECT_FALSE(click(self));
  EXPECT_FALSE(postTo(self, ScrollEvent{-120}));
  EXPECT_EQ(witness.arrived(), Lines{});
  witness.ungrab();
  EXPECT_TRUE(click(self));
}

TEST_F(LinuxEventReceivers, NoOtherButtonGoesOutWhileTheUserHoldsOne) {
  const auto held = events.makeSource("");
  const auto pressing = events.create(held.get(), down);
  events.post(*pressing);
  const XStranger stranger(kElsewhere);
  EXPECT_FALSE(postTo(self, MouseEvent{MouseEventType::rightDown, kInside, 1}));
}

TEST_F(LinuxEventReceivers, AnUpWithoutADownLeavesTheUsersButtonAlone) {
  const auto held = events.makeSource("");
  const auto pressing = events.create(held.get(), down);
  events.post(*pressing);
  post(up);
  EXPECT_EQ(witness.arrived(), Lines{"press 1 +0"});
}

TEST_F(LinuxEventReceivers, TheWheelTurnsBothWays) {
  post(MouseEvent{MouseEventType::moved, kInside, 0});
  EXPECT_TRUE(postTo(self, ScrollEvent{-2 * kPixelsPerClick}));
  EXPECT_EQ(witness.arrived(),
            (Lines{"press 5 +0", "release 5 +4096", "press 5 +0", "release 5 +4096"}));
  EXPECT_TRUE(postTo(self, ScrollEvent{kPixelsPerClick}));
  EXPECT_EQ(witness.arrived(), (Lines{"press 4 +0", "release 4 +2048"}));
}

TEST_F(LinuxEventReceivers, ADragArrivesWithItsButton) {
  EXPECT_TRUE(postTo(self, down));
  post(MouseEvent{MouseEventType::leftDragged, {90, 60}, 1});
  post(MouseEvent{MouseEventType::leftUp, {95, 60}, 1});
  EXPECT_EQ(witness.arrived(),
            (Lines{"press 1 +0", "move 90,60 +256", "move 95,60 +256", "release 1 +256"}));
}

TEST_F(LinuxEventReceivers, AClickCarriesNoModifierThatTheUserHolds) {
  user.press(control);
  user.press(shift);
  EXPECT_TRUE(click(self));
  EXPECT_EQ(buttons(), (Lines{"press 1 +0", "release 1 +256"}));
  EXPECT_TRUE(user.isDown(control));
  EXPECT_TRUE(user.isDown(shift));
}

TEST_F(LinuxEventReceivers, TheWheelCarriesNoModifierThatTheUserHolds) {
  post(MouseEvent{MouseEventType::moved, kInside, 0});
  user.press(control);
  EXPECT_TRUE(postTo(self, ScrollEvent{-2 * kPixelsPerClick}));
  EXPECT_EQ(buttons(), (Lines{"press 5 +0", "release 5 +4096", "press 5 +0", "release 5 +4096"}));
  EXPECT_TRUE(user.isDown(control));
}

TEST_F(LinuxEventReceivers, AKeyCarriesItsOwnModifiersAlone) {
  user.press(shift);
  static_cast<void>(witness.arrived());
  EXPECT_TRUE(press(self, kModifierControl));
  EXPECT_EQ(witness.arrived(),
            (Lines{line("up", shift, 1), line("key", control, 0), line("key", enter, 4),
                   line("up", enter, 4), line("up", control, 4), line("key", shift, 0)}));
  EXPECT_TRUE(user.isDown(shift));
}

TEST_F(LinuxEventReceivers, WhatTheUserLetsGoOfMeanwhileStaysUp) {
  user.press(control);
  user.press(shift);
  EXPECT_TRUE(postTo(self, down));
  EXPECT_FALSE(user.isDown(control));
  user.release(control);
  post(up);
  EXPECT_FALSE(user.isDown(control));
  EXPECT_TRUE(user.isDown(shift));

  EXPECT_TRUE(postTo(self, KeyEvent{kReturn, true, kModifierShift}));
  user.release(shift);
  post(KeyEvent{kReturn, false, kModifierShift});
  EXPECT_FALSE(user.isDown(shift));
}

TEST_F(LinuxEventReceivers, WhatTheUserPressesAgainMeanwhileStaysDown) {
  user.press(control);
  EXPECT_TRUE(postTo(self, down));
  user.release(control);
  user.press(control);
  post(up);
  EXPECT_TRUE(user.isDown(control));
}

TEST_F(LinuxEventReceivers, WhatTheUserHoldsComesBackWhenAnActionEndsEarly) {
  user.press(control);
  EXPECT_TRUE(postTo(self, down));
  EXPECT_FALSE(user.isDown(control));
  source.reset();
  EXPECT_TRUE(user.isDown(control));
}

}  // namespace
}  // namespace tarqo::lnx::input
