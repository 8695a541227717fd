#include "host/responsible_host.h"

#include "tests/support/scene.h"

namespace tarqo {
namespace {

TEST(OutermostBundle, IsTheFirstFolderCountedFromTheRoot) {
  EXPECT_EQ(outermostBundle("/Applications/Editor.app/Contents/Frameworks/Helper.app/Contents/"
                            "MacOS/node"),
            "/Applications/Editor.app");
}

TEST(OutermostBundle, MayBeTheLastPiece) {
  EXPECT_EQ(outermostBundle("/Applications/Editor.app"), "/Applications/Editor.app");
}

TEST(OutermostBundle, KeepsEmptyPieces) {
  EXPECT_EQ(outermostBundle("//a//b.app/c"), "//a//b.app");
}

TEST(OutermostBundle, NeedsNoLeadingSlash) { EXPECT_EQ(outermostBundle("b.app/c"), "b.app"); }

TEST(OutermostBundle, TakesAFolderNamedByTheEndingAlone) {
  EXPECT_EQ(outermostBundle("/a/.app/b"), "/a/.app");
  EXPECT_EQ(outermostBundle(".app/b"), ".app");
}

TEST(OutermostBundle, IsAbsentOutsideAnyBundle) {
  for (const char* path : {"", "/", "/usr/bin/node", "/a/Editor.APP/b", "/a/Editor.apps/b",
                           "/a/Editor.app.old/b", "/a/app"}) {
    EXPECT_EQ(outermostBundle(path), std::nullopt) << path;
  }
}

TEST(WithoutAppSuffix, DropsOneEndingOnly) {
  EXPECT_EQ(withoutAppSuffix("Editor.app"), "Editor");
  EXPECT_EQ(withoutAppSuffix("Editor"), "Editor");
  EXPECT_EQ(withoutAppSuffix("Editor.app.app"), "Editor.app");
  EXPECT_EQ(withoutAppSuffix(".app"), "");
  EXPECT_EQ(withoutAppSuffix("Editor.APP"), "Editor.APP");
}

TEST(ResponsibleHostJson, LeavesOutWhatIsAbsent) {
  EXPECT_EQ((ResponsibleHost{"Terminal", std::nullopt, std::nullopt}.json()),
            (Json{{"name", "Terminal"}}));
  EXPECT_EQ((ResponsibleHost{"Terminal", "com.example.Terminal", 12}.json()),
            (Json{{"name", "Terminal"}, {"bundleId", "com.example.Terminal"}, {"pid", 12}}));
}

const Json kNoHost = {{"host", {{"name", "MCP 호스트"}}}, {"known", false}};

class HostMethod : public Scene {
 protected:
  Json hostFrom(const Json& pid) { return result("host", {{"pid", pid}}); }

  static Json known(const std::string& name, const std::string& bundleId, Pid pid) {
    return {{"host", {{"name", name}, {"bundleId", bundleId}, {"pid", pid}}}, {"known", true}};
  }

