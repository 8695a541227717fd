#include "platform/sim/sim_windows.h"

#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimWindows : public testing::Test {
 protected:
  Lines titles(WindowList which = WindowList::onScreenAboveDesktop) {
    Lines result;
    for (const WindowInfo& window : server.windows(which)) {
      result.push_back(window.title.value_or("(none)"));
    }
    return result;
  }

  std::optional<Rect> boundsOf(const std::string& title) {
    for (const WindowInfo& window : server.windows(WindowList::onScreen)) {
      if (window.title == title) {
        return window.bounds;
      }
    }
    return std::nullopt;
  }

  Desktop desktop;
  WindowServerService& server = desktop.windowServer();
  App& notes = desktop.app("com.example.Notes");
  App& mail = desktop.app("com.example.Mail");
};

TEST_F(SimWindows, DescribesTheWindowOfAnApplication) {
  const Window& window = notes.window({100, 80, 800, 600}, "Draft");

  const std::vector<WindowInfo> list = server.windows(WindowList::onScreen);

  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].ownerPid, notes.pid());
  EXPECT_EQ(list[0].ownerName, "Notes");
  EXPECT_EQ(list[0].title, "Draft");
  EXPECT_EQ(list[0].bounds, window.frame());
  EXPECT_EQ(list[0].layer, 0);
  EXPECT_EQ(list[0].alpha, 1);
  EXPECT_TRUE(list[0].number);
}

TEST_F(SimWindows, ListsTheApplicationInFrontFirst) {
  mail.window({0, 0, 200, 200}, "mail one");
  notes.window({0, 0, 200, 200}, "notes one");
  notes.window({0, 0, 200, 200}, "notes two");
  mail.window({0, 0, 200, 200}, "mail two");

  EXPECT_EQ(titles(), (Lines{"notes two", "notes one", "mail two", "mail one"}));
  mail.bringToFront();
  EXPECT_EQ(titles(), (Lines{"mail two", "mail one", "notes two", "notes one"}));
}

TEST_F(SimWindows, RaisesAWindowAmongItsOwn) {
  mail.window({0, 0, 200, 200}, "mail one");
  Window& first = notes.window({0, 0, 200, 200}, "notes one");
  notes.window({0, 0, 200, 200}, "notes two");
  mail.bringToFront();

  EXPECT_EQ(desktop.accessibility().perform(first.element(), "AXRaise"), Performed::taken);

  EXPECT_EQ(titles(), (Lines{"mail one", "notes one", "notes two"}));
  EXPECT_EQ(notes.focusedWindow(), &first);
}

TEST_F(SimWindows, PutsAWindowBeforeAllOthersWithoutItsApplication) {
  notes.window({0, 0, 200, 200}, "notes");
  Window& cover = mail.window({0, 0, 200, 200}, "mail");

  cover.toFront();

  EXPECT_EQ(titles(), (Lines{"mail", "notes"}));
  EXPECT_EQ(desktop.frontmost(), &notes);
}

TEST_F(SimWindows, ListsHigherLayersFirst) {
  notes.window({0, 0, 200, 200}, "notes");
  mail.window({0, 0, 200, 200}, "panel").server().info.layer = 3;
  mail.window({0, 0, 200, 200}, "wallpaper").server().info.layer = -100;

  EXPECT_EQ(titles(), (Lines{"panel", "notes", "wallpaper"}));
}

TEST_F(SimWindows, MovesBothWindowsTogether) {
  Window& window = notes.window({100, 80, 800, 600}, "Draft");
  Node& save = window.button("Save").at({120, 140, 80, 24});

  window.moveTo({150, 60});
  window.resize({700, 500});

  EXPECT_EQ(window.frame(), (Rect{150, 60, 700, 500}));
  EXPECT_EQ(boundsOf("Draft"), (Rect{150, 60, 700, 500}));
  EXPECT_EQ(save.frame(), (Rect{170, 120, 80, 24}));
}

TEST_F(SimWindows, KeepsADifferenceBetweenTheTwo) {
  Window& window = notes.window({100, 80, 800, 600}, "Draft");
  window.server().info.bounds->x += 2.5;

  window.moveTo({200, 80});

  EXPECT_EQ(window.frame()->x, 200);
  EXPECT_EQ(boundsOf("Draft")->x, 202.5);
}

TEST_F(SimWindows, LeavesOutWhatIsNotOnTheScreen) {
  Window& minimised = notes.window({0, 0, 200, 200}, "minimised");
  notes.window({0, 0, 200, 200}, "unlisted").server().listed = false;
  notes.window({0, 0, 200, 200}, "closed").close();
  notes.window({0, 0, 200, 200}, "shown");
  mail.window({0, 0, 200, 200}, "mail");
  minimised.minimize();

  EXPECT_EQ(titles(), (Lines{"shown", "mail"}));
  mail.facts.hidden = true;
  EXPECT_EQ(titles(), Lines{"shown"});
  minimised.minimize(false);
  EXPECT_EQ(titles().size(), 2U);
  notes.kill();
  EXPECT_EQ(titles(), Lines{});
}

TEST_F(SimWindows, MayTellLessThanItKnows) {
  ServerWindow& window = notes.window({0, 0, 200, 200}, "Draft").server();
  window.info = WindowInfo{};

  const WindowInfo info = server.windows(WindowList::onScreen).front();

  EXPECT_FALSE(info.number || info.ownerPid || info.ownerName || info.bounds || info.layer ||
               info.alpha || info.title);
}

