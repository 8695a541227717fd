#include "platform/mac/mac_window_server.h"

#include "tests/platform/mac/mac_test.h"

namespace tarqo::mac {
namespace {

using standin::Owned;
using Entries = std::vector<std::pair<std::string, Owned>>;

Owned bounds(double x, double y, double width, double height) {
  return standin::dictionary({{"X", standin::number(x)},
                              {"Y", standin::number(y)},
                              {"Width", standin::number(width)},
                              {"Height", standin::number(height)}});
}

class WindowListTest : public MacTest {
 protected:
  std::vector<WindowInfo> windows() { return server.windows(WindowList::onScreenAboveDesktop); }
  /// The only window of a list with an entry of these.
  WindowInfo window(const Entries& entries) {
    quartz.windows = standin::array({standin::dictionary(entries)});
    const std::vector<WindowInfo> all = windows();
    EXPECT_EQ(all.size(), 1u);
    return all.empty() ? WindowInfo{} : all.front();
  }

  MacWindowServer server;
};

TEST_F(WindowListTest, ReadsEveryEntryOfAWindow) {
  const WindowInfo info = window({{"kCGWindowNumber", standin::integer(4294967295)},
                                  {"kCGWindowOwnerPID", standin::integer(512)},
                                  {"kCGWindowOwnerName", standin::text("메모")},
                                  {"kCGWindowBounds", bounds(-10, 20.5, 800, 600)},
                                  {"kCGWindowLayer", standin::integer(-2147483623)},
                                  {"kCGWindowAlpha", standin::number(0.5)},
                                  {"kCGWindowName", standin::text("Untitled")}});
  EXPECT_EQ(info.number, 4294967295u);
  EXPECT_EQ(info.ownerPid, 512);
  EXPECT_EQ(info.ownerName, "메모");
  EXPECT_EQ(info.bounds, (Rect{-10, 20.5, 800, 600}));
  EXPECT_EQ(info.layer, -2147483623);
  EXPECT_EQ(info.alpha, 0.5);
  EXPECT_EQ(info.title, "Untitled");
}

TEST_F(WindowListTest, LeavesOutWhatAnEntryDoesNotTell) {
  const WindowInfo info = window({});
  EXPECT_EQ(info.number, std::nullopt);
  EXPECT_EQ(info.ownerPid, std::nullopt);
  EXPECT_EQ(info.ownerName, std::nullopt);
  EXPECT_EQ(info.bounds, std::nullopt);
  EXPECT_EQ(info.layer, std::nullopt);
  EXPECT_EQ(info.alpha, std::nullopt);
  EXPECT_EQ(info.title, std::nullopt);
}

TEST_F(WindowListTest, LeavesOutWhatIsOfAnotherType) {
  for (const Owned& odd : {standin::boolean(true), standin::null(), standin::array({}),
                           standin::foreign(), standin::dictionary({})}) {
    const WindowInfo info = window({{"kCGWindowNumber", odd},
                                    {"kCGWindowOwnerPID", odd},
                                    {"kCGWindowOwnerName", odd},
                                    {"kCGWindowBounds", odd},
                                    {"kCGWindowLayer", odd},
                                    {"kCGWindowAlpha", odd},
                                    {"kCGWindowName", odd}});
    EXPECT_EQ(info.number, std::nullopt);
    EXPECT_EQ(info.ownerPid, std::nullopt);
    EXPECT_EQ(info.ownerName, std::nullopt);
    EXPECT_EQ(info.bounds, std::nullopt);
    EXPECT_EQ(info.layer, std::nullopt);
    EXPECT_EQ(info.alpha, std::nullopt);
    EXPECT_EQ(info.title, std::nullopt);
  }
}

TEST_F(WindowListTest, LeavesOutNumbersThatDoNotFit) {
  const WindowInfo info = window({{"kCGWindowNumber", standin::integer(-1)},
                                  {"kCGWindowOwnerPID", standin::integer(4294967296)},
                                  {"kCGWindowLayer", standin::number(0.5)}});
  EXPECT_EQ(info.number, std::nullopt);
  EXPECT_EQ(info.ownerPid, std::nullopt);
  EXPECT_EQ(info.layer, std::nullopt);
}

TEST_F(WindowListTest, TakesAWholeNumberOfEitherKind) {
  const WindowInfo info =
      window({{"kCGWindowLayer", standin::number(0.0)}, {"kCGWindowAlpha", standin::integer(1)}});
  EXPECT_EQ(info.layer, 0);
  EXPECT_EQ(info.alpha, 1.0);
}

TEST_F(WindowListTest, LeavesOutBoundsWithoutAllTheirSides) {
  EXPECT_EQ(window({{"kCGWindowBounds", standin::dictionary({{"X", standin::number(1)}})}}).bounds,
            std::nullopt);
}

TEST_F(WindowListTest, KeepsTheOrderAndSkipsWhatIsNoEntry) {
  const auto numbered = [](SInt64 number) {
    return standin::dictionary({{"kCGWindowNumber", standin::integer(number)}});
  };
  quartz.windows = standin::array({numbered(3), standin::text("odd"), numbered(1)});
  const auto all = windows();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].number, 3u);
  EXPECT_EQ(all[1].number, 1u);
}

