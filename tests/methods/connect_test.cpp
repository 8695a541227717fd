// Finding or launching the target, and what binding to it leaves behind.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using sim::Lines;
using sim::Reply;
using sim::Topic;

const Json kNotes = {{"bundleId", "com.example.Notes"}};
const Json kNotesWithoutLaunch = {{"bundleId", "com.example.Notes"}, {"launch", false}};

class Connect : public Scene {
 protected:
  Lines opened() { return desktop.eventLog().lines(Topic::bundles); }

  /// "com.example.Notes" installed, showing a window when it is launched.
  sim::InstalledBundle& installNotes() {
    sim::InstalledBundle& notes = desktop.installed("com.example.Notes");
    notes.onLaunch = [](sim::App& app) { app.window({100, 80, 800, 600}, "Notes"); };
    return notes;
  }

  sim::App& runNotes() {
    sim::App& app = desktop.app("com.example.Notes");
    app.window({100, 80, 800, 600}, "Notes");
    return app;
  }
};

TEST_F(Connect, AnswersWithWhoTheTargetIs) {
  sim::App& notes = runNotes();
  notes.facts.localizedName = "메모";
  EXPECT_EQ(result("connect", kNotes),
            (Json{{"bundleId", "com.example.Notes"}, {"name", "메모"}, {"pid", notes.pid()}}));
}

TEST_F(Connect, NamesATargetWithoutNameByItsIdentifier) {
  runNotes().facts.localizedName.reset();
  EXPECT_EQ(result("connect", kNotes)["name"], "com.example.Notes");
}

TEST_F(Connect, RequiresABundleId) {
  for (const Json& args : {Json::object(), Json{{"bundleId", ""}}, Json{{"bundleId", 5}},
                           Json{{"bundleId", nullptr}}, Json{{"bundleid", "com.example.Notes"}}}) {
    EXPECT_EQ(failure("connect", args), "invalid_argument: bundleId is required") << args;
  }
}

TEST_F(Connect, ChecksTheGrantBeforeTheArguments) {
  desktop.permissions().trusted = false;
  EXPECT_EQ(error("connect")["code"], "ax_not_trusted");
}

TEST_F(Connect, DoesNotAskWhetherTheDesktopIsLocked) {
  runNotes();
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(result("connect", kNotes)["bundleId"], "com.example.Notes");
}

TEST_F(Connect, TakesTheFirstOfTwoProcesses) {
  sim::App& first = runNotes();
  desktop.anotherApp("com.example.Notes");
  EXPECT_EQ(result("connect", kNotes)["pid"], first.pid());
}

TEST_F(Connect, LaunchesNothingWhenToldNotTo) {
  installNotes();
  EXPECT_EQ(failure("connect", kNotesWithoutLaunch),
            "app_not_running: Application is not running: com.example.Notes");
  EXPECT_EQ(opened(), Lines{});
}

TEST_F(Connect, SaysNotRunningBeforeNotInstalled) {
  EXPECT_EQ(failure("connect", kNotesWithoutLaunch),
            "app_not_running: Application is not running: com.example.Notes");
}

TEST_F(Connect, OnlyTheBooleanFalseForbidsLaunching) {
  installNotes();
  EXPECT_TRUE(
      result("connect", {{"bundleId", "com.example.Notes"}, {"launch", "false"}}).contains("pid"));
}

TEST_F(Connect, RefusesWhatIsNotInstalled) {
  EXPECT_EQ(failure("connect", kNotes),
            "app_not_found: No installed application for com.example.Notes");
}

TEST_F(Connect, LaunchesInTheBackground) {
  installNotes();
  const Json connected = result("connect", kNotes);
  EXPECT_EQ(connected["name"], "Notes");
  EXPECT_EQ(opened(), Lines{"open /Applications/Notes.app in background"});
}

TEST_F(Connect, TellsWhyALaunchFailed) {
  installNotes().launchError = "The application is damaged.";
  EXPECT_EQ(failure("connect", kNotes), "launch_failed: The application is damaged.");
}

TEST_F(Connect, SaysNotRunningWhenTheLaunchBringsNothing) {
  installNotes().launch = Reply::nothing();
  EXPECT_EQ(failure("connect", kNotes),
            "app_not_running: Application is not running: com.example.Notes");
}

