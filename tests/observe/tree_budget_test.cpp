// How much of a window's tree is walked, and what a slow, hung or dying application does to it.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

class TreeBudget : public Scene {
 protected:
  void SetUp() override { (void)result("connect", {{"bundleId", "com.example.Notes"}}); }

  void addLabels(int count) {
    for (int i = 1; i <= count; ++i) {
      window.label("label " + std::to_string(i));
    }
  }

  // Text recognition is off, since a tree cut down to the window would call for it.
  Json snapshot(Json args = Json::object()) {
    args["image"] = false;
    args["ocr"] = false;
    args["menubar"] = false;
    return result("observe", args).at("snapshot");
  }

  std::size_t nodesWith(const char* argument, const Json& value) {
    return snapshot({{argument, value}}).at("nodes").size();
  }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 800, 600}, "Notes");
};

TEST_F(TreeBudget, MaxNodesBelowOneYieldsTheWindowAlone) {
  addLabels(2);
  EXPECT_EQ(nodesWith("maxNodes", 0), 1U);
  EXPECT_EQ(nodesWith("maxNodes", -7), 1U);
  EXPECT_TRUE(snapshot({{"maxNodes", 0}}).at("truncated"));
}

TEST_F(TreeBudget, MaxNodesAboveTenThousandYieldsTenThousand) {
  addLabels(10050);
  const Json listed = snapshot({{"maxNodes", 20000}});
  EXPECT_EQ(listed.at("nodes").size(), 10000U);
  EXPECT_TRUE(listed.at("truncated"));
}

TEST_F(TreeBudget, FifteenHundredNodesAreListedByDefault) {
  addLabels(1600);
  EXPECT_EQ(snapshot().at("nodes").size(), 1500U);
}

TEST_F(TreeBudget, ABudgetOfTheWrongTypeCountsAsAbsent) {
  addLabels(20);
  EXPECT_EQ(nodesWith("maxNodes", "10"), 21U);
  EXPECT_EQ(nodesWith("maxNodes", 10.5), 21U);
  EXPECT_EQ(nodesWith("maxNodes", true), 21U);
  EXPECT_EQ(nodesWith("maxNodes", nullptr), 21U);
}

TEST_F(TreeBudget, AWholeNumberWithAFractionPartOfZeroIsAnInteger) {
  addLabels(20);
  EXPECT_EQ(nodesWith("maxNodes", 10.0), 10U);
}

TEST_F(TreeBudget, AFullNodeListCountsAsTruncatedEvenWhenNothingIsLeftOut) {
  addLabels(2);
  EXPECT_TRUE(snapshot({{"maxNodes", 3}}).at("truncated"));
  EXPECT_FALSE(snapshot({{"maxNodes", 4}}).at("truncated"));
}

TEST_F(TreeBudget, AWindowWithoutChildrenIsNotTruncatedByABudgetOfOne) {
  EXPECT_FALSE(snapshot({{"maxNodes", 1}}).at("truncated"));
}

TEST_F(TreeBudget, NodesAreKeptInTheOrderOfTheWalkUntilTheListIsFull) {
  sim::Node& box = window.group("box");
  box.label("inner");
  window.label("after");
  const Json nodes = snapshot({{"maxNodes", 3}}).at("nodes");
  ASSERT_EQ(nodes.size(), 3U);
  EXPECT_EQ(nodes[1].at("name"), "box");
  EXPECT_EQ(nodes[2].at("name"), "inner");
}

TEST_F(TreeBudget, ANegativeMaxDepthYieldsTheWindowAlone) {
  addLabels(1);
  const Json listed = snapshot({{"maxDepth", -5}});
  EXPECT_EQ(listed.at("nodes").size(), 1U);
  EXPECT_TRUE(listed.at("truncated"));
}

TEST_F(TreeBudget, AWindowWithoutChildrenIsNotTruncatedByDepthZero) {
  EXPECT_FALSE(snapshot({{"maxDepth", 0}}).at("truncated"));
}

TEST_F(TreeBudget, DepthOneListsTheChildrenAndSaysWhenTheyHaveMore) {
  sim::Node& box = window.group("box");
  EXPECT_FALSE(snapshot({{"maxDepth", 1}}).at("truncated"));
  box.label("inner");
  const Json listed = snapshot({{"maxDepth", 1}});
  EXPECT_EQ(listed.at("nodes").size(), 2U);
  EXPECT_TRUE(listed.at("truncated"));
}

TEST_F(TreeBudget, ADepthThatCutsOneBranchLeavesTheOthersWhole) {
  window.group("deep").group("deeper").label("deepest");
  window.label("flat");
  const Json listed = snapshot({{"maxDepth", 2}});
  EXPECT_EQ(listed.at("nodes").size(), 4U);
  EXPECT_EQ(listed.at("nodes").back().at("name"), "flat");
  EXPECT_TRUE(listed.at("truncated"));
}

