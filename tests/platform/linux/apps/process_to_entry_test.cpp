#include "platform/linux/apps/process_to_entry.h"

#include <gtest/gtest.h>

namespace tarqo::lnx::apps {
namespace {

using Words = std::vector<std::string>;

DesktopEntry entry(const std::string& id, const Words& command, const std::string& program) {
  DesktopEntry made;
  made.id = id;
  made.path = "/usr/share/applications/" + id + ".desktop";
  made.command = command;
  made.program = program;
  made.launchable = true;
  return made;
}

class EntryMatching : public testing::Test {
 protected:
  [[nodiscard]] std::string match() const {
    const DesktopEntry* found = matchingEntry(entries, evidence);
    return found != nullptr ? found->id : "none";
  }

  std::vector<DesktopEntry> entries{
      entry("org.example.Notes", {"notes"}, "/usr/bin/notes"),
      entry("org.example.Notes.Settings", {"notes", "--settings"}, "/usr/bin/notes"),
      entry("terminal", {"terminal"}, "/usr/bin/terminal"),
      entry("script", {"python3", "/opt/script/main.py"}, "/usr/bin/python3.11"),
  };
  ProcessEvidence evidence;
};

TEST_F(EntryMatching, FindsNothingWithoutEvidence) { EXPECT_EQ(match(), "none"); }

TEST_F(EntryMatching, FollowsTheControlGroupOfItsLeader) {
  evidence.controlGroup = "/user.slice/app.slice/app-gnome-org.example.Notes-4711.scope";
  evidence.leadsControlGroup = true;
  evidence.windowClasses = {{"", "terminal"}};
  EXPECT_EQ(match(), "org.example.Notes");
}

TEST_F(EntryMatching, DoesNotTakeWhatATerminalRunsForTheTerminal) {
  evidence.controlGroup = "/app.slice/app-terminal-4711.scope";
  evidence.program = "/usr/bin/bash";
  EXPECT_EQ(match(), "none");
}

TEST_F(EntryMatching, TakesAWindowOwnerInTheGroupForItsApplicationAtLast) {
  evidence.controlGroup = "/app.slice/app-terminal-4711.scope";
  evidence.ownsWindows = true;
  EXPECT_EQ(match(), "terminal");
  evidence.program = "/usr/bin/notes";
  EXPECT_EQ(match(), "org.example.Notes");
}

TEST_F(EntryMatching, FollowsTheEntryThatALauncherWroteDown) {
  evidence.launchedEntry = "/usr/share/applications/script.desktop";
  EXPECT_EQ(match(), "script");
  EXPECT_EQ(recordedEntry(entries, evidence)->id, "script");
}

TEST_F(EntryMatching, FollowsTheApplicationIdOfGtk) {
  evidence.gtkApplicationId = "org.example.Notes";
  evidence.windowClasses = {{"", "terminal"}};
  EXPECT_EQ(match(), "org.example.Notes");
  EXPECT_EQ(recordedEntry(entries, evidence), nullptr);
}

TEST_F(EntryMatching, FollowsTheWindowClassOfTheEntryBeforeItsId) {
  entries[0].windowClass = "Terminal";
  evidence.windowClasses = {{"", "Terminal"}};
  EXPECT_EQ(match(), "org.example.Notes");
  evidence.windowClasses = {{"", "TERMINAL"}};
  EXPECT_EQ(match(), "terminal");
}

TEST_F(EntryMatching, FollowsTheProgram) {
  evidence.program = "/usr/bin/notes";
  evidence.commandLine = {"notes", "file.txt"};
  EXPECT_EQ(match(), "org.example.Notes");
}

TEST_F(EntryMatching, PrefersTheEntryWithTheSameOptions) {
  evidence.program = "/usr/bin/notes";
  evidence.commandLine = {"notes", "--settings"};
  EXPECT_EQ(match(), "org.example.Notes.Settings");
}

TEST_F(EntryMatching, FollowsTheScriptOfAnInterpreter) {
  evidence.program = "/usr/bin/python3.11";
  evidence.commandLine = {"python3", "-u", "/opt/script/main.py"};
  EXPECT_EQ(match(), "script");
  evidence.commandLine = {"python3", "/opt/other/main.py"};
  EXPECT_EQ(match(), "none");
}

TEST_F(EntryMatching, FollowsTheScriptOfAnotherInterpreterOfThatName) {
  evidence.program = "/home/user/env/bin/python3.12";
  evidence.commandLine = {"python3", "/opt/script/main.py"};
  EXPECT_EQ(match(), "script");
}

TEST_F(EntryMatching, FollowsAProgramThatIsAScriptItself) {
  evidence.program = "/usr/bin/perl";
  evidence.commandLine = {"/usr/bin/perl", "/usr/bin/notes"};
  evidence.pathArguments = {"/usr/bin/notes"};
  EXPECT_EQ(match(), "org.example.Notes");
}

TEST_F(EntryMatching, GivesNoProgramToEntriesThatAreNotForUsers) {
  entries[2].launchable = false;
  evidence.program = "/usr/bin/terminal";
  EXPECT_EQ(match(), "none");
}

TEST_F(EntryMatching, PassesOverEntriesThatRunInATerminal) {
  entries[0].terminal = true;
  entries[0].launchable = false;
  evidence.gtkApplicationId = "org.example.Notes";
  EXPECT_EQ(match(), "none");
}

TEST(ControlGroup, NamesTheEntryInAScope) {
  EXPECT_EQ(entryIdsOfControlGroup("/a/app-gnome-org.example.Notes-4711.scope"),
            (Words{"org.example.Notes", "gnome"}));
  EXPECT_EQ(entryIdsOfControlGroup("/a/app-org.example.Notes-4711.scope"),
            (Words{"org.example.Notes"}));
}

TEST(ControlGroup, NamesTheEntryInAService) {
  EXPECT_EQ(entryIdsOfControlGroup("/a/app-kde-notes@0a1b.service"), (Words{"notes", "kde"}));
}

TEST(ControlGroup, KeepsHyphensOfTheEntryEscaped) {
  EXPECT_EQ(entryIdsOfControlGroup("/a/app-my\\x2dnotes-4711.scope"), (Words{"my-notes"}));
  EXPECT_EQ(entryIdsOfControlGroup("/a/app-odd\\xzz-4711.scope"), (Words{"odd\\xzz"}));
}

TEST(ControlGroup, NamesNothingElsewhere) {
  for (const char* group :
       {"", "/", "/user.slice/session-2.scope", "/a/vte-spawn-1.scope", "/a/app-x.slice"}) {
    EXPECT_TRUE(entryIdsOfControlGroup(group).empty()) << group;
  }
}

TEST_F(EntryMatching, LooksPastADialogOfAClassOfItsOwn) {
  evidence.windowClasses = {{"tip", "Tip"}, {"", "terminal"}};
  EXPECT_EQ(match(), "terminal");
}

TEST_F(EntryMatching, TakesTheEntryOfTheScriptThatStartedItAtLast) {
  evidence.inheritedEntry = "/usr/share/applications/script.desktop";
  EXPECT_EQ(match(), "script");
  evidence.program = "/usr/bin/notes";
  EXPECT_EQ(match(), "org.example.Notes");
}

TEST_F(EntryMatching, OneProcessMayBelongToSeveralEntries) {
  evidence.windowClasses = {{"", "terminal"}, {"", "org.example.notes"}};
  EXPECT_TRUE(belongsTo(entries, evidence, "terminal"));
  EXPECT_TRUE(belongsTo(entries, evidence, "org.example.Notes"));
  EXPECT_FALSE(belongsTo(entries, evidence, "script"));
  evidence.inheritedEntry = "/usr/share/applications/script.desktop";
  EXPECT_TRUE(belongsTo(entries, evidence, "script"));
}

}  // namespace
}  // namespace tarqo::lnx::apps