TEST_F(WindowListTest, AsksForTheWindowsThatAreMeant) {
  quartz.windows = standin::array({});
  EXPECT_TRUE(server.windows(WindowList::onScreen).empty());
  EXPECT_EQ(quartz.windowOptions, 1u);
  EXPECT_TRUE(server.windows(WindowList::onScreenAboveDesktop).empty());
  EXPECT_EQ(quartz.windowOptions, 17u);
  EXPECT_EQ(quartz.relativeTo, 0u);
}

TEST_F(WindowListTest, IsEmptyWithoutAWindowServer) {
  EXPECT_TRUE(windows().empty());
  quartz.windows = standin::text("odd");
  EXPECT_TRUE(windows().empty());
}

class ScreensTest : public MacTest {
 protected:
  MacWindowServer server;
};

TEST_F(ScreensTest, CountFromTheBottomLeftOfTheMainDisplay) {
  quartz.displays = {{1, {{0, 0}, {1440, 900}}, 2880},
                     {2, {{1440, -180}, {1920, 1080}}, 1920},
                     {3, {{-800, 900}, {800, 600}}, 800}};
  quartz.mainDisplay = 1;
  const std::vector<Screen> screens = server.screens();
  ASSERT_EQ(screens.size(), 3u);
  EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1440, 900}));
  EXPECT_EQ(screens[0].scale, 2);
  EXPECT_EQ(screens[1].frame, (Rect{1440, 0, 1920, 1080}));
  EXPECT_EQ(screens[1].scale, 1);
  EXPECT_EQ(screens[2].frame, (Rect{-800, -600, 800, 600}));
  EXPECT_EQ(screens[2].displayNumber, 3u);
}

TEST_F(ScreensTest, BeginWithTheMainDisplay) {
  quartz.displays = {{5, {{-100, 0}, {100, 100}}, 100},
                     {6, {{-200, 0}, {100, 100}}, 100},
                     {7, {{0, 0}, {800, 600}}, 800}};
  quartz.mainDisplay = 7;
  const std::vector<Screen> screens = server.screens();
  ASSERT_EQ(screens.size(), 3u);
  EXPECT_EQ(screens[0].displayNumber, 7u);
  EXPECT_EQ(screens[1].displayNumber, 5u);
  EXPECT_EQ(screens[2].displayNumber, 6u);
}

TEST_F(ScreensTest, HaveOnePixelAPointWithoutAMode) {
  quartz.displays = {{1, {{0, 0}, {800, 600}}, 0}};
  EXPECT_EQ(server.screens().at(0).scale, 1);
}

TEST_F(ScreensTest, ForgetADisplayThatGoesMeanwhile) {
  quartz.displays = {{1, {{0, 0}, {800, 600}}, 800}, {2, {{800, 0}, {800, 600}}, 800}};
  quartz.mainDisplay = 1;
  quartz.displaysLeft = 1;
  EXPECT_EQ(server.screens().size(), 1u);
}

TEST_F(ScreensTest, AreNoneWhenTheyCannotBeRead) {
  EXPECT_TRUE(server.screens().empty());
  quartz.displays = {{1, {{0, 0}, {800, 600}}, 800}};
  quartz.displayError = static_cast<CGError>(1001);
  EXPECT_TRUE(server.screens().empty());
}

class LoginSessionTest : public MacTest {
 protected:
  LoginSession read(const Entries& entries) {
    quartz.session = standin::dictionary(entries);
    return server.loginSession();
  }

  MacWindowServer server;
};

TEST_F(LoginSessionTest, IsUnknownOutsideAGraphicalSession) {
  EXPECT_EQ(server.loginSession().locked, std::nullopt);
  EXPECT_EQ(server.loginSession().onConsole, std::nullopt);
  quartz.session = standin::text("odd");
  EXPECT_EQ(server.loginSession().locked, std::nullopt);
}

TEST_F(LoginSessionTest, TellsALockedScreen) {
  EXPECT_EQ(read({{"CGSSessionScreenIsLocked", standin::boolean(true)}}).locked, true);
  EXPECT_EQ(read({{"CGSSessionScreenIsLocked", standin::integer(1)}}).locked, true);
  EXPECT_EQ(read({{"CGSSessionScreenIsLocked", standin::boolean(false)}}).locked, false);
  EXPECT_EQ(read({}).locked, std::nullopt);
}

TEST_F(LoginSessionTest, TellsASessionThatIsNotOnTheConsole) {
  EXPECT_EQ(read({{"kCGSSessionOnConsoleKey", standin::boolean(true)}}).onConsole, true);
  EXPECT_EQ(read({{"kCGSSessionOnConsoleKey", standin::boolean(false)}}).onConsole, false);
  EXPECT_EQ(read({{"kCGSSessionOnConsoleKey", standin::integer(0)}}).onConsole, false);
  EXPECT_EQ(read({}).onConsole, std::nullopt);
}

TEST_F(LoginSessionTest, TellsNothingByAValueOfAnotherType) {
  for (const Owned& odd : {standin::text("1"), standin::integer(2), standin::number(0.5),
                           standin::null(), standin::foreign()}) {
    const LoginSession session =
        read({{"CGSSessionScreenIsLocked", odd}, {"kCGSSessionOnConsoleKey", odd}});
    EXPECT_EQ(session.locked, std::nullopt);
    EXPECT_EQ(session.onConsole, std::nullopt);
  }
}

}  // namespace
}  // namespace tarqo::mac