  /// An application whose bundle lies elsewhere than in /Applications.
  sim::App& appAt(const std::string& path, std::optional<std::string> bundleId) {
    return desktop.bundles().start(desktop.bundles().install(path, std::move(bundleId)));
  }
};

TEST_F(HostMethod, KnowsNoHostWhenNoProcessAboveIsAnApplication) {
  EXPECT_EQ(result("host"), kNoHost);
}

TEST_F(HostMethod, FindsTheTerminalAboveAShellAndAnInterpreter) {
  sim::App& terminal = desktop.app("com.example.Terminal");
  const Pid shell = desktop.processes().add("/bin/zsh", terminal.pid());
  const Pid interpreter = desktop.processes().add("/usr/bin/node", shell);
  desktop.processes().table[desktop.processes().own].parent = interpreter;
  EXPECT_EQ(result("host"), known("Terminal", "com.example.Terminal", terminal.pid()));
}

TEST_F(HostMethod, TakesTheNearestApplication) {
  sim::App& far = desktop.app("com.example.Far");
  sim::App& near = desktop.app("com.example.Near");
  desktop.processes().table[near.pid()].parent = far.pid();
  desktop.processes().table[desktop.processes().own].parent = near.pid();
  EXPECT_EQ(result("host"), known("Near", "com.example.Near", near.pid()));
}

TEST_F(HostMethod, StartsAtTheProcessItIsGiven) {
  sim::App& terminal = desktop.app("com.example.Terminal");
  const Pid shell = desktop.processes().add("/bin/zsh", terminal.pid());
  const Json expected = known("Terminal", "com.example.Terminal", terminal.pid());
  EXPECT_EQ(hostFrom(shell), expected);
  EXPECT_EQ(hostFrom(terminal.pid()), expected);
  EXPECT_EQ(hostFrom(shell + 0.9), expected) << "fractions are cut off";
}

TEST_F(HostMethod, StartsAtItsParentWhenThePidIsNoNumber) {
  const sim::App& terminal = desktop.hostedBy("com.example.Terminal", "Terminal");
  const Json expected = known("Terminal", "com.example.Terminal", terminal.pid());
  for (const Json& pid : {Json("1"), Json(nullptr), Json::array({1}), Json::object()}) {
    EXPECT_EQ(hostFrom(pid), expected) << pid;
  }
}

TEST_F(HostMethod, KnowsNoHostBelowProcessTwo) {
  desktop.hostedBy("com.example.Terminal", "Terminal");
  for (const Json& pid : {Json(0), Json(1), Json(-7), Json(1.9), Json(true), Json(false)}) {
    EXPECT_EQ(hostFrom(pid), kNoHost) << pid;
  }
}

TEST_F(HostMethod, TheFirstProcessAfterTheSystemsOwnMayBeTheHost) {
  desktop.installed("com.example.Editor");
  desktop.processes().table[2] = {1, "/Applications/Editor.app/Contents/MacOS/editor"};
  EXPECT_EQ(hostFrom(2), known("Editor", "com.example.Editor", 2));
}

TEST_F(HostMethod, KnowsNoHostForNumbersThatNoProcessCanHave) {
  desktop.hostedBy("com.example.Terminal", "Terminal");
  for (const Json& pid : {Json(4294967296 + 500), Json(-1e300), Json(1e300), Json(INT64_MAX)}) {
    EXPECT_EQ(hostFrom(pid), kNoHost) << pid;
  }
}

TEST_F(HostMethod, KnowsNoHostForAProcessThatDoesNotExist) { EXPECT_EQ(hostFrom(9999), kNoHost); }

TEST_F(HostMethod, SearchesAfreshOnEveryRequest) {
  EXPECT_EQ(result("host"), kNoHost);
  sim::App& terminal = desktop.hostedBy("com.example.Terminal", "Terminal");
  EXPECT_EQ(result("host"), known("Terminal", "com.example.Terminal", terminal.pid()));
  terminal.facts.localizedName = "Konsole";
  EXPECT_EQ(result("host"), known("Konsole", "com.example.Terminal", terminal.pid()));
}

TEST_F(HostMethod, AcceptsABundleWithoutIdentifier) {
  sim::App& tool = appAt("/opt/Tool.app", std::nullopt);
  EXPECT_EQ(hostFrom(tool.pid()),
            (Json{{"host", {{"name", "Tool"}, {"pid", tool.pid()}}}, {"known", true}}));
}

TEST_F(HostMethod, AcceptsABundleThatCannotBeOpened) {
  const Pid tool = desktop.processes().add("/opt/Tool.app/Contents/MacOS/tool", 1);
  EXPECT_EQ(hostFrom(tool), (Json{{"host", {{"name", "Tool"}, {"pid", tool}}}, {"known", true}}));
}

TEST_F(HostMethod, NamesABundleByItsDisplayNameWhenItsProcessIsNoApplication) {
  sim::InstalledBundle& bundle = desktop.installed("com.example.Editor");
  bundle.displayName = "편집기.app";
  const Pid helper = desktop.processes().add("/Applications/Editor.app/Contents/MacOS/helper", 1);
  EXPECT_EQ(hostFrom(helper), known("편집기", "com.example.Editor", helper));
  bundle.displayName = "편집기";
  EXPECT_EQ(hostFrom(helper), known("편집기", "com.example.Editor", helper));
}

TEST_F(HostMethod, DoesNotTrustARunningApplicationOfAnotherBundle) {
  sim::App& editor = desktop.app("com.example.Editor");
  editor.facts.localizedName = "Live";
  editor.facts.bundlePath = "/elsewhere/Editor.app";
  editor.facts.bundleId = "com.example.Elsewhere";
  EXPECT_EQ(hostFrom(editor.pid()), known("Editor", "com.example.Editor", editor.pid()));
}

TEST_F(HostMethod, PrefersTheIdentifierOfTheRunningApplicationToThatOfItsBundle) {
  sim::App& editor = desktop.app("com.example.Editor");
  editor.facts.bundleId = "com.example.Editor.Beta";
  EXPECT_EQ(hostFrom(editor.pid()), known("Editor", "com.example.Editor.Beta", editor.pid()));
}

TEST_F(HostMethod, AsksTheBundleWhenTheRunningApplicationHasNoIdentifier) {
  sim::App& editor = desktop.app("com.example.Editor");
  editor.facts.bundleId.reset();
  EXPECT_EQ(hostFrom(editor.pid()), known("Editor", "com.example.Editor", editor.pid()));
}

TEST_F(HostMethod, KeepsTheDisplayNameWhenTheApplicationHasNone) {
  sim::App& editor = desktop.app("com.example.Editor");
  editor.facts.localizedName.reset();
  EXPECT_EQ(hostFrom(editor.pid()), known("Editor", "com.example.Editor", editor.pid()));
}

TEST_F(HostMethod, FallsBackToTheCommonNameWhenThereIsNone) {
  desktop.app("com.example.Editor").facts.localizedName = "";
  EXPECT_EQ(hostFrom(desktop.app("com.example.Editor").pid())["host"]["name"], "MCP 호스트");
  desktop.installed("com.example.Editor").displayName = ".app";
  const Pid helper = desktop.processes().add("/Applications/Editor.app/x", 1);
  EXPECT_EQ(hostFrom(helper)["host"]["name"], "MCP 호스트");
}

TEST_F(HostMethod, PrefersTheSystemsRecordsToTheExecutablePath) {
  sim::App& editor = desktop.app("com.example.Editor");
  desktop.bundles().recorded[editor.pid()] = "/Applications/Other.app";
  desktop.installed("com.example.Other");
  EXPECT_EQ(hostFrom(editor.pid()), known("Other", "com.example.Other", editor.pid()));
}

class OwnBundle : public HostMethod {
 protected:
  void SetUp() override {
    desktop.processes().ownProgram = "/Applications/Tarqo.app/Contents/Helpers/tarqo-ax";
    desktop.processes().table[desktop.processes().own].parent = launcher;
  }

