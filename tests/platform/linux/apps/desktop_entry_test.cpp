#include "platform/linux/apps/desktop_entry.h"

#include <gtest/gtest.h>

namespace tarqo::lnx::apps {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kPath = "/usr/share/applications/org.example.Notes.desktop";

DesktopEntry parsed(const std::string& text, const Words& locales = {}) {
  return parseDesktopEntry(text, kPath, locales).value_or(DesktopEntry{});
}

DesktopEntry withExec(const std::string& exec) {
  return parsed("[Desktop Entry]\nType=Application\nName=My Notes\nIcon=notes\nExec=" + exec +
                "\n");
}

TEST(DesktopEntryFile, TellsItsKeys) {
  const DesktopEntry entry = parsed(
      "# A comment\n"
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name = Notes\n"
      "Exec=notes %U\n"
      "TryExec=notes\r\n"
      "Path=/srv\n"
      "StartupWMClass=Notes-Window\n"
      "OnlyShowIn=GNOME;XFCE;\n"
      "NotShowIn=KDE;\n"
      "Terminal=true\n"
      "NoDisplay=true\n");
  EXPECT_EQ(entry.id, "org.example.Notes");
  EXPECT_EQ(entry.path, kPath);
  EXPECT_EQ(entry.name, "Notes");
  EXPECT_EQ(entry.exec, "notes %U");
  EXPECT_EQ(entry.tryExec, "notes");
  EXPECT_EQ(entry.folder, "/srv");
  EXPECT_EQ(entry.windowClass, "Notes-Window");
  EXPECT_EQ(entry.onlyShowIn, (Words{"GNOME", "XFCE"}));
  EXPECT_EQ(entry.notShowIn, (Words{"KDE"}));
  EXPECT_TRUE(entry.terminal);
  EXPECT_TRUE(entry.noDisplay);
  EXPECT_FALSE(entry.hidden);
}

TEST(DesktopEntryFile, KeepsTheKeysOfItsActionsApart) {
  const DesktopEntry entry = parsed(
      "[Desktop Entry]\nType=Application\nExec=notes\n"
      "[Desktop Action New]\nName=New\nExec=notes --new\n");
  EXPECT_EQ(entry.exec, "notes");
  EXPECT_EQ(entry.name, "");
}

TEST(DesktopEntryFile, IsNoneWithoutAnApplication) {
  EXPECT_FALSE(parseDesktopEntry("", kPath, {}));
  EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nURL=x\n", kPath, {}));
  EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\n", "/a/notes.txt", {}));
  EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\n", "/a/.desktop", {}));
}

TEST(DesktopEntryFile, MayOnlySayThatItIsDeleted) {
  const auto entry = parseDesktopEntry("[Desktop Entry]\nHidden=true\n", kPath, {});
  ASSERT_TRUE(entry);
  EXPECT_TRUE(entry->hidden);
}

TEST(DesktopEntryFile, NamesItselfInTheFirstLanguageItHas) {
  const std::string text =
      "[Desktop Entry]\nType=Application\nName=Notes\nName[de]=Notizen\nName[pt_BR]=Notas\n";
  EXPECT_EQ(parsed(text, {"ko_KR", "ko", "de"}).name, "Notizen");
  EXPECT_EQ(parsed(text, {"pt_BR", "pt"}).name, "Notas");
  EXPECT_EQ(parsed(text, {"pt_PT", "pt"}).name, "Notes");
}

TEST(DesktopEntryFile, UnescapesItsValues) {
  const DesktopEntry entry =
      parsed("[Desktop Entry]\nType=Application\nName=a\\sb\\tc\\\\d\\n\nExec=x \\\\$y\n");
  EXPECT_EQ(entry.name, "a b\tc\\d\n");
  EXPECT_EQ(entry.exec, "x \\$y");
}

TEST(DesktopEntryCommand, LeavesOutTheCodesForFiles) {
  for (const char* code : {"%f", "%F", "%u", "%U", "%d", "%D", "%n", "%N", "%v", "%m"}) {
    EXPECT_EQ(commandOf(withExec(std::string("notes ") + code)), (Words{"notes"})) << code;
  }
  EXPECT_EQ(commandOf(withExec("notes --file=%f -x")), (Words{"notes", "--file=", "-x"}));
}

TEST(DesktopEntryCommand, FillsInTheOtherCodes) {
  EXPECT_EQ(commandOf(withExec("notes %i --name %c --entry=%k 100%%")),
            (Words{"notes", "--icon", "notes", "--name", "My Notes",
                   "--entry=" + std::string(kPath), "100%"}));
}

TEST(DesktopEntryCommand, TakesQuotedWordsAsOne) {
  EXPECT_EQ(commandOf(withExec(R"("/opt/My App/run" "a \\"b\\"" "" plain)")),
            (Words{"/opt/My App/run", "a \"b\"", "", "plain"}));
}

TEST(DesktopEntryCommand, IsSplitLikeAShellWould) {
  EXPECT_EQ(commandOf(withExec(R"(wine C:\\\\run.exe /c/Start\\ Menu/x.lnk)")),
            (Words{"wine", R"(C:\run.exe)", "/c/Start Menu/x.lnk"}));
  EXPECT_EQ(commandOf(withExec(R"(notes 'one word' a'b c'd '' '"' "it's")")),
            (Words{"notes", "one word", "ab cd", "", "\"", "it's"}));
  EXPECT_EQ(commandOf(withExec(R"(notes it\\'s \\"x 'a\\b' "a\\b" "\\$x")")),
            (Words{"notes", "it's", "\"x", R"(a\b)", R"(a\b)", "$x"}));
}

TEST(DesktopEntryCommand, IsEmptyWithoutAProgramOrWithAnOpenQuote) {
  EXPECT_TRUE(commandOf(withExec("")).empty());
  EXPECT_TRUE(commandOf(withExec("notes \"open")).empty());
  EXPECT_TRUE(commandOf(withExec("notes 'open")).empty());
}

TEST(DesktopEntryCommand, HasItsProgramBehindTheVariablesItSets) {
  EXPECT_EQ(programPosition({"notes", "A=1"}), 0U);
  EXPECT_EQ(programPosition({"env", "A=1", "B=2", "notes", "C=3"}), 3U);
  EXPECT_EQ(programPosition({"/usr/bin/env", "notes"}), 1U);
  EXPECT_EQ(programPosition({"env", "A=1"}), 0U);
  EXPECT_EQ(programPosition({}), 0U);
}

TEST(DesktopEntryCommand, HasItsProgramBehindTheOptionsOfEnv) {
  EXPECT_EQ(programPosition({"env", "-u", "VAR", "notes"}), 3U);
  EXPECT_EQ(programPosition({"env", "-uVAR", "notes"}), 2U);
  EXPECT_EQ(programPosition({"env", "--unset=VAR", "--unset", "VAR", "notes"}), 4U);
  EXPECT_EQ(programPosition({"env", "-i", "A=1", "notes", "-u"}), 3U);
  EXPECT_EQ(programPosition({"env", "-iu", "VAR", "-C", "/srv", "notes"}), 5U);
  EXPECT_EQ(programPosition({"env", "--chdir=/srv", "--ignore-environment", "notes"}), 3U);
  EXPECT_EQ(programPosition({"env", "-", "notes"}), 2U);
  EXPECT_EQ(programPosition({"env", "--", "A=1", "notes"}), 3U);
  EXPECT_EQ(programPosition({"env", "-u"}), 0U);
}

TEST(DesktopEntryFile, HasItsFoldersInItsId) {
  EXPECT_EQ(entryIdOf("notes.desktop"), "notes");
  EXPECT_EQ(entryIdOf("wine/Programs/Start Menu.desktop"), "wine-Programs-Start Menu");
}

TEST(DesktopEntryDisplay, FollowsTheNamesOfTheDesktop) {
  DesktopEntry entry;
  EXPECT_TRUE(isShownIn(entry, {}));
  entry.onlyShowIn = {"GNOME", "XFCE"};
  EXPECT_TRUE(isShownIn(entry, {"ubuntu", "GNOME"}));
  EXPECT_FALSE(isShownIn(entry, {"KDE"}));
  EXPECT_FALSE(isShownIn(entry, {}));
  entry.notShowIn = {"ubuntu"};
  EXPECT_FALSE(isShownIn(entry, {"ubuntu", "GNOME"}));
}

TEST(LocaleNames, GoFromTheMostToTheLeastExact) {
  EXPECT_EQ(localeNames("ko_KR.UTF-8@x"), (Words{"ko_KR@x", "ko_KR", "ko@x", "ko"}));
  EXPECT_EQ(localeNames("de"), (Words{"de"}));
  EXPECT_EQ(localeNames("C.UTF-8"), Words{});
  EXPECT_EQ(localeNames("POSIX"), Words{});
  EXPECT_EQ(localeNames(""), Words{});
}

}  // namespace
}  // namespace tarqo::lnx::apps
