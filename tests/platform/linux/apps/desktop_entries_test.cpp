#include "platform/linux/apps/desktop_entries.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/linux/base/spawn.h"
#include "platform/sim/sim_clock.h"

namespace tarqo::lnx::apps {
namespace {

namespace fs = std::filesystem;

/// The folders are checked at most every 20 ms.
constexpr std::chrono::milliseconds kUntilNextCheck{25};

/// Three folders of entries, the environment pointing at them.
class EntryFolders : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "tarqo-entries-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
    ::setenv("XDG_DATA_DIRS",
             (root_ / "local").string().append(":").append(root_ / "system").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (root_ / "home").c_str(), 1);
    ::setenv("XDG_CURRENT_DESKTOP", "XFCE", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    for (const char* folder : {"local", "system", "home"}) {
      fs::create_directories(root_ / folder / "applications");
    }
  }

  void TearDown() override {
    fs::remove_all(root_);
    for (const char* name : {"XDG_DATA_DIRS", "XDG_DATA_HOME", "XDG_CURRENT_DESKTOP", "LC_ALL"}) {
      ::unsetenv(name);
    }
  }

  std::string write(const std::string& folder, const std::string& id, const std::string& keys) {
    const fs::path path = applications(folder) / (id + ".desktop");
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "[Desktop Entry]\nType=Application\n" << keys;
    return path;
  }

  /// Writes one once the index has been read, and waits until it is looked at again. Where the
  /// clock of the file system is coarse, both changes of the folder would bear the same time.
  void writeLater(const std::string& folder, const std::string& id, const std::string& keys) {
    const fs::path parent = fs::path(write(folder, id, keys)).parent_path();
    fs::last_write_time(parent, fs::last_write_time(parent) + std::chrono::seconds(1));
    clock.sleep(kUntilNextCheck);
  }

  [[nodiscard]] fs::path applications(const std::string& folder) const {
    return root_ / folder / "applications";
  }

  sim::VirtualClock clock;
  DesktopEntries index{clock};

