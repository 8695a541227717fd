#include "platform/sim/sim_bundles.h"

#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimBundles : public testing::Test {
 protected:
  void open(const std::string& path, bool activates = false) {
    bundles.open(path, activates, [this](const OpenedApplication& opened) {
      ++completions;
      result = opened;
      completedAt = desktop.clock().elapsed();
    });
  }

  Desktop desktop;
  BundlesService& bundles = desktop.bundles();
  InstalledBundle& notes = desktop.installed("com.example.Notes");
  int completions = 0;
  OpenedApplication result;
  Duration completedAt{};
};

TEST_F(SimBundles, LieInFolders) {
  bundles.install("/Applications/Mail.app", "com.example.Mail");
  bundles.install("/Applications/Utilities/Deep.app", "com.example.Deep");
  bundles.install("/System/Applications/Clock.app", "com.example.Clock");
  bundles.install("/Applications/Folder", std::nullopt);

  EXPECT_EQ(bundles.applicationFolders().size(), 3U);
  EXPECT_EQ(bundles.bundlesIn("/Applications"), (Lines{"Mail.app", "Notes.app"}));
  EXPECT_EQ(bundles.bundlesIn("/System/Applications"), Lines{"Clock.app"});
  bundles.unreadableFolders = {"/Applications"};
  EXPECT_EQ(bundles.bundlesIn("/Applications"), Lines{});
}

TEST_F(SimBundles, TellTheirIdentifierAndTexts) {
  notes.info["CFBundleVersion"] = "42";

  EXPECT_EQ(bundles.bundleAt(notes.path)->identifier, "com.example.Notes");
  EXPECT_EQ(bundles.infoText(notes.path, "CFBundleVersion"), "42");
  EXPECT_FALSE(bundles.infoText(notes.path, "CFBundleShortVersionString"));
  EXPECT_FALSE(bundles.bundleAt("/Applications/None.app"));
  notes.identifier = std::nullopt;
  EXPECT_FALSE(bundles.bundleAt(notes.path)->identifier);
  notes.openable = false;
  EXPECT_FALSE(bundles.bundleAt(notes.path));
  EXPECT_FALSE(bundles.infoText(notes.path, "CFBundleVersion"));
}

TEST_F(SimBundles, AreCalledByTheirFileUnlessNamed) {
  EXPECT_EQ(bundles.displayName(notes.path), "Notes.app");
  EXPECT_EQ(bundles.displayName("/bin/sh"), "sh");
  notes.displayName = "메모";
  EXPECT_EQ(bundles.displayName(notes.path), "메모");
}

TEST_F(SimBundles, AreFoundByIdentifier) {
  EXPECT_EQ(bundles.pathForIdentifier("com.example.Notes"), notes.path);
  EXPECT_FALSE(bundles.pathForIdentifier("com.example.None"));
}

TEST_F(SimBundles, ResolveLinks) {
  bundles.links["/opt/tarqo"] = "/Applications/Tarqo.app/Contents";

  EXPECT_EQ(bundles.resolved("/opt/tarqo/bin/tarqo-ax"),
            "/Applications/Tarqo.app/Contents/bin/tarqo-ax");
  EXPECT_EQ(bundles.resolved("/a/./b/../c/"), "/a/c");
  EXPECT_EQ(bundles.resolved("/opt/tarqo2"), "/opt/tarqo2");
  EXPECT_EQ(bundles.resolved("/"), "/");
}

TEST_F(SimBundles, MayBeRecordedForAProcess) {
  EXPECT_FALSE(bundles.recordedBundleOf(300));
  bundles.recorded[300] = notes.path;
  EXPECT_EQ(bundles.recordedBundleOf(300), notes.path);
}

