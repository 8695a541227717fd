// What the macOS backend does besides what the contract of every backend asks: the programs of the
// system that it runs, names that are no text, and what other systems have and macOS has not.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "platform/sim/sim_desktop.h"
#include "tests/platform/mac/shared_backend.h"
#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/faults.h"
#include "tests/platform/mac/standin/tools.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr const char* kNoText = "\xff";

class MacBackend : public testing::Test {
 protected:
  MacBackend() { standin::enterDesktop(desktop.platform(), true); }
  MacBackend(const MacBackend&) = delete;
  MacBackend& operator=(const MacBackend&) = delete;
  ~MacBackend() override { standin::leaveDesktop(); }

  template <typename Condition>
  static bool comesTrue(const Condition& condition) {
    for (const auto end = std::chrono::steady_clock::now() + 5s; !condition();) {
      if (std::chrono::steady_clock::now() > end) {
        return false;
      }
      std::this_thread::sleep_for(5ms);
    }
    return true;
  }

  /// A child that nobody has collected is a zombie, and still one of ours.
  static bool hasNoChildren() { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }

  sim::Desktop desktop;
  Platform mac = sharedBackend().platform();
};

TEST_F(MacBackend, OpensASiteByTheToolOfTheSystemAndCollectsIt) {
  const std::string written =
      testing::TempDir() + "opened." + std::to_string(mac.processes.ownPid());
  standin::replaceTool("/usr/bin/open", [&](const standin::CommandLine& command) {
    standin::CommandLine shell{"/bin/sh", "-c", "printf '%s|' \"$@\" > \"$0\"", written};
    shell.insert(shell.end(), command.begin(), command.end());
    return shell;
  });
  mac.bundles.openSite("com.example.Browser", "https://example.com/?a=b c");
  EXPECT_TRUE(comesTrue(hasNoChildren));
  std::ifstream file(written);
  EXPECT_EQ(
      std::string(std::istreambuf_iterator<char>(file), {}),
      "/usr/bin/open|-nb|com.example.Browser|--args|--new-window|https://example.com/?a=b c|");
  std::filesystem::remove(written);
}

TEST_F(MacBackend, CollectsAChildThatIsLetGoWhileItRuns) {
  ASSERT_TRUE(mac.processes.start("/bin/sleep", {"0.2"}));
  EXPECT_TRUE(comesTrue(hasNoChildren));
}

TEST_F(MacBackend, FindsNothingByANameThatIsNoText) {
  EXPECT_TRUE(mac.bundles.bundlesIn(kNoText).empty());
  EXPECT_EQ(mac.bundles.infoText("/", kNoText), std::nullopt);
  EXPECT_EQ(mac.bundles.pathForIdentifier(kNoText), std::nullopt);
  EXPECT_EQ(mac.bundles.displayName("/folder/" + std::string(kNoText)), kNoText);
  EXPECT_TRUE(mac.workspace.runningApplications(kNoText).empty());
}

TEST_F(MacBackend, SaysThatThereIsNothingToOpenUnderSuchAName) {
  OpenedApplication opened;
  mac.bundles.open(kNoText, true, [&](OpenedApplication result) { opened = std::move(result); });
  EXPECT_FALSE(opened.application);
  EXPECT_EQ(opened.error, "There is no application to open at \xff.");
}

TEST_F(MacBackend, TellsProgramsWithoutAPlaceInTheDockApart) {
  desktop.app("com.example.Agent").facts.policy = ActivationPolicy::prohibited;
  desktop.app("com.example.Helper").facts.policy = ActivationPolicy::accessory;
  std::map<std::string, ActivationPolicy> found;
  for (const RunningApplication& each : mac.workspace.runningApplications()) {
    found[each.bundleId.value_or("")] = each.policy;
  }
  EXPECT_EQ(found.at("com.example.Agent"), ActivationPolicy::prohibited);
  EXPECT_EQ(found.at("com.example.Helper"), ActivationPolicy::accessory);
}

TEST_F(MacBackend, NeedsNothingOfWhatOtherSystemsDoForKeysAndWheels) {
  Accessibility& ax = mac.accessibility;
  const Element element = ax.application(mac.processes.ownPid(), 100ms);
  EXPECT_FALSE(ax.isEndangeredByKeys(mac.processes.ownPid()));
  EXPECT_EQ(ax.otherKeyWindow(element), std::nullopt);
  EXPECT_FALSE(ax.takesTextByKeys(element));
  EXPECT_EQ(ax.wheelStep(element), std::nullopt);
  EXPECT_EQ(mac.bundles.recordedBundleOf(mac.processes.ownPid()), std::nullopt);
}

TEST_F(MacBackend, FindsNoElementAtAPointWhenTheSystemGivesNoStart) {
  standin::Faults::instance().set("AXUIElementCreateSystemWide",
                                  {standin::Fault::Kind::fails, std::nullopt});
  EXPECT_EQ(mac.accessibility.elementAt({10, 10}), std::nullopt);
  standin::Faults::instance().reset();
}

}  // namespace
}  // namespace tarqo
