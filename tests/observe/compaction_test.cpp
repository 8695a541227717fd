// What "compact": true leaves out, and that nothing else is lost.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

class Compact : public ConnectedScene {
 protected:
  Json observeCompact(bool compact = true) {
    return observe({{"image", false}, {"menubar", false}, {"compact", compact}});
  }
  std::size_t listed(bool compact = true) { return nodesOf(observeCompact(compact)).size(); }
};

TEST_F(Compact, LeavesOutWhatHasNoNameNoValueAndNoUse) {
  window.group().group().label("inner");
  EXPECT_EQ(listed(false), 7U);
  const Json observation = observeCompact();
  const Json& nodes = nodesOf(observation);
  ASSERT_EQ(nodes.size(), 5U);
  EXPECT_EQ(nodes[4].at("name"), "inner");
  EXPECT_EQ(nodes[4].at("parentId"), nodes[0].at("id"));
  EXPECT_EQ(observation.at("omissions").back(),
            "Nodes without name, value and use that were left out (compact: true): 2.");
}

TEST_F(Compact, SaysNothingWhenNothingIsLeftOut) {
  EXPECT_EQ(observeCompact().at("omissions").size(), 1U);
}

TEST_F(Compact, TheIdsOfTheOthersStay) {
  window.group().button("Send");
  const auto idOfLast = [&](bool compact) {
    return nodesOf(observeCompact(compact)).back().at("id").get<std::string>().substr(36);
  };
  EXPECT_EQ(idOfLast(false), ":5");
  EXPECT_EQ(idOfLast(true), ":5");
}

TEST_F(Compact, WhatWasLeftOutCannotBeNamed) {
  window.group().at({200, 400, 10, 10}).action("AXShowMenu");
  const std::string id = nodesOf(observeCompact()).back().at("id").get<std::string>();
  EXPECT_EQ(failure("hover", {{"nodeId", id.substr(0, 36) + ":4"}}).substr(0, 14),
            "stale_snapshot");
}

TEST_F(Compact, ANodeUnderALeftOutOneCanBeActedOn) {
  window.group().at({200, 400, 100, 30}).button("Send").at({200, 400, 80, 24});
  const std::string id = nodesOf(observeCompact()).back().at("id");
  EXPECT_EQ(result("hover", {{"nodeId", id}}).at("nodeId"), id);
}

TEST_F(Compact, TheWindowStaysWhateverItIsCalled) {
  window.without("AXTitle");
  EXPECT_EQ(nodesOf(observeCompact())[0].at("rawRole"), "AXWindow");
}

TEST_F(Compact, WhateverSaysOrDoesSomethingStays) {
  const std::size_t before = listed();
  window.add("AXGroup").with("AXDescription", Value{std::string("Toolbar")});
  window.add("AXGroup").action("AXPress");
  window.add("AXButton");
  window.textField();
  window.secureField();
  window.add("AXScrollArea");
  window.add("AXGroup").with("AXSelected", Value{true});
  window.add("AXGroup").with("AXFocused", Value{true});
  window.add("AXWebArea").with("AXURL", Value{Url{"https://example.com/"}});
  EXPECT_EQ(listed(), before + 9);
}

TEST_F(Compact, WhatIsNotSelectedAndNothingElseIsLeftOut) {
  const std::size_t before = listed();
  window.add("AXGroup").with("AXSelected", Value{false});
  window.add("AXStaticText");
  window.add("AXImage");
  window.add("AXGroup").action("AXShowMenu");
  EXPECT_EQ(listed(), before);
  EXPECT_EQ(listed(false), before + 4);
}

TEST_F(Compact, AnExpandedContainerStaysWhereStatesAreWanted) {
  window.add("AXGroup").with("AXExpanded", Value{false});
  const auto count = [&](bool states) {
    return nodesOf(
               observe(
                   {{"image", false}, {"menubar", false}, {"compact", true}, {"states", states}}))
        .size();
  };
  EXPECT_EQ(count(true), count(false) + 1);
}

TEST_F(Compact, ANodeIsFollowedIntoACompactObservation) {
  const std::string id = idOf("Save");
  window.group().label("new");
  const Json observation = observe({{"image", false}, {"compact", true}, {"previousNodeId", id}});
  EXPECT_EQ(nodeNamed(observation, "Save").at("id"), observation.at("renewedNodeId"));
}

}  // namespace
}  // namespace tarqo