 private:
  fs::path root_;
};

TEST_F(EntryFolders, GoFromTheSystemToTheUser) {
  const auto folders = entryFolders();
  ASSERT_EQ(folders.size(), 3U);
  EXPECT_TRUE(folders[0].ends_with("/system/applications"));
  EXPECT_TRUE(folders[1].ends_with("/local/applications"));
  EXPECT_TRUE(folders[2].ends_with("/home/applications"));
}

TEST_F(EntryFolders, OverruleEachOther) {
  write("system", "notes", "Name=System\nExec=sh\n");
  const std::string overruling = write("home", "notes", "Name=Own\nExec=sh\n");
  write("system", "deleted", "Name=Deleted\nExec=sh\n");
  write("home", "deleted", "Hidden=true\n");

  ASSERT_NE(index.byId("notes"), nullptr);
  EXPECT_EQ(index.byId("notes")->name, "Own");
  EXPECT_EQ(index.byPath(overruling), index.byId("notes"));
  EXPECT_EQ(index.byPath(entryFolders()[0] + "/notes.desktop"), nullptr);
  EXPECT_EQ(index.byId("deleted"), nullptr);
}

TEST_F(EntryFolders, AreReadAgainWhenTheyChange) {
  EXPECT_EQ(index.byId("notes"), nullptr);
  writeLater("local", "notes", "Name=Notes\nExec=sh\n");
  EXPECT_NE(index.byId("notes"), nullptr);
}

TEST_F(EntryFolders, ThatChangeLeaveWhatWasFoundAsItWas) {
  write("local", "editor", "Name=Editor\nExec=sh\n");
  const std::string path = write("local", "notes", "Name=Notes\nExec=sh\n");
  write("local", "terminal", "Name=Terminal\nExec=sh\n");
  const auto byId = index.byId("notes");
  const auto byPath = index.byPath(path);
  fs::remove(applications("local") / "editor.desktop");
  writeLater("local", "notes", "Name=Renamed\nExec=sh\n");
  ASSERT_EQ(index.byId("editor"), nullptr) << "not read again";

  EXPECT_EQ(byId->id, "notes");
  EXPECT_EQ(byId->name, "Notes");
  EXPECT_EQ(byPath->id, "notes");
  EXPECT_EQ(index.byId("notes")->name, "Renamed");
}

TEST_F(EntryFolders, AreReadWithTheFoldersBelowThem) {
  const std::string path = write("home", "wine/Programs/notes", "Name=Notes\nExec=sh\n");
  ASSERT_NE(index.byId("wine-Programs-notes"), nullptr);
  EXPECT_EQ(index.byId("wine-Programs-notes")->path, path);
  EXPECT_EQ(index.byPath(path), index.byId("wine-Programs-notes"));
  EXPECT_EQ(index.byId("notes"), nullptr);

  write("system", "wine/overruled", "Name=System\nExec=sh\n");
  write("local", "wine-overruled", "Name=Local\nExec=sh\n");
  write("local", "same-id", "Name=Above\nExec=sh\n");
  write("local", "same/id", "Name=Below\nExec=sh\n");
  DesktopEntries second(clock);
  ASSERT_NE(second.byId("wine-overruled"), nullptr);
  EXPECT_EQ(second.byId("wine-overruled")->name, "Local");
  ASSERT_NE(second.byId("same-id"), nullptr);
  EXPECT_EQ(second.byId("same-id")->name, "Above");
}

TEST_F(EntryFolders, AreReadAgainWhenAFolderBelowThemChanges) {
  write("home", "wine/one", "Name=One\nExec=sh\n");
  EXPECT_EQ(index.byId("wine-two"), nullptr);
  writeLater("home", "wine/two", "Name=Two\nExec=sh\n");
  EXPECT_NE(index.byId("wine-two"), nullptr);
}

TEST_F(EntryFolders, MayHoldLinksThatLeadInCircles) {
  write("home", "wine/notes", "Name=Notes\nExec=sh\n");
  fs::create_directory_symlink(applications("home"), applications("home") / "wine" / "up");
  fs::create_directory_symlink("self", applications("home") / "self");
  write("system", "linked/one", "Name=One\nExec=sh\n");
  fs::create_directory_symlink(applications("system") / "linked", applications("home") / "other");

  EXPECT_EQ(listEntries(applications("home")).files,
            (std::vector<std::string>{"other/one.desktop", "wine/notes.desktop"}));
  EXPECT_NE(index.byId("other-one"), nullptr);
}

TEST_F(EntryFolders, AreNotSearchedWithoutEnd) {
  for (int i = 0; i < 300; ++i) {
    fs::create_directories(applications("home") / std::to_string(1000 + i));
  }
  EXPECT_EQ(listEntries(applications("home")).subfolders.size(), 199U) << "and the folder itself";
  write("local", "1/2/3/4/5/notes", "Name=x\nExec=sh\n");
  write("local", "1/2/3/4/5/6/deeper", "Name=x\nExec=sh\n");
  EXPECT_EQ(listEntries(applications("local")).files,
            (std::vector<std::string>{"1/2/3/4/5/notes.desktop"}));
}

TEST_F(EntryFolders, HoldEntriesThatAUserCanLaunch) {
  write("local", "good", "Name=Good\nExec=sh -c true\nTryExec=sh\nOnlyShowIn=XFCE;\n");
  write("local", "no-display", "Name=x\nExec=sh\nNoDisplay=true\n");
  write("local", "no-program", "Name=x\n");
  write("local", "missing-program", "Name=x\nExec=no-such-program-anywhere\n");
  write("local", "missing-try", "Name=x\nExec=sh\nTryExec=/no/such/program\n");
  write("local", "elsewhere", "Name=x\nExec=sh\nOnlyShowIn=KDE;\n");
  write("local", "in-terminal", "Name=x\nExec=sh\nTerminal=true\n");

  const Entries entries = index.entries();
  ASSERT_EQ(entries->size(), 7U);
  for (const DesktopEntry& entry : *entries) {
    EXPECT_EQ(entry.launchable, entry.id == "good") << entry.id;
  }
  EXPECT_EQ(index.byId("good")->program, resolvedProgram("/bin/sh"));
}

}  // namespace
}  // namespace tarqo::lnx::apps