TEST_F(Connect, WaitsTenSecondsForALaunch) {
  installNotes().launch = Reply::never();
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(failure("connect", kNotes),
                        "app_not_running: Application is not running: com.example.Notes");
            }),
            10000);
}

TEST_F(Connect, TakesALaunchInTheTenthSecond) {
  installNotes().launch = Reply::after(9990ms);
  EXPECT_TRUE(result("connect", kNotes).contains("pid"));
}

TEST_F(Connect, ALaunchThatComesTooLateIsFoundByTheNextConnect) {
  installNotes().launch = Reply::after(10100ms);
  (void)error("connect", kNotes);
  desktop.run(1s);
  EXPECT_TRUE(result("connect", kNotesWithoutLaunch).contains("pid"));
}

TEST_F(Connect, NoticesALaunchWithinItsSlice) {
  installNotes().launch = Reply::after(1001ms);
  constexpr double kActivation = 120;
  EXPECT_EQ(millisecondsOf([&] { (void)result("connect", kNotes); }), 1020 + kActivation);
}

TEST_F(Connect, AFailedLaunchKeepsTheTargetFromBefore) {
  runNotes();
  (void)result("connect", kNotes);
  EXPECT_EQ(error("connect", {{"bundleId", "com.example.Missing"}})["code"], "app_not_found");
  EXPECT_EQ(result("geometry")["bounds"]["x"], 100);
}

TEST_F(Connect, ReplacesTheTargetFromBefore) {
  runNotes();
  desktop.app("com.example.Other").window({300, 200, 500, 400}, "Other");
  (void)result("connect", kNotes);
  (void)result("connect", {{"bundleId", "com.example.Other"}});
  EXPECT_EQ(result("geometry")["bounds"]["x"], 300);
}

TEST_F(Connect, ForgetsTheNodesOfTheTargetFromBefore) {
  runNotes().windows().front()->button("Save");
  (void)result("connect", kNotes);
  const Json node = nodeNamed(result("observe", {{"image", false}}), "Save");
  (void)result("connect", kNotes);
  EXPECT_EQ(failure("click", {{"nodeId", node["id"]}}),
            "stale_snapshot: This node reference expired. Take a new snapshot before clicking.");
}

TEST_F(Connect, BoundsTheWaitForAHungTarget) {
  runNotes().facts.hung = true;
  // One read of the windows' list and two of the preferred windows: 0.3 s each.
  EXPECT_EQ(
      millisecondsOf([&] { EXPECT_TRUE(result("connect", kNotesWithoutLaunch).contains("pid")); }),
      0)
      << "without a launch nothing is asked of the target";
  EXPECT_EQ(millisecondsOf([&] { (void)error("geometry"); }), 900);
}

TEST_F(Connect, SucceedsThoughTheTargetDoesNotComeToTheFront) {
  sim::App& other = desktop.app("com.example.Other");
  runNotes().facts.comesToFront.reset();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_TRUE(result("connect", kNotes).contains("pid")); }), 1500);
  EXPECT_EQ(desktop.frontmost(), &other);
}

TEST_F(Connect, RaisesNothingWithoutLaunch) {
  runNotes();
  desktop.app("com.example.Other").bringToFront();
  (void)result("connect", kNotesWithoutLaunch);
  EXPECT_EQ(desktop.eventLog().lines(), Lines{});
  EXPECT_EQ(desktop.frontmost(), &desktop.app("com.example.Other"));
}

TEST_F(Connect, WithoutLaunchLeavesTheWindowAsItWas) {
  sim::App& notes = runNotes();
  (void)result("connect", kNotes);
  notes.facts.unsupportedNotifications = {"AXWindowMoved"};
  (void)result("connect", kNotesWithoutLaunch);
  notes.facts.unsupportedNotifications.clear();
  notes.windows().front()->announce("AXWindowMoved", 20ms);
  EXPECT_EQ(result("settle", Json::object())["heard"], Json::array({"AXWindowMoved"}))
      << "heard of the window alone, which must be known for that";
}

