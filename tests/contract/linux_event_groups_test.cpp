// What input events that belong together leave behind on the X server and in the process: nothing.

#include <gtest/gtest.h>
#include <signal.h>

#include "platform/linux/input/linux_input_events.h"
#include "platform/linux/linux_clock.h"

namespace tarqo::lnx::input {
namespace {

class LinuxEventGroups : public testing::Test {
 protected:
  void SetUp() override {
    post(MouseEvent{MouseEventType::moved, {2, 2}, 0});
    ASSERT_FALSE(isButtonDown());
    ASSERT_FALSE(doSignalsWait());
  }

  void post(const InputEvent& event) {
    const auto created = events.create(nullptr, event);
    ASSERT_NE(created, nullptr);
    events.post(*created);
  }

  bool isButtonDown() {
    x11::Server* server = display.server();
    const auto pointer =
        server->take<xcb_query_pointer_reply_t>(xcb_query_pointer(server->raw(), server->root()));
    return pointer && (pointer->mask & XCB_BUTTON_MASK_1) != 0;
  }

  static bool doSignalsWait() {
    struct sigaction action = {};
    return sigaction(SIGTERM, nullptr, &action) == 0 && action.sa_handler != SIG_DFL;
  }

  const MouseEvent down{MouseEventType::leftDown, {2, 2}, 1};
  const MouseEvent up{MouseEventType::leftUp, {2, 2}, 1};

  LinuxClock clock;
  x11::Display display{clock};
  LinuxInputEvents events{display, clock};
};

TEST_F(LinuxEventGroups, KeepSignalsWaitingWhileAButtonIsDown) {
  const auto source = events.makeSource("");
  const auto first = events.create(source.get(), down);
  const auto second = events.create(source.get(), up);
  EXPECT_FALSE(doSignalsWait());

  events.post(*first);
  EXPECT_TRUE(isButtonDown());
  EXPECT_TRUE(doSignalsWait());

  events.post(*second);
  EXPECT_FALSE(isButtonDown());
  EXPECT_FALSE(doSignalsWait());
}

TEST_F(LinuxEventGroups, LetGoOfAButtonWhenTheirSourceEnds) {
  auto source = events.makeSource("");
  const auto pressing = events.create(source.get(), down);
  events.post(*pressing);
  ASSERT_TRUE(isButtonDown());

  source.reset();

  EXPECT_FALSE(isButtonDown());
  EXPECT_FALSE(doSignalsWait());
}

TEST_F(LinuxEventGroups, WithoutASourceLetGoOfAButtonWhenTheLastOfThemEnds) {
  auto pressing = events.create(nullptr, down);
  auto releasing = events.create(nullptr, up);
  events.post(*pressing);
  pressing.reset();
  ASSERT_TRUE(isButtonDown());

  releasing.reset();

  EXPECT_FALSE(isButtonDown());
  EXPECT_FALSE(doSignalsWait());
}

TEST_F(LinuxEventGroups, KeepNoSignalWaitingWhenTheyAreNeverPosted) {
  constexpr std::uint16_t kReturn = 36;
  auto pressing = events.create(nullptr, KeyEvent{kReturn, true, kModifierControl});
  auto releasing = events.create(nullptr, KeyEvent{kReturn, false, kModifierControl});
  ASSERT_NE(pressing, nullptr);
  ASSERT_NE(releasing, nullptr);
  EXPECT_TRUE(doSignalsWait());

  pressing.reset();
  releasing.reset();

  EXPECT_FALSE(doSignalsWait());
}

}  // namespace
}  // namespace tarqo::lnx::input