TEST_F(SimBundles, Launch) {
  notes.launch = Reply::after(300ms);
  notes.onLaunch = [](App& app) { app.window({0, 0, 400, 300}, "New"); };

  open(notes.path);
  desktop.run(299ms);
  EXPECT_EQ(completions, 0);
  EXPECT_TRUE(desktop.workspace().runningApplications().empty());
  desktop.run(1s);

  EXPECT_EQ(completions, 1);
  EXPECT_EQ(completedAt, 300ms);
  EXPECT_FALSE(result.error);
  ASSERT_TRUE(result.application);
  EXPECT_EQ(result.application->bundleId, "com.example.Notes");
  EXPECT_EQ(desktop.app("com.example.Notes").windows().size(), 1U);
  EXPECT_EQ(desktop.eventLog().lines(Topic::bundles),
            Lines{"open /Applications/Notes.app in background"});
}

TEST_F(SimBundles, DoNotCompleteOnTheCallersBack) {
  open(notes.path);
  EXPECT_EQ(completions, 0);
  desktop.run(0ms);
  EXPECT_EQ(completions, 1);
}

TEST_F(SimBundles, LaunchInTheBackgroundUnlessToldToActivate) {
  App& front = desktop.app("com.example.Front");

  open(notes.path, false);
  desktop.run(1ms);
  EXPECT_EQ(desktop.frontmost(), &front);
  open(notes.path, true);
  desktop.run(1ms);
  EXPECT_EQ(desktop.frontmost(), &desktop.app("com.example.Notes"));
}

TEST_F(SimBundles, FailToLaunch) {
  notes.launchError = "The application is damaged.";
  open(notes.path);
  desktop.run(1ms);

  EXPECT_EQ(result.error, "The application is damaged.");
  EXPECT_FALSE(result.application);
  EXPECT_TRUE(desktop.workspace().runningApplications().empty());
}

TEST_F(SimBundles, CompleteWithNothing) {
  notes.launch = Reply::nothing(20ms);
  open(notes.path);
  desktop.run(1s);

  EXPECT_EQ(completions, 1);
  EXPECT_FALSE(result.application);
  EXPECT_FALSE(result.error);
}

TEST_F(SimBundles, NeverComplete) {
  notes.launch = Reply::never();
  open(notes.path);
  desktop.run(24h);
  EXPECT_EQ(completions, 0);
}

TEST_F(SimBundles, TellThatAnApplicationIsMissing) {
  open("/Applications/None.app");
  desktop.run(1ms);
  EXPECT_TRUE(result.error);
}

TEST_F(SimBundles, ReopenTheRunningApplication) {
  App& app = desktop.app("com.example.Notes");
  notes.onReopen = [](App& running) { running.window({0, 0, 400, 300}); };

  open(notes.path, true);
  desktop.run(1ms);

  EXPECT_EQ(desktop.workspace().runningApplications().size(), 1U);
  EXPECT_EQ(app.windows().size(), 1U);
  EXPECT_EQ(result.application->id, app.id());
}

TEST_F(SimBundles, OpenASite) {
  App& app = desktop.app("com.example.Notes");
  notes.opensSiteAfter = 500ms;
  notes.onOpenSite = [](App& running, const std::string& site) {
    running.window({0, 0, 400, 300}).shows(site);
  };

  bundles.openSite("com.example.Notes", "https://example.com/a");
  desktop.run(499ms);
  EXPECT_TRUE(app.windows().empty());
  desktop.run(1ms);

  ASSERT_EQ(app.windows().size(), 1U);
  EXPECT_EQ(app.windows()[0]->readText("AXDocument"), "https://example.com/a");
  EXPECT_EQ(desktop.eventLog().lines(Topic::bundles),
            Lines{"open site com.example.Notes https://example.com/a"});
}

TEST_F(SimBundles, MayIgnoreASite) {
  App& app = desktop.app("com.example.Notes");
  bundles.openSite("com.example.Notes", "https://example.com/");
  bundles.openSite("com.example.None", "https://example.com/");
  desktop.run(10s);
  EXPECT_TRUE(app.windows().empty());
}

}  // namespace
}  // namespace tarqo::sim