  sim::App& terminal = desktop.app("com.example.Terminal");
  sim::App& companion = appAt("/Applications/Tarqo.app", "com.tarqo.app");
  /// Lives in the companion's bundle, and is no application.
  Pid launcher =
      desktop.processes().add("/Applications/Tarqo.app/Contents/MacOS/launcher", terminal.pid());
};

TEST_F(OwnBundle, AProcessInsideItIsPassedOver) {
  EXPECT_EQ(result("host"), known("Terminal", "com.example.Terminal", terminal.pid()));
}

TEST_F(OwnBundle, TheCompanionsOwnProcessIsTheHost) {
  desktop.processes().table[launcher].parent = companion.pid();
  EXPECT_EQ(result("host"), known("Tarqo", "com.tarqo.app", companion.pid()));
}

TEST_F(OwnBundle, AnotherApplicationLivingInsideItIsPassedOver) {
  sim::App& inner = desktop.bundles().startWithoutBundle("Inner");
  inner.facts.bundleId = "com.example.Inner";
  desktop.processes().table[inner.pid()] = {terminal.pid(),
                                            "/Applications/Tarqo.app/Contents/Inner.app/inner"};
  EXPECT_EQ(hostFrom(inner.pid()), known("Terminal", "com.example.Terminal", terminal.pid()));
}

TEST_F(OwnBundle, ACopyOfTheCompanionElsewhereIsPassedOverToo) {
  desktop.bundles().install("/opt/Tarqo.app", "com.tarqo.app");
  const Pid copy = desktop.processes().add("/opt/Tarqo.app/Contents/helper", terminal.pid());
  EXPECT_EQ(hostFrom(copy), known("Terminal", "com.example.Terminal", terminal.pid()));
}

TEST_F(OwnBundle, ARunningCopyOfTheCompanionElsewhereIsTheHost) {
  sim::App& copy = appAt("/opt/Copy.app", "com.tarqo.app");
  EXPECT_EQ(hostFrom(copy.pid()), known("Copy", "com.tarqo.app", copy.pid()));
}

class ProcessChain : public HostMethod {
 protected:
  /// The lowest of `count` processes that are no applications, below `top`.
  Pid chainBelow(Pid top, int count) {
    Pid pid = top;
    for (int i = 0; i < count; ++i) {
      pid = desktop.processes().add("/bin/sh", pid);
    }
    return pid;
  }