TEST_F(Connect, ListensForEveryWatchedNotification) {
  sim::App& notes = runNotes();
  (void)result("connect", kNotesWithoutLaunch);
  const std::vector<std::string> watched{"AXApplicationActivated",
                                         "AXCreated",
                                         "AXFocusedUIElementChanged",
                                         "AXLayoutChanged",
                                         "AXMenuClosed",
                                         "AXMenuItemSelected",
                                         "AXMenuOpened",
                                         "AXRowCountChanged",
                                         "AXSelectedChildrenChanged",
                                         "AXSelectedRowsChanged",
                                         "AXSelectedTextChanged",
                                         "AXTitleChanged",
                                         "AXUIElementDestroyed",
                                         "AXValueChanged",
                                         "AXWindowCreated",
                                         "AXWindowMoved",
                                         "AXWindowResized"};
  for (const std::string& name : watched) {
    notes.announce(name);
  }
  notes.announce("AXSomethingElse");
  EXPECT_EQ(result("settle")["heard"], watched);
}

TEST_F(Connect, HearsTheNewTargetAlone) {
  sim::App& notes = runNotes();
  sim::App& other = desktop.app("com.example.Other");
  other.window({300, 200, 500, 400}, "Other");
  (void)result("connect", kNotes);
  (void)result("connect", {{"bundleId", "com.example.Other"}, {"launch", false}});
  desktop.run(4s);
  notes.announce("AXValueChanged");
  other.announce("AXTitleChanged");
  EXPECT_EQ(result("settle")["heard"], Json::array({"AXTitleChanged"}));
}

TEST_F(Connect, AppearsConnectedThoughTheTargetCannotBeListenedTo) {
  runNotes().facts.refusesObservers = true;
  EXPECT_TRUE(result("connect", kNotes).contains("pid"));
  EXPECT_EQ(result("settle")["listening"], false);
}

class Versions : public Connect {
 protected:
  /// What becomes of a version text in the result; null when it is left out.
  Json shown(const std::string& version) {
    desktop.installed("com.example.Notes").info = {{"CFBundleShortVersionString", version},
                                                   {"CFBundleVersion", version}};
    const Json connected = result("connect", kNotesWithoutLaunch);
    EXPECT_EQ(connected.value("appVersion", Json()), connected.value("buildVersion", Json()));
    return connected.value("appVersion", Json());
  }

  void SetUp() override { runNotes(); }
};

TEST_F(Versions, AreReadFromTheBundle) {
  desktop.installed("com.example.Notes").info = {{"CFBundleShortVersionString", "4.11"},
                                                 {"CFBundleVersion", "2187 (a)"}};
  const Json connected = result("connect", kNotes);
  EXPECT_EQ(connected["appVersion"], "4.11");
  EXPECT_EQ(connected["buildVersion"], "2187 (a)");
}

TEST_F(Versions, OfUpTo80CharactersAreShown) {
  EXPECT_EQ(shown(std::string(80, '1')), std::string(80, '1'));
  EXPECT_EQ(shown(std::string(81, '1')), nullptr);
}

TEST_F(Versions, AreCountedInCharacters) {
  std::string wide;
  for (int i = 0; i < 80; ++i) {
    wide += "판";
  }
  EXPECT_EQ(shown(wide), wide);
  EXPECT_EQ(shown(wide + "판"), nullptr);
}

TEST_F(Versions, WithWhiteSpaceAtAnEndAreLeftOut) {
  for (const char* version : {" 1", "1 ", "1\n", "\u00A01", " "}) {
    EXPECT_EQ(shown(version), nullptr) << version;
  }
}

TEST_F(Versions, WithControlCharactersAreLeftOut) {
  for (const char* version : {"1\t2", "1\n2", "1\x7F", "1\u200E", "1\u00852"}) {
    EXPECT_EQ(shown(version), nullptr) << version;
  }
}

TEST_F(Versions, ThatAreEmptyOrMissingAreLeftOut) {
  EXPECT_EQ(shown(""), nullptr);
  desktop.installed("com.example.Notes").info.clear();
  EXPECT_FALSE(result("connect", kNotes).contains("appVersion"));
}

TEST_F(Versions, AreLeftOutForATargetWithoutBundle) {
  sim::App& tool = desktop.bundles().startWithoutBundle("Tool");
  tool.facts.bundleId = "com.example.Tool";
  tool.window({100, 80, 800, 600}, "Tool");
  EXPECT_EQ(result("connect", {{"bundleId", "com.example.Tool"}}),
            (Json{{"bundleId", "com.example.Tool"}, {"name", "Tool"}, {"pid", tool.pid()}}));
}

}  // namespace
}  // namespace tarqo
