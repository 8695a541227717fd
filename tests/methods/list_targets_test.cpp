#include "tests/support/scene.h"

namespace tarqo {
namespace {

Json target(const std::string& name, const std::string& bundleId, bool running) {
  return {{"name", name}, {"bundleId", bundleId}, {"running", running}, {"kind", "macos"}};
}

class ListTargets : public Scene {
 protected:
  Json targets() { return result("listTargets")["targets"]; }

  sim::InstalledBundle& install(const std::string& path, const std::string& bundleId) {
    return desktop.bundles().install(path, bundleId);
  }

  static Json list(std::initializer_list<Json> items) { return Json::array_t(items); }
};

TEST_F(ListTargets, IsEmptyOnAnEmptyMachine) {
  EXPECT_EQ(result("listTargets"), (Json{{"targets", Json::array()}}));
}

TEST_F(ListTargets, ListsAnInstalledBundleOnce) {
  install("/Applications/Editor.app", "com.example.Editor").displayName = "Editor.app";
  EXPECT_EQ(targets(), list({target("Editor", "com.example.Editor", false)}));
}

TEST_F(ListTargets, KeepsADisplayNameWithoutTheEnding) {
  install("/Applications/Editor.app", "com.example.Editor").displayName = "편집기";
  EXPECT_EQ(targets(), list({target("편집기", "com.example.Editor", false)}));
}

TEST_F(ListTargets, ListsARunningApplicationOnceByItsLiveName) {
  desktop.app("com.example.Editor").facts.localizedName = "Live Editor";
  EXPECT_EQ(targets(), list({target("Live Editor", "com.example.Editor", true)}));
}

TEST_F(ListTargets, ListsARunningApplicationInstalledNowhere) {
  sim::App& app = desktop.bundles().startWithoutBundle("Nested");
  app.facts.bundleId = "com.example.Nested";
  EXPECT_EQ(targets(), list({target("Nested", "com.example.Nested", true)}));
}

TEST_F(ListTargets, ListsOneEntryForTwoProcessesOfABundle) {
  desktop.app("com.example.Editor").facts.localizedName = "First";
  desktop.anotherApp("com.example.Editor").facts.localizedName = "Second";
  EXPECT_EQ(targets(), list({target("Second", "com.example.Editor", true)}));
}

TEST_F(ListTargets, AnInstalledBackgroundApplicationIsNotRunning) {
  desktop.app("com.example.Agent").facts.policy = ActivationPolicy::prohibited;
  desktop.app("com.example.Helper").facts.policy = ActivationPolicy::accessory;
  EXPECT_EQ(targets(), list({target("Agent", "com.example.Agent", false),
                             target("Helper", "com.example.Helper", false)}));
}

TEST_F(ListTargets, ABackgroundApplicationInstalledNowhereIsNotListed) {
  sim::App& agent = desktop.bundles().startWithoutBundle("Agent");
  agent.facts.bundleId = "com.example.Agent";
  agent.facts.policy = ActivationPolicy::accessory;
  EXPECT_EQ(targets(), Json::array());
}

TEST_F(ListTargets, AnApplicationThatHasEndedIsNotRunning) {
  desktop.app("com.example.Editor").kill(true);
  EXPECT_EQ(targets(), list({target("Editor", "com.example.Editor", false)}));
}

TEST_F(ListTargets, ARunningApplicationWithoutNameOrIdentifierCountsForNothing) {
  sim::App& nameless = desktop.app("com.example.Editor");
  nameless.facts.localizedName = "";
  EXPECT_EQ(targets(), list({target("Editor", "com.example.Editor", false)}));
  nameless.facts.localizedName.reset();
  EXPECT_EQ(targets(), list({target("Editor", "com.example.Editor", false)}));
  nameless.facts.localizedName = "Named";
  nameless.facts.bundleId = "";
  EXPECT_EQ(targets(), list({target("Editor", "com.example.Editor", false)}));
  nameless.facts.bundleId.reset();
  EXPECT_EQ(targets(), list({target("Editor", "com.example.Editor", false)}));
}

TEST_F(ListTargets, SkipsBundlesThatSayTooLittle) {
  desktop.bundles().install("/Applications/None.app", std::nullopt);
  install("/Applications/Empty.app", "");
  install("/Applications/Closed.app", "com.example.Closed").openable = false;
  EXPECT_EQ(targets(), Json::array());
}

TEST_F(ListTargets, IgnoresEntriesThatAreNoBundlesByName) {
  install("/Applications/Folder", "com.example.Folder");
  install("/Applications/Loud.APP", "com.example.Loud");
  install("/Applications/Old.app.bak", "com.example.Old");
  EXPECT_EQ(targets(), Json::array());
}

TEST_F(ListTargets, LooksIntoNoSubfolder) {
  install("/Applications/Utilities/Tool.app", "com.example.Tool");
  EXPECT_EQ(targets(), Json::array());
}

TEST_F(ListTargets, ScansTheThreeFolders) {
  install("/Applications/A.app", "a");
  install("/System/Applications/B.app", "b");
  install("/Users/user/Applications/C.app", "c");
  install("/opt/D.app", "d");
  EXPECT_EQ(targets(),
            list({target("A", "a", false), target("B", "b", false), target("C", "c", false)}));
}

TEST_F(ListTargets, ALaterFolderOverrulesAnEarlierOne) {
  install("/Applications/First.app", "com.example.X");
  install("/System/Applications/Second.app", "com.example.X");
  EXPECT_EQ(targets(), list({target("Second", "com.example.X", false)}));
  install("/Users/user/Applications/Third.app", "com.example.X");
  EXPECT_EQ(targets(), list({target("Third", "com.example.X", false)}));
}

TEST_F(ListTargets, SkipsAFolderThatCannotBeRead) {
  install("/Applications/A.app", "a");
  install("/System/Applications/B.app", "b");
  desktop.bundles().unreadableFolders = {"/Applications"};
  EXPECT_EQ(targets(), list({target("B", "b", false)}));
}

TEST_F(ListTargets, SortsByNameWhateverTheCase) {
  install("/Applications/Beta.app", "1");
  install("/Applications/alpha.app", "2");
  install("/Applications/Gamma.app", "0");
  EXPECT_EQ(targets(), list({target("alpha", "2", false), target("Beta", "1", false),
                             target("Gamma", "0", false)}));
}

TEST_F(ListTargets, SortsEqualNamesByIdentifier) {
  install("/Applications/A.app", "com.b").displayName = "Same";
  install("/Applications/B.app", "com.a").displayName = "same";
  install("/Applications/C.app", "com.C").displayName = "SAME";
  EXPECT_EQ(targets(), list({target("SAME", "com.C", false), target("same", "com.a", false),
                             target("Same", "com.b", false)}));
}

TEST_F(ListTargets, NeedsNoGrant) {
  desktop.permissions().trusted = false;
  desktop.permissions().captureGranted = false;
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(targets(), Json::array());
  EXPECT_EQ(desktop.eventLog().lines(), sim::Lines{});
}

}  // namespace
}  // namespace tarqo
