#include "platform/linux/linux_entry_index.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tarqo::lnx {
namespace {

namespace fs = std::filesystem;

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
    const fs::path path = root_ / folder / "applications" / (id + ".desktop");
    std::ofstream(path) << "[Desktop Entry]\nType=Application\n" << keys;
    return path;
  }

  EntryIndex index;

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
  const fs::path path = write("local", "notes", "Name=Notes\nExec=sh\n");
  // Where the clock of the file system is coarse, both changes would bear the same time.
  fs::last_write_time(path.parent_path(),
                      fs::last_write_time(path.parent_path()) + std::chrono::seconds(1));
  EXPECT_NE(index.byId("notes"), nullptr);
}

TEST_F(EntryFolders, HoldEntriesThatAUserCanLaunch) {
  write("local", "good", "Name=Good\nExec=sh -c true\nTryExec=sh\nOnlyShowIn=XFCE;\n");
  write("local", "no-display", "Name=x\nExec=sh\nNoDisplay=true\n");
  write("local", "no-program", "Name=x\n");
  write("local", "missing-program", "Name=x\nExec=no-such-program-anywhere\n");
  write("local", "missing-try", "Name=x\nExec=sh\nTryExec=/no/such/program\n");
  write("local", "elsewhere", "Name=x\nExec=sh\nOnlyShowIn=KDE;\n");
  write("local", "in-terminal", "Name=x\nExec=sh\nTerminal=true\n");

  ASSERT_EQ(index.entries().size(), 7U);
  for (const DesktopEntry& entry : index.entries()) {
    EXPECT_EQ(entry.launchable, entry.id == "good") << entry.id;
  }
  EXPECT_EQ(index.byId("good")->program, resolvedProgram("/bin/sh"));
}

TEST(ResolvedProgram, IsFoundAsALaunchWould) {
  EXPECT_EQ(resolvedProgram("sh"), fs::canonical("/bin/sh").string());
  EXPECT_EQ(resolvedProgram("/no/such/program"), "");
  EXPECT_EQ(resolvedProgram("no-such-program-anywhere"), "");
  EXPECT_EQ(resolvedProgram("/etc/passwd"), "") << "no program";
  EXPECT_EQ(resolvedProgram("/etc"), "") << "a folder";
}

}  // namespace
}  // namespace tarqo::lnx
