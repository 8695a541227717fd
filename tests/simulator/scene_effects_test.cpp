// What a scene file wants done is done, when it wants it.

#include <gtest/gtest.h>

#include "simulator/simulation.h"

namespace tarqo::sim {
namespace {

class SceneEffects : public testing::Test {
 protected:
  /// A window of "a" with a node "n", and these changes.
  static std::string sceneWith(const std::string& changes) {
    return R"({"applications":[{"bundleId":"a","windows":[{"id":"w","frame":[100,100,400,300],)"
           R"("title":"W","nodes":[{"id":"n","role":"AXStaticText","value":"old"}]}]},)"
           R"({"bundleId":"b","windows":[{"id":"v","frame":[0,0,200,200]}]}],"changes":[)" +
           changes + "]}";
  }

  /// The changes are due at the start.
  void play(const std::string& effects) {
    simulation.emplace(SceneFile(sceneWith(R"({"after":{},"do":[)" + effects + "]}")));
  }

  Desktop& desktop() { return simulation->desktop(); }
  App& app() { return desktop().app("a"); }
  Window& window() { return *app().windows().front(); }
  Node& node() { return *window().children().front(); }

  std::optional<Simulation> simulation;
};

TEST_F(SceneEffects, SetFactsOfANode) {
  play(R"({"set":{"node":"n","value":"new","enabled":false,"frame":[1,2,3,4]}})");
  EXPECT_EQ(node().readText("AXValue"), "new");
  EXPECT_EQ(*node().read("AXEnabled")->as<bool>(), false);
  EXPECT_EQ(node().frame(), (Rect{1, 2, 3, 4}));
}

TEST_F(SceneEffects, AddAndRemoveNodes) {
  play(R"({"add":{"to":"w","nodes":[{"role":"AXButton","title":"OK"}]}},{"remove":"n"})");
  ASSERT_EQ(window().children().size(), 1U);
  EXPECT_EQ(node().name(), "AXButton \"OK\"");
}

TEST_F(SceneEffects, ReplaceANodeByAnEqualOne) {
  play(R"({"afterMs":1,"replace":"n"})");
  const Element before = node().element();
  desktop().run(std::chrono::milliseconds(1));
  EXPECT_FALSE(node().element() == before);
  EXPECT_EQ(node().readText("AXValue"), "old");
}

TEST_F(SceneEffects, MoveAndResizeWindowsWithWhatIsInThem) {
  play(R"({"move":{"window":"w","to":[0,50]}},{"resize":{"window":"w","to":[500,200]}})");
  EXPECT_EQ(window().frame(), (Rect{0, 50, 500, 200}));
  EXPECT_EQ(window().server().info.bounds, (Rect{0, 50, 500, 200}));
  EXPECT_EQ(node().frame()->x, 20);
}

TEST_F(SceneEffects, MinimizeRestoreAndCloseWindows) {
  play(R"({"minimize":"w"},{"minimize":"v"},{"restore":"v"})");
  EXPECT_TRUE(window().minimized());
  EXPECT_FALSE(desktop().app("b").windows().front()->minimized());
  play(R"({"close":"w"})");
  EXPECT_TRUE(app().windows().empty());
}

TEST_F(SceneEffects, OpenAWindowWithTheFocus) {
  play(R"({"open":{"in":"a","window":{"id":"d","frame":[9,9,200,150],"title":"Dialog"}}},)"
       R"({"set":{"node":"d","description":"Really?"}})");
  ASSERT_EQ(app().windows().size(), 2U);
  EXPECT_EQ(app().focusedWindow(), app().windows().back());
  EXPECT_EQ(app().focusedWindow()->readText("AXDescription"), "Really?");
}

TEST_F(SceneEffects, RaiseAWindowWithoutItsApplication) {
  play(R"({"raise":"v"})");
  EXPECT_EQ(desktop().windowServer().shown().front(), &desktop().app("b").windows()[0]->server());
  EXPECT_EQ(desktop().frontmost(), &app());
}

TEST_F(SceneEffects, BringForwardQuitAndChangeApplications) {
  play(R"({"front":"b"},{"application":{"bundleId":"a","hung":true,"name":"A"}})");
  EXPECT_EQ(desktop().frontmost(), &desktop().app("b"));
  EXPECT_TRUE(app().facts.hung);
  EXPECT_EQ(app().facts.localizedName, "A");
  play(R"({"quit":"a"})");
  EXPECT_TRUE(desktop().platform().workspace.runningApplications("a").empty());
}

TEST_F(SceneEffects, ChangeTheDesktop) {
  play(R"({"desktop":{"session":{"locked":true},"permissions":{"accessibility":false},)"
       R"("screens":[{"frame":[0,0,800,600],"scale":2}]}})");
  EXPECT_EQ(desktop().windowServer().session.locked, true);
  EXPECT_FALSE(desktop().permissions().trusted);
  ASSERT_EQ(desktop().windowServer().displays.size(), 1U);
  EXPECT_EQ(desktop().windowServer().displays[0].scale, 2);
}

TEST_F(SceneEffects, DoNothingToWhatIsGone) {
  play(R"({"remove":"n"},{"set":{"node":"n","value":"new"}},{"remove":"n"},{"quit":"a"},)"
       R"({"quit":"a"},{"close":"w"},{"close":"w"},{"move":{"window":"w","to":[0,0]}})");
  EXPECT_TRUE(desktop().platform().workspace.runningApplications("a").empty());
}

TEST_F(SceneEffects, ComeAfterAsManyRequestsAsTheSceneSays) {
  simulation.emplace(SceneFile(
      sceneWith(R"({"after":{"requests":2},"do":[{"set":{"node":"n","value":"second"}}]},)"
                R"({"after":{"requests":1},"do":[{"set":{"node":"n","value":"first"}}]})")));
  EXPECT_EQ(node().readText("AXValue"), "old");
  (void)simulation->serve("no request counts as well");
  EXPECT_EQ(node().readText("AXValue"), "first");
  (void)simulation->serve(R"({"method":"host"})");
  EXPECT_EQ(node().readText("AXValue"), "second");
}

TEST_F(SceneEffects, ComeWhileARequestWaits) {
  const char* const waits60Ms =
      R"({"method":"settle","args":{"quietMs":3000,"timeoutMs":60,"sinceMs":9e12}})";
  simulation.emplace(SceneFile(
      sceneWith(R"({"after":{"requests":1,"ms":100},"do":[{"set":{"node":"n","value":"new"}}]})")));
  (void)simulation->serve(R"({"method":"connect","args":{"bundleId":"a"}})");
  (void)simulation->serve(waits60Ms);
  EXPECT_EQ(node().readText("AXValue"), "old");
  (void)simulation->serve(waits60Ms);
  EXPECT_EQ(node().readText("AXValue"), "new");
}

TEST_F(SceneEffects, BringTheHostAboveTheHelper) {
  simulation.emplace(
      SceneFile(R"({"applications":[{"bundleId":"t","name":"Term"}],)"
                R"("host":{"application":"t","through":["/bin/zsh","/usr/bin/python3"]}})"));
  Processes& processes = desktop().platform().processes;
  const Pid python = processes.ownParentPid();
  EXPECT_EQ(processes.executablePath(python), "/usr/bin/python3");
  EXPECT_EQ(processes.parentPid(*processes.parentPid(python)), desktop().app("t").pid());
}

// The record is for tests; a program that runs for days would grow by it.
TEST(Simulation, KeepsNoRecordOfWhatRequestsDid) {
  Simulation simulation(SceneFile(R"({"applications":[{"bundleId":"a","windows":[]}]})"));
  const Served served = simulation.serve(R"({"id":1,"method":"connect","args":{"bundleId":"a"}})");
  ASSERT_TRUE(served.response.has_value());
  EXPECT_EQ(served.response->find("error"), std::string::npos);
  EXPECT_TRUE(simulation.desktop().eventLog().lines().empty());
}

}  // namespace
}  // namespace tarqo::sim
