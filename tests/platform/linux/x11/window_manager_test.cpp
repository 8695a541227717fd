#include "platform/linux/x11/window_manager.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/linux/x11/window_reader.h"
#include "tests/platform/linux/x11/fake_x_server.h"

namespace tarqo::lnx::x11 {
namespace {

using Lines = std::vector<std::string>;

Window windowOf(xcb_window_t client, Pid pid, bool minimised = false) {
  Window window;
  window.client = client;
  window.pid = pid;
  window.managed = true;
  window.minimised = minimised;
  return window;
}

TEST(PrincipalWindow, IsTheTopOneThatIsNotMinimised) {
  Windows windows;
  windows.frontToBack = {windowOf(1, 40), windowOf(2, 41, true), windowOf(3, 41), windowOf(4, 41)};
  EXPECT_EQ(principalWindow(windows, 41, true)->client, 3U);
  EXPECT_EQ(principalWindow(windows, 41, false)->client, 3U);
}

TEST(PrincipalWindow, IsMinimisedOnlyWhereThatWillDo) {
  Windows windows;
  windows.frontToBack = {windowOf(2, 41, true), windowOf(3, 41, true)};
  EXPECT_EQ(principalWindow(windows, 41, true)->client, 2U);
  EXPECT_EQ(principalWindow(windows, 41, false), nullptr);
}

TEST(PrincipalWindow, IsNeitherAPopupNorADock) {
  Windows windows;
  windows.frontToBack = {windowOf(1, 41), windowOf(2, 41)};
  windows.frontToBack[0].overrideRedirect = true;
  windows.frontToBack[1].type = WindowType::dock;
  EXPECT_EQ(principalWindow(windows, 41, true), nullptr);
}

class WindowManagerRequests : public testing::Test {
 protected:
  static std::string hexadecimal(xcb_window_t window) {
    std::ostringstream out;
    out << std::hex << window;
    return out.str();
  }

  void activate() {
    const Windows windows = readWindows(server.client());
    activateWindow(server.client(), windows, *findWindow(windows, window));
  }

  FakeXServer server;
  const xcb_window_t window = server.add({.area = {10, 10, 100, 100}});
};

TEST_F(WindowManagerRequests, ActivateAWindowWithTheServersTime) {
  server.manage({window});
  activate();
  EXPECT_EQ(server.requests(),
            Lines{"message _NET_ACTIVE_WINDOW to " + hexadecimal(window) + ": 2 4711 0 0 0"});
}

TEST_F(WindowManagerRequests, AreNotNeededWithoutAManager) {
  activate();
  EXPECT_EQ(server.requests(),
            (Lines{"raise " + hexadecimal(window), "focus " + hexadecimal(window)}));
}

TEST_F(WindowManagerRequests, MinimiseAWindow) {
  Window minimised;
  minimised.client = window;
  minimiseWindow(server.client(), minimised);
  EXPECT_EQ(server.requests(),
            Lines{"message WM_CHANGE_STATE to " + hexadecimal(window) + ": 3 0 0 0 0"});
}

TEST_F(WindowManagerRequests, EndShowingTheDesktop) {
  endShowingDesktop(server.client());
  EXPECT_EQ(server.requests(), Lines{"message _NET_SHOWING_DESKTOP to 100: 0 0 0 0 0"});
}

}  // namespace
}  // namespace tarqo::lnx::x11
