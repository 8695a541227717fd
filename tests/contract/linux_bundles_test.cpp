// Opening an application while desktop entries are installed and removed.

#include "platform/linux/apps/linux_bundles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "platform/linux/linux_clock.h"

namespace tarqo::lnx::apps {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// The folders of entries are checked at most this often.
constexpr auto kCheckInterval = 20ms;

/// A folder of entries whose programs write down the id of theirs.
class LinuxBundlesWhileEntriesChange : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "tarqo-bundles-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
    fs::create_directories(root_ / "data" / "applications");
    ::setenv("XDG_DATA_HOME", (root_ / "data").c_str(), 1);
  }

  void TearDown() override {
    fs::remove_all(root_);
    ::unsetenv("XDG_DATA_HOME");
  }

  std::string install(const std::string& id) {
    const fs::path path = fileOf(id);
    std::ofstream(path) << "[Desktop Entry]\nType=Application\nName=" << id
                        << "\nExec=/bin/sh -c \"echo " << id << " >> " << log().string() << "\"\n";
    return path;
  }

  void remove(const std::string& id) { fs::remove(fileOf(id)); }

  /// What has been started, once something was.
  std::string started() {
    for (int i = 0; i < 200; ++i) {
      std::ifstream in(log());
      std::string text(std::istreambuf_iterator<char>(in), {});
      if (text.ends_with('\n')) {
        fs::remove(log());
        return text;
      }
      std::this_thread::sleep_for(10ms);
    }
    return "nothing";
  }

  LinuxClock clock;
  x11::Display display{clock};
  Applications applications{display, clock};
  LinuxBundles bundles{applications, clock};

 private:
  [[nodiscard]] fs::path fileOf(const std::string& id) const {
    return root_ / "data" / "applications" / (id + ".desktop");
  }
  [[nodiscard]] fs::path log() const { return root_ / "log"; }

  fs::path root_;
};

// The entries are read again between the look-up by path and the launch, when the running
// applications are listed: at that moment the interval between two checks of the folders ends.
TEST_F(LinuxBundlesWhileEntriesChange, OpenTheOneThatWasAskedFor) {
  const std::string path = install("com.tarqo.test.changing.b");
  install("com.tarqo.test.changing.c");
  for (auto early = 0us; early < 1500us; early += 50us) {
    install("com.tarqo.test.changing.a");
    std::this_thread::sleep_for(kCheckInterval + 5ms);
    ASSERT_TRUE(bundles.pathForIdentifier("com.tarqo.test.changing.a"));
    const auto lookedAt = std::chrono::steady_clock::now();
    remove("com.tarqo.test.changing.a");
    std::this_thread::sleep_until(lookedAt + kCheckInterval - early);

    bundles.open(path, false, nullptr);

    EXPECT_EQ(started(), "com.tarqo.test.changing.b\n") << early.count();
  }
}

TEST_F(LinuxBundlesWhileEntriesChange, OpenTheOneThatWasFound) {
  install("com.tarqo.test.changing.b");
  const auto path = bundles.pathForIdentifier("com.tarqo.test.changing.b");
  ASSERT_TRUE(path);
  remove("com.tarqo.test.changing.b");
  std::this_thread::sleep_for(kCheckInterval + 5ms);

  bundles.open(*path, false, nullptr);

  EXPECT_EQ(started(), "com.tarqo.test.changing.b\n");
}

}  // namespace
}  // namespace tarqo::lnx::apps