  sim::App& terminal = desktop.app("com.example.Terminal");
};

TEST_F(ProcessChain, IsFollowedFor64Processes) {
  EXPECT_EQ(hostFrom(chainBelow(terminal.pid(), 63))["known"], true);
}

TEST_F(ProcessChain, IsFollowedNoFurtherThan64Processes) {
  EXPECT_EQ(hostFrom(chainBelow(terminal.pid(), 64)), kNoHost);
}

TEST_F(ProcessChain, EndsAtAProcessThatIsItsOwnParent) {
  const Pid loop = desktop.processes().add("/bin/sh", 1);
  desktop.processes().table[loop].parent = loop;
  EXPECT_EQ(hostFrom(loop), kNoHost);
}

TEST_F(ProcessChain, EndsInACircleOfTwo) {
  const Pid first = desktop.processes().add("/bin/sh", 1);
  const Pid second = desktop.processes().add("/bin/sh", first);
  desktop.processes().table[first].parent = second;
  EXPECT_EQ(hostFrom(first), kNoHost);
}

TEST_F(ProcessChain, EndsWhereTheParentCannotBeRead) {
  const Pid orphan = desktop.processes().add("/bin/sh", terminal.pid());
  desktop.processes().table[orphan].parent.reset();
  EXPECT_EQ(hostFrom(orphan), kNoHost);
}

TEST_F(ProcessChain, PassesOverProcessesWhoseProgramCannotBeRead) {
  const Pid hidden = desktop.processes().add("", terminal.pid());
  desktop.processes().table[hidden].executable.reset();
  EXPECT_EQ(hostFrom(hidden)["known"], true);
}

class RememberedHost : public Scene {
 protected:
  HostFinder hosts{platform};
};

TEST_F(RememberedHost, IsSearchedOnce) {
  sim::App& terminal = desktop.hostedBy("com.example.Terminal", "Terminal");
  EXPECT_EQ(hosts.host().name, "Terminal");
  terminal.facts.localizedName = "Konsole";
  terminal.kill();
  desktop.processes().table.clear();
  EXPECT_EQ(hosts.host().name, "Terminal");
  EXPECT_EQ(hosts.host().pid, terminal.pid());
}

TEST_F(RememberedHost, StaysAbsentOnceItWas) {
  EXPECT_EQ(hosts.host().json(), (Json{{"name", "MCP 호스트"}}));
  desktop.hostedBy("com.example.Terminal", "Terminal");
  EXPECT_EQ(hosts.host().json(), (Json{{"name", "MCP 호스트"}}));
}

TEST_F(RememberedHost, IsNotTouchedByASearchFromAProcess) {
  const sim::App& other = desktop.app("com.example.Other");
  EXPECT_EQ(hosts.responsibleHost(other.pid())->name, "Other");
  desktop.hostedBy("com.example.Terminal", "Terminal");
  EXPECT_EQ(hosts.host().name, "Terminal");
}

}  // namespace
}  // namespace tarqo