TEST_F(SimWindows, ShowsWindowsOfNoApplication) {
  notes.window({0, 0, 200, 200}, "notes");
  ServerWindow& bare = server.bareWindow(77, "Tarqo", {10, 10, 50, 50});
  bare.info.title = "bare";
  ServerWindow& wallpaper = server.bareWindow(78, "Desktop", {0, 0, 1920, 1080});
  wallpaper.info.title = "wallpaper";
  wallpaper.info.layer = -1;
  wallpaper.desktopElement = true;

  EXPECT_EQ(titles(), (Lines{"bare", "notes"}));
  EXPECT_EQ(titles(WindowList::onScreen), (Lines{"bare", "notes", "wallpaper"}));
}

TEST_F(SimWindows, MayNotAnswer) {
  notes.window({0, 0, 200, 200});
  server.answers = false;

  EXPECT_TRUE(server.windows(WindowList::onScreen).empty());
  EXPECT_TRUE(server.screens().empty());
  EXPECT_FALSE(server.loginSession().locked);
}

TEST_F(SimWindows, CountsDisplaysFromTheBottomOfTheFirst) {
  server.addDisplay({1920, 0, 1000, 800}, 2);
  server.addDisplay({0, -600, 800, 600}, 1);

  const std::vector<Screen> screens = server.screens();

  ASSERT_EQ(screens.size(), 3U);
  EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1920, 1080}));
  EXPECT_EQ(screens[1].frame, (Rect{1920, 280, 1000, 800}));
  EXPECT_EQ(screens[2].frame, (Rect{0, 1080, 800, 600}));
  EXPECT_NE(screens[0].displayNumber, screens[1].displayNumber);
  EXPECT_EQ(server.scaleAt({2000, 100, 200, 200}), 2);
  EXPECT_EQ(server.scaleAt({100, -300, 200, 200}), 1);
}

TEST_F(SimWindows, TellsOfTheLoginSession) {
  EXPECT_EQ(server.loginSession().locked, false);
  server.session = {.locked = true, .onConsole = std::nullopt};
  EXPECT_EQ(server.loginSession().locked, true);
  EXPECT_FALSE(server.loginSession().onConsole);
}

TEST_F(SimWindows, AreHitFrontToBack) {
  AccessibilityService& ax = desktop.accessibility();
  Window& front = notes.window({0, 0, 400, 400}, "notes");
  Window& back = mail.window({200, 200, 400, 400}, "mail");

  EXPECT_EQ(ax.elementAt({300, 300}), front.element());
  EXPECT_EQ(ax.elementAt({500, 500}), back.element());
  EXPECT_FALSE(ax.elementAt({700, 700}));
  back.toFront();
  EXPECT_EQ(ax.elementAt({300, 300}), back.element());
  back.server().info.alpha = 0;
  EXPECT_EQ(ax.elementAt({300, 300}), front.element()) << "what is invisible is not hit";
}

TEST_F(SimWindows, AreHitAtTheDeepestElement) {
  AccessibilityService& ax = desktop.accessibility();
  Window& window = notes.window({0, 0, 400, 400});
  Node& group = window.group().at({10, 10, 200, 200});
  Node& button = group.button("Save").at({20, 20, 80, 24});
  Node& text = button.label("Save").at({30, 22, 40, 20});
  Node& frameless = window.group().withoutFrame();
  Node& below = frameless.button("Below").at({20, 300, 80, 24});

  EXPECT_EQ(ax.elementAt({40, 30}), text.element());
  EXPECT_EQ(ax.elementAt({22, 30}), button.element());
  EXPECT_EQ(ax.elementAt({150, 150}), group.element());
  EXPECT_EQ(ax.elementAt({30, 310}), below.element());
  text.hidden(true);
  EXPECT_EQ(ax.elementAt({40, 30}), button.element());
}

TEST_F(SimWindows, AreHitWhereLaterSiblingsLieOverEarlierOnes) {
  Window& window = notes.window({0, 0, 400, 400});
  window.button("under").at({20, 20, 80, 24});
  Node& over = window.button("over").at({60, 20, 80, 24});

  EXPECT_EQ(desktop.accessibility().elementAt({80, 30}), over.element());
}

TEST_F(SimWindows, LetTheSceneSayWhatIsHit) {
  AccessibilityService& ax = desktop.accessibility();
  Window& window = notes.window({0, 0, 400, 400});
  Node& button = window.button("Save").at({20, 20, 80, 24});
  ax.hitTest({300, 300}, &button);
  ax.hitTest({310, 310}, nullptr);

  EXPECT_EQ(ax.elementAt({300, 300}), button.element());
  EXPECT_FALSE(ax.elementAt({310, 310}));
  EXPECT_EQ(ax.elementAt({320, 320}), window.element());
  notes.facts.refusesHitTest = true;
  EXPECT_FALSE(ax.elementAt({320, 320}));
  notes.facts.refusesHitTest = false;
  ax.hitTestFails = true;
  EXPECT_FALSE(ax.elementAt({320, 320}));
}

TEST_F(SimWindows, AreNotHitThroughAWindowOfNoApplication) {
  notes.window({0, 0, 400, 400});
  server.bareWindow(77, "Overlay", {100, 100, 50, 50});

  EXPECT_FALSE(desktop.accessibility().elementAt({120, 120}));
}

}  // namespace
}  // namespace tarqo::sim
