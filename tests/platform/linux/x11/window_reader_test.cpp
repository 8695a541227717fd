#include "platform/linux/x11/window_reader.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/x11/fake_x_server.h"

namespace tarqo::lnx::x11 {
namespace {

constexpr Rect kFrame{100, 50, 320, 240};
constexpr Rect kInFrame{2, 20, 316, 218};
constexpr Rect kOnScreen{102, 70, 316, 218};

class WindowReading : public testing::Test {
 protected:
  [[nodiscard]] Windows read() { return readWindows(server.client()); }

  std::vector<xcb_window_t> listed() {
    std::vector<xcb_window_t> clients;
    for (const Window& window : read().frontToBack) {
      clients.push_back(window.client);
    }
    return clients;
  }

  FakeProperty atoms(const std::vector<std::string>& names) {
    std::vector<std::uint32_t> values;
    for (const std::string& name : names) {
      values.push_back(server.atom(name));
    }
    return numbers(values);
  }

  FakeXServer server;
};

class ManagedWindow : public WindowReading {
 protected:
  ManagedWindow() { server.manage({client}); }

  Window readOne() {
    const Windows windows = read();
    const Window* window = findWindow(windows, client);
    return window != nullptr ? *window : Window();
  }

  const xcb_window_t frame = server.add({.area = kFrame});
  const xcb_window_t client = server.add({.area = kInFrame}, frame, 41);
};

TEST_F(WindowReading, OfAnEmptyScreenGivesTheScreen) {
  const Windows windows = read();
  EXPECT_TRUE(windows.frontToBack.empty());
  EXPECT_EQ(windows.screen, FakeXServer::kScreen);
  EXPECT_FALSE(windows.hasManager);
  EXPECT_EQ(windows.focused, XCB_NONE);
}

TEST_F(WindowReading, OfALostServerGivesNothing) {
  static_cast<void>(server.add({.area = kFrame}));
  server.hangUp();
  const Windows windows = read();
  EXPECT_TRUE(windows.frontToBack.empty());
  EXPECT_EQ(windows.screen, Rect{});
}

TEST_F(WindowReading, WithoutAManagerTakesWhatShowsOnTheRoot) {
  const xcb_window_t back = server.add({.area = kFrame});
  static_cast<void>(server.add({.area = kFrame, .viewable = false}));
  const xcb_window_t popup = server.add({.area = kFrame, .overrideRedirect = true});
  static_cast<void>(server.add({.area = kFrame, .inputOnly = true}));
  const Windows windows = read();
  EXPECT_EQ(listed(), (std::vector<xcb_window_t>{popup, back}));
  EXPECT_FALSE(findWindow(windows, popup)->managed);
  EXPECT_TRUE(findWindow(windows, back)->managed);
  EXPECT_TRUE(findWindow(windows, back)->isOrdinary());
}

TEST_F(WindowReading, DoesNotBelieveInAManagerThatHasDied) {
  server.set(FakeXServer::kRoot, "_NET_SUPPORTING_WM_CHECK", numbers({0x123456}));
  server.set(FakeXServer::kRoot, "_NET_SHOWING_DESKTOP", numbers({1}));
  const Windows windows = read();
  EXPECT_FALSE(windows.hasManager);
  EXPECT_FALSE(windows.showingDesktop);
}

TEST_F(WindowReading, GoesFromFrontToBackWhateverTheManagersOrder) {
  const xcb_window_t back = server.add({.area = kFrame});
  const xcb_window_t inBack = server.add({.area = kInFrame}, back);
  const xcb_window_t front = server.add({.area = kFrame});
  const xcb_window_t inFront = server.add({.area = kInFrame}, front);
  const xcb_window_t popup = server.add({.area = kFrame, .overrideRedirect = true});
  server.manage({inBack, inFront});
  EXPECT_EQ(listed(), (std::vector<xcb_window_t>{popup, inFront, inBack}));
}

TEST_F(ManagedWindow, LiesWhereItsFrameAndItsPropertiesSay) {
  Window window = readOne();
  EXPECT_EQ(window.outermost, frame);
  EXPECT_EQ(window.clientArea, kOnScreen);
  EXPECT_EQ(window.outermostArea, kFrame);
  EXPECT_EQ(window.frame, kFrame);
  server.set(client, "_NET_FRAME_EXTENTS", numbers({1, 1, 19, 1}));
  EXPECT_EQ(readOne().frame, (Rect{101, 51, 318, 238}));
  server.set(client, "_GTK_FRAME_EXTENTS", numbers({10, 10, 5, 15}));
  window = readOne();
  EXPECT_EQ(window.frame, (Rect{112, 75, 296, 198}));
  EXPECT_EQ(window.shadow, (Insets{10, 10, 5, 15}));
  server.set(client, "_GTK_FRAME_EXTENTS", numbers({10, 10}));
  EXPECT_EQ(readOne().shadow, std::nullopt) << "not four numbers";
}

TEST_F(ManagedWindow, IsOfTheProcessThatTheServerKnows) {
  server.set(client, "_NET_WM_PID", numbers({99}));
  EXPECT_EQ(readOne().pid, 41);
}

TEST_F(ManagedWindow, HasATitleInUtf8) {
  server.set(client, "WM_NAME", text("caf\xe9"));
  EXPECT_EQ(readOne().title, "café");
  server.set(client, "_NET_WM_NAME", {server.atom("UTF8_STRING"), 8, text("메모").bytes});
  EXPECT_EQ(readOne().title, "메모");
}

TEST_F(ManagedWindow, HasAClassOfTwoParts) {
  server.set(client, "WM_CLASS", text(std::string_view("one\0Two\0", 8)));
  EXPECT_EQ(readOne().instanceName, "one");
  EXPECT_EQ(readOne().className, "Two");
  server.set(client, "WM_CLASS", text("alone"));
  EXPECT_EQ(readOne().instanceName, "alone");
  EXPECT_EQ(readOne().className, "");
}

TEST_F(ManagedWindow, HasTheFirstTypeThatIsKnown) {
  server.set(client, "_NET_WM_WINDOW_TYPE",
             atoms({"_KDE_SOMETHING", "_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_WINDOW_TYPE_NORMAL"}));
  EXPECT_EQ(readOne().type, WindowType::dock);
}

TEST_F(ManagedWindow, IsOpaqueUnlessItSaysSo) {
  EXPECT_EQ(readOne().opacity, 1);
  server.set(client, "_NET_WM_WINDOW_OPACITY", numbers({0}));
  EXPECT_EQ(readOne().opacity, 0);
}

TEST_F(ManagedWindow, IsMinimisedWhenItIsHiddenButNotRolledUp) {
  server.set(client, "_NET_WM_STATE", atoms({"_NET_WM_STATE_HIDDEN"}));
  EXPECT_TRUE(readOne().minimised);
  server.set(client, "_NET_WM_STATE", atoms({"_NET_WM_STATE_HIDDEN", "_NET_WM_STATE_SHADED"}));
  EXPECT_FALSE(readOne().minimised);
}

TEST_F(ManagedWindow, IsNotMinimisedByShowingTheDesktop) {
  server.set(client, "_NET_WM_STATE", atoms({"_NET_WM_STATE_HIDDEN"}));
  server.set(FakeXServer::kRoot, "_NET_SHOWING_DESKTOP", numbers({1}));
  EXPECT_FALSE(readOne().minimised);
  EXPECT_TRUE(read().showingDesktop);
}

TEST_F(ManagedWindow, HasTheFocusAlsoByAWindowInside) {
  server.setFocus(server.add({.area = {0, 0, 10, 10}}, client));
  EXPECT_EQ(read().focused, client);
}

TEST_F(ManagedWindow, IsFoundByAPointOfItsFrame) {
  Server& own = server.client();
  const Windows windows = read();
  const Window* window = windowAt(own, windows, {101.7, 51.2});
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->client, client);
  EXPECT_EQ(windowAt(own, windows, {99.9, 51}), nullptr);
  EXPECT_EQ(outermostAt(own, std::nullopt), XCB_NONE);
  server.setPointer(frame);
  EXPECT_EQ(outermostAt(own, std::nullopt), frame);
}

}  // namespace
}  // namespace tarqo::lnx::x11