TEST_F(TreeBudget, FortyLevelsAreWalkedByDefaultAndAHundredAtMost) {
  sim::Node* inner = &window;
  for (int level = 1; level <= 120; ++level) {
    inner = &inner->group("level " + std::to_string(level));
  }
  EXPECT_EQ(snapshot().at("nodes").back().at("name"), "level 40");
  EXPECT_EQ(snapshot({{"maxDepth", 5000}}).at("nodes").back().at("name"), "level 100");
}

// What follows counts round trips. To choose the window costs three (which one has the focus, its
// position, its size); a label costs four (attributes, value, actions, children), a window too.

TEST_F(TreeBudget, ASlowApplicationIsCutOffAfterTheElementThatReachesTheTimeOut) {
  addLabels(30);
  notes.facts.eachCallTakes = 10ms;
  const Json listed = snapshot({{"timeoutMs", 140}});  // 20 + 40 + 40 + 40
  EXPECT_EQ(listed.at("nodes").size(), 3U);
  EXPECT_TRUE(listed.at("truncated"));
  EXPECT_EQ(nodesWith("timeoutMs", 141), 4U);
}

TEST_F(TreeBudget, ATimeOutBelowAHundredMillisecondsIsAHundred) {
  addLabels(30);
  notes.facts.eachCallTakes = 10ms;
  EXPECT_EQ(nodesWith("timeoutMs", 50), 2U);
  EXPECT_EQ(nodesWith("timeoutMs", -1), 2U);
  EXPECT_EQ(nodesWith("timeoutMs", 100), 2U);
  EXPECT_EQ(nodesWith("timeoutMs", 111), 3U);
}

TEST_F(TreeBudget, TheWalkTakesFourSecondsByDefaultAndThirtyAtMost) {
  addLabels(60);
  notes.facts.eachCallTakes = 150ms;  // 0.9 s until the first label, 0.6 s a label
  EXPECT_EQ(snapshot().at("nodes").size(), 1U + 6U);
  EXPECT_EQ(nodesWith("timeoutMs", 60000), 1U + 49U);
  EXPECT_EQ(nodesWith("timeoutMs", 30000), 1U + 49U);
}

TEST_F(TreeBudget, AnApplicationThatHangsDuringTheWalkHoldsItOnlyUntilTheTimeOut) {
  addLabels(50);
  notes.afterCalls(3 + 4 + 2 * 4 + 1, [&] {  // the third label's attributes
    notes.facts.hung = true;
    desktop.after(5s, [&] { notes.facts.hung = false; });
  });
  const Json listed = snapshot();
  // Four elements of four calls, 0.3 s a call, fit before 4 s have passed; the fourth ends at 4.8
  // s.
  EXPECT_EQ(listed.at("nodes").size(), 1U + 2U + 4U);
  EXPECT_TRUE(listed.at("truncated"));
  // One more call that hangs, for the focused element.
  EXPECT_EQ(listed.at("durationMs"), 5100);
}

TEST_F(TreeBudget, AHungApplicationShowsNoWindowAfterThreeCallsInVain) {
  notes.facts.hung = true;
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(failure("observe", {{"image", false}}),
                        "no_window: The application has no accessible window. Open a window and "
                        "retry.");
            }),
            900);
}

TEST_F(TreeBudget, AnApplicationThatDiesDuringTheWalkLosesItsWindow) {
  addLabels(5);
  notes.afterCalls(3 + 4 + 4 + 1, [&] { notes.kill(); });
  EXPECT_EQ(failure("observe", {{"image", false}, {"menubar", false}}),
            "no_window: The target window disappeared during capture.");
  EXPECT_EQ(failure("observe", {{"image", false}}),
            "app_closed: The application closed; reconnect before continuing.");
}

TEST_F(TreeBudget, AnElementThatVanishesDuringTheWalkIsListedEmpty) {
  addLabels(2);
  window.children()[0]->failingBatch().failingActionNames();
  const Json nodes = snapshot().at("nodes");
  ASSERT_EQ(nodes.size(), 3U);
  EXPECT_EQ(nodes[1].at("role"), "");
  EXPECT_EQ(nodes[1].at("clickable"), false);
  EXPECT_EQ(nodes[2].at("name"), "label 2");
}

TEST_F(TreeBudget, ReadingAheadChangesNothingButTheCost) {
  sim::Node& box = window.group("box");
  box.textField("hello").with("AXDescription", Value{"Search"});
  box.secureField().label("never shown");
  box.button("Save").with("AXSelected", Value{true}).action("AXShowMenu");
  window.label("hidden").hidden(true);
  window.add("AXWebArea").with("AXURL", Value{Url{"https://example.com/a"}});
  window.label("off").enabled(false).withoutFrame();
  const Json args = {{"image", false}};
  notes.menu("File").menuItem("Open");
  const Json live = result("observe", args).at("snapshot");
  desktop.accessibility().readsAhead = true;
  const int before = notes.calls();
  const Json ahead = result("observe", args).at("snapshot");
  EXPECT_EQ(withoutId(live), withoutId(ahead));
  EXPECT_LT(notes.calls() - before, 25);
}

}  // namespace
}  // namespace tarqo
