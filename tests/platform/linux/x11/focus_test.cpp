#include "platform/linux/x11/focus.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/x11/fake_x_server.h"

namespace tarqo::lnx::x11 {
namespace {

constexpr Rect kPlace{10, 20, 300, 200};
constexpr Pid kPid = 77;

class Focus : public testing::Test {
 protected:
  xcb_window_t holder(const std::vector<xcb_window_t>& clients) {
    const FocusQuery query = requestFocus(server.client());
    return takeFocus(server.client(), query, clients);
  }

  FakeXServer server;
  const xcb_window_t frame = server.add({.area = kPlace});
  const xcb_window_t client = server.add({.area = {0, 20, 300, 180}}, frame, kPid);
  const xcb_window_t inside = server.add({.area = {5, 5, 50, 20}}, client);
};

TEST_F(Focus, IsNobodysWhileNoWindowHasIt) {
  server.setFocus(XCB_INPUT_FOCUS_NONE);
  EXPECT_EQ(holder({client}), XCB_NONE);
  EXPECT_EQ(focusedProcess(server.client()), std::nullopt);
}

TEST_F(Focus, IsTheClientsInWhichItLies) {
  for (const xcb_window_t window : {client, inside}) {
    server.setFocus(window);
    EXPECT_EQ(holder({client}), client);
  }
}

TEST_F(Focus, IsTheChildOfTheRootsWithoutAManager) {
  server.setFocus(inside);
  EXPECT_EQ(holder({}), frame);
}

TEST_F(Focus, IsNobodysWhenItsWindowIsGone) {
  server.setFocus(0x123456);
  EXPECT_EQ(holder({client}), XCB_NONE);
}

TEST_F(Focus, FollowsThePointerWhereTheServerSaysSo) {
  server.setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
  EXPECT_EQ(holder({client}), XCB_NONE) << "over the desktop";
  server.setPointer(frame);
  EXPECT_EQ(holder({client}), client);
  EXPECT_EQ(holder({}), frame);
}

TEST_F(Focus, IsOfTheProcessThatMadeTheClient) {
  server.manage({client});
  server.setFocus(inside);
  EXPECT_EQ(focusedProcess(server.client()), kPid);
}

TEST_F(Focus, IsNobodysOnceTheServerIsLost) {
  server.setFocus(client);
  server.hangUp();
  EXPECT_EQ(holder({client}), XCB_NONE);
  EXPECT_EQ(focusedProcess(server.client()), std::nullopt);
}

TEST_F(Focus, ClientsInAFrameAreFoundAtAnyDepthThatManagersUse) {
  const xcb_window_t second = server.add({.area = {0, 0, 300, 20}}, frame);
  Server& own = server.client();
  EXPECT_EQ(windowsIn(own, frame, {client}), (std::vector<xcb_window_t>{client}));
  EXPECT_EQ(windowsIn(own, frame, {client, second}), (std::vector<xcb_window_t>{client, second}));
  EXPECT_EQ(windowsIn(own, frame, {inside}), (std::vector<xcb_window_t>{inside}));
  EXPECT_EQ(windowsIn(own, frame, {0x123456}), (std::vector<xcb_window_t>{frame}));
}

}  // namespace
}  // namespace tarqo::lnx::x11
