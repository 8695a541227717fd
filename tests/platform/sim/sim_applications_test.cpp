#include <gtest/gtest.h>

#include <set>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimApplications : public testing::Test {
 protected:
  Desktop desktop;
  WorkspaceService& workspace = desktop.workspace();
  App& notes = desktop.app("com.example.Notes");
};

TEST_F(SimApplications, StartWithABundleAProcessAndAName) {
  const auto running = workspace.runningApplication(notes.pid());

  ASSERT_TRUE(running);
  EXPECT_EQ(running->bundleId, "com.example.Notes");
  EXPECT_EQ(running->bundlePath, "/Applications/Notes.app");
  EXPECT_EQ(running->localizedName, "Notes");
  EXPECT_EQ(running->policy, ActivationPolicy::regular);
  EXPECT_EQ(desktop.processes().executablePath(notes.pid()),
            "/Applications/Notes.app/Contents/MacOS/Notes");
  EXPECT_FALSE(workspace.isTerminated(notes.id()));
}

TEST_F(SimApplications, AreFoundAgainByTheirIdentifier) {
  EXPECT_EQ(&desktop.app("com.example.Notes"), &notes);
  App& second = desktop.anotherApp("com.example.Notes");

  const auto running = workspace.runningApplications("com.example.Notes");

  ASSERT_EQ(running.size(), 2U);
  EXPECT_EQ(running[0].id, notes.id());
  EXPECT_EQ(running[1].id, second.id());
  EXPECT_TRUE(workspace.runningApplications("com.example.Other").empty());
  EXPECT_FALSE(workspace.runningApplication(9999));
}

TEST_F(SimApplications, AreListedInTheOrderOfTheirStart) {
  App& mail = desktop.app("com.example.Mail");
  mail.facts.policy = ActivationPolicy::accessory;
  mail.facts.bundleId = std::nullopt;

  const auto running = workspace.runningApplications();

  ASSERT_EQ(running.size(), 2U);
  EXPECT_EQ(running[0].id, notes.id());
  EXPECT_EQ(running[1].policy, ActivationPolicy::accessory);
  EXPECT_FALSE(running[1].bundleId);
}

TEST_F(SimApplications, End) {
  const ApplicationId id = notes.id();
  notes.kill();

  EXPECT_TRUE(workspace.isTerminated(id));
  EXPECT_TRUE(workspace.runningApplications().empty());
  EXPECT_FALSE(workspace.runningApplication(id.pid));
  EXPECT_FALSE(workspace.frontmostApplication());
}

TEST_F(SimApplications, MayStayListedAfterTheirEnd) {
  notes.kill(true);

  ASSERT_EQ(workspace.runningApplications().size(), 1U);
  EXPECT_TRUE(workspace.isTerminated(notes.id()));
}

TEST_F(SimApplications, AreNewInstancesWhenStartedAgain) {
  const ApplicationId before = notes.id();
  notes.kill();
  App& again = desktop.app("com.example.Notes");

  EXPECT_NE(again.id().instance, before.instance);
  EXPECT_TRUE(workspace.isTerminated(before));
  EXPECT_FALSE(workspace.isTerminated(again.id()));
}

TEST_F(SimApplications, BeginWithTheFirstInFront) {
  desktop.app("com.example.Mail");
  EXPECT_EQ(workspace.frontmostApplication(), notes.pid());
}

TEST_F(SimApplications, ComeToTheFrontAsTheyBehave) {
  App& mail = desktop.app("com.example.Mail");
  mail.facts.comesToFront = 1400ms;

  workspace.activate(mail.id());
  desktop.run(1399ms);
  EXPECT_EQ(workspace.frontmostApplication(), notes.pid());
  desktop.run(1ms);
  EXPECT_EQ(workspace.frontmostApplication(), mail.pid());

  notes.facts.comesToFront = std::nullopt;
  workspace.activate(notes.id());
  desktop.run(1h);
  EXPECT_EQ(workspace.frontmostApplication(), mail.pid());
  mail.facts.comesToFront = Duration::zero();
  EXPECT_EQ(desktop.eventLog().lines(Topic::workspace),
            (Lines{"activate com.example.Mail", "activate com.example.Notes"}));
}

