#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimReadAhead : public testing::Test {
 protected:
  void SetUp() override { ax.readsAhead = true; }

  std::string titleOf(const Element& element) {
    const std::optional<Value> value = ax.attribute(element, "AXTitle");
    return value ? *value->as<std::string>() : "(none)";
  }

  Instant in(Duration duration) { return desktop.clock().now() + duration; }

  Desktop desktop;
  App& notes = desktop.app("com.example.Notes");
  Window& window = notes.window({100, 80, 800, 600}, "Draft");
  Node& save = window.button("Save");
  AccessibilityService& ax = desktop.accessibility();
};

TEST_F(SimReadAhead, IsOffUnlessAskedFor) {
  ax.readsAhead = false;
  EXPECT_EQ(ax.readTree(window.element(), {in(4s), 1000}), nullptr);
}

TEST_F(SimReadAhead, AnswersFromTheMomentItBegan) {
  const auto scope = ax.readTree(window.element(), {in(4s), 1000});
  ASSERT_NE(scope, nullptr);
  save.title("Changed");

  EXPECT_EQ(titleOf(save.element()), "Save");
  const std::string_view names[] = {"AXTitle", "AXNoSuchThing"};
  const auto values = ax.attributes(save.element(), names);
  ASSERT_EQ(values.size(), 2U);
  EXPECT_EQ(*values[0]->as<std::string>(), "Save");
  EXPECT_FALSE(values[1]);
}

TEST_F(SimReadAhead, IsForgottenWithItsScope) {
  auto scope = ax.readTree(window.element(), {in(4s), 1000});
  save.title("Changed");
  scope.reset();

  EXPECT_EQ(titleOf(save.element()), "Changed");
}

TEST_F(SimReadAhead, CostsOneRoundTripForTheWholeTree) {
  notes.facts.eachCallTakes = 10ms;
  const auto scope = ax.readTree(window.element(), {in(4s), 1000});

  EXPECT_EQ(titleOf(window.element()), "Draft");
  EXPECT_EQ(titleOf(save.element()), "Save");
  EXPECT_EQ(ax.actionNames(save.element()), std::vector<std::string>{"AXPress"});
  EXPECT_EQ(desktop.clock().elapsed(), 10ms);
}

TEST_F(SimReadAhead, ReadsEverythingElseLive) {
  const auto scope = ax.readTree(window.element(), {in(4s), 1000});
  Node& later = window.button("Later");
  notes.facts.localizedName = "Renamed";

  EXPECT_EQ(titleOf(later.element()), "Later");
  EXPECT_EQ(titleOf(notes.node().element()), "Renamed");
}

TEST_F(SimReadAhead, ActsLive) {
  const auto scope = ax.readTree(window.element(), {in(4s), 1000});
  save.withoutAction("AXPress");

  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::refused);
}

TEST_F(SimReadAhead, NeverReadsPastTheDeadline) {
  notes.facts.hung = true;
  (void)ax.application(notes.pid(), 5s);

  EXPECT_EQ(ax.readTree(window.element(), {in(2s), 1000}), nullptr);
  EXPECT_EQ(desktop.clock().elapsed(), 2s);
  EXPECT_EQ(ax.readTree(window.element(), {in(0s), 1000}), nullptr);
  EXPECT_EQ(desktop.clock().elapsed(), 2s);
}

TEST_F(SimReadAhead, TellsOnlyWhatWasReadBeforeTheTargetFellSilent) {
  ax.silentAfter = 1;
  const auto scope = ax.readTree(window.element(), {in(4s), 1000});
  const int before = notes.calls();

  EXPECT_TRUE(scope->incomplete());
  EXPECT_EQ(titleOf(window.element()), "Draft");
  EXPECT_EQ(titleOf(save.element()), "(none)");
  EXPECT_EQ(titleOf(notes.node().element()), "(none)");
  EXPECT_EQ(notes.calls(), before);
}

TEST_F(SimReadAhead, AsksAgainForWhatWasNotRead) {
  ax.silentAfter = 1;
  const auto scope = ax.readTree(window.element(), {in(4s), 1000});
  window.title("Changed");
  scope->readLive();

  EXPECT_TRUE(scope->incomplete());
  EXPECT_EQ(titleOf(window.element()), "Draft");
  EXPECT_EQ(titleOf(save.element()), "Save");
}

TEST_F(SimReadAhead, IsSilentUntilTheEndOfItsScopeAlone) {
  ax.silentAfter = 0;
  { const auto scope = ax.readTree(window.element(), {in(4s), 1000}); }

  EXPECT_EQ(titleOf(save.element()), "Save");
}

TEST_F(SimReadAhead, EqualsLiveReads) {
  const std::string_view names[] = {"AXRole", "AXTitle",   "AXEnabled",  "AXPosition",
                                    "AXSize", "AXFocused", "AXChildren", "AXParent"};
  window.textField("text").focus();
  for (const Node* node : {static_cast<Node*>(&window), &save, window.children().back()}) {
    const auto live = ax.attributes(node->element(), names);
    const auto scope = ax.readTree(window.element(), {in(4s), 1000});
    const auto ahead = ax.attributes(node->element(), names);
    ASSERT_EQ(live.size(), ahead.size());
    for (std::size_t i = 0; i < live.size(); ++i) {
      EXPECT_EQ(live[i].has_value(), ahead[i].has_value()) << names[i];
      EXPECT_TRUE(!live[i] || live[i]->is.index() == ahead[i]->is.index()) << names[i];
    }
  }
}

}  // namespace
}  // namespace tarqo::sim