TEST_F(SimApplications, ComeToTheFrontThroughAccessibilityToo) {
  App& mail = desktop.app("com.example.Mail");
  AccessibilityService& ax = desktop.accessibility();

  EXPECT_TRUE(ax.set(mail.node().element(), "AXFrontmost", Value{true}));

  EXPECT_EQ(workspace.frontmostApplication(), mail.pid());
  EXPECT_EQ(*ax.attribute(mail.node().element(), "AXFrontmost")->as<bool>(), true);
  EXPECT_EQ(*ax.attribute(notes.node().element(), "AXFrontmost")->as<bool>(), false);
}

TEST_F(SimApplications, DoNotComeToTheFrontOnceEnded) {
  App& mail = desktop.app("com.example.Mail");
  mail.facts.comesToFront = 100ms;
  workspace.activate(mail.id());
  mail.kill();

  desktop.run(1s);

  EXPECT_EQ(workspace.frontmostApplication(), notes.pid());
}

TEST_F(SimApplications, HideAndUnhide) {
  notes.facts.hidden = true;
  EXPECT_TRUE(workspace.isHidden(notes.id()));
  const auto attribute = desktop.accessibility().attribute(notes.node().element(), "AXHidden");
  EXPECT_EQ(*attribute->as<bool>(), true);

  notes.facts.unhides = false;
  workspace.unhide(notes.id());
  EXPECT_TRUE(workspace.isHidden(notes.id()));

  notes.facts.unhides = true;
  workspace.unhide(notes.id());
  EXPECT_FALSE(workspace.isHidden(notes.id()));
}

TEST(SimDesktop, PutsTheHelperBelowItsHost) {
  Desktop desktop;
  App& terminal = desktop.hostedBy("com.example.Terminal", "Terminal");
  ProcessesService& processes = desktop.processes();

  const Pid shell = processes.ownParentPid();

  EXPECT_EQ(processes.parentPid(processes.ownPid()), shell);
  EXPECT_EQ(processes.executablePath(shell), "/bin/zsh");
  EXPECT_EQ(processes.parentPid(shell), terminal.pid());
}

TEST(SimDesktop, GivesTheSameNumbersInEveryRun) {
  Desktop one;
  Desktop two;
  std::set<std::uint64_t> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::uint64_t number = one.platform().random.next();
    EXPECT_EQ(number, two.platform().random.next());
    seen.insert(number);
  }
  EXPECT_EQ(seen.size(), 1000U);
}

TEST(SimDesktop, RepeatsADeedPeriodically) {
  Desktop desktop;
  Lines seen;
  desktop.every(100ms, 3, [&] { seen.push_back(std::to_string(desktop.clock().elapsed() / 1ms)); });

  desktop.run(1s);

  EXPECT_EQ(seen, (Lines{"100", "200", "300"}));
}

TEST(SimPermissions, AreGrantedUntilTheSceneSaysOtherwise) {
  Desktop desktop;
  PermissionsService& permissions = desktop.permissions();
  EXPECT_TRUE(permissions.accessibilityTrusted());
  EXPECT_TRUE(permissions.captureAccess());
  EXPECT_FALSE(permissions.accessibilityObstacle());
  EXPECT_FALSE(permissions.captureObstacle());
}

TEST(SimPermissions, ArePromptedForAndPerhapsGranted) {
  Desktop desktop;
  PermissionsService& permissions = desktop.permissions();
  permissions.trusted = false;
  permissions.captureGranted = false;

  permissions.promptForAccessibility();
  EXPECT_FALSE(permissions.accessibilityTrusted());
  EXPECT_FALSE(permissions.requestCaptureAccess());
  permissions.promptGrantsTrust = true;
  permissions.requestGrantsCapture = true;
  permissions.promptForAccessibility();
  EXPECT_TRUE(permissions.accessibilityTrusted());
  EXPECT_TRUE(permissions.requestCaptureAccess());
  EXPECT_TRUE(permissions.captureAccess());

  EXPECT_EQ(desktop.eventLog().count("prompt accessibility"), 2U);
  EXPECT_EQ(desktop.eventLog().count("request capture"), 2U);
}

}  // namespace
}  // namespace tarqo::sim
