// The menu bar as a flat list of commands.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using Path = std::vector<std::string>;

class MenuBar : public ConnectedScene {
 protected:
  Json snapshot(Json args = Json::object()) {
    args["image"] = false;
    return observe(args).at("snapshot");
  }

  // The paths of all commands listed.
  std::vector<Path> commands(const Json& args = Json::object()) {
    std::vector<Path> paths;
    const Json taken = snapshot(args);
    for (const Json& node : taken.at("nodes")) {
      if (node.contains("command")) {
        paths.push_back(node.at("command").get<Path>());
      }
    }
    return paths;
  }
};

TEST_F(MenuBar, ItsNodeFollowsTheWindowsNodes) {
  notes.menu("File").menuItem("Open…").identifier("open");
  const Json taken = snapshot();
  const std::string id = taken.at("id");
  ASSERT_EQ(taken.at("nodes").size(), 6U);
  EXPECT_EQ(taken.at("nodes")[4], Json({{"id", id + ":menubar"},
                                        {"parentId", nullptr},
                                        {"role", "menubar"},
                                        {"rawRole", "AXMenuBar"},
                                        {"name", "메뉴 막대"},
                                        {"enabled", true},
                                        {"clickable", false},
                                        {"press", false},
                                        {"menu", false}}));
  EXPECT_EQ(taken.at("nodes")[5], Json({{"id", id + ":5"},
                                        {"parentId", id + ":menubar"},
                                        {"role", "menuitem"},
                                        {"rawRole", "AXMenuItem"},
                                        {"name", "Open…"},
                                        {"enabled", true},
                                        {"clickable", true},
                                        {"press", true},
                                        {"menu", false},
                                        {"command", {"File", "Open…"}}}));
}

TEST_F(MenuBar, IsLeftOutWhenItIsNotWanted) {
  notes.menu("File").menuItem("Open");
  EXPECT_EQ(snapshot({{"menubar", false}}).at("nodes").size(), 4U);
  EXPECT_EQ(snapshot({{"menubar", "no"}}).at("nodes").size(), 6U);
}

TEST_F(MenuBar, IsLeftOutWhenTheApplicationHasNone) {
  EXPECT_EQ(snapshot().at("nodes").size(), 4U);
}

TEST_F(MenuBar, ItemsAreNotReadWhenTheListIsFull) {
  notes.menu("File").menuItem("Open");
  desktop.accessibility().readsAhead = true;
  const auto calls = [&](const Json& args) {
    const int before = notes.calls();
    (void)snapshot(args);
    return notes.calls() - before;
  };
  for (const int maxNodes : {3, 4, 5}) {
    EXPECT_EQ(snapshot({{"maxNodes", maxNodes}}).at("nodes").back().at("role"), "menubar");
    EXPECT_EQ(calls({{"maxNodes", maxNodes}}),
              calls({{"maxNodes", maxNodes}, {"menubar", false}}) + 1)
        << "asked for more than where the menu bar is, with " << maxNodes;
  }
}

TEST_F(MenuBar, ThatIsNoElementIsLeftOut) {
  notes.node().with("AXMenuBar", Value{"File Edit"});
  EXPECT_EQ(snapshot().at("nodes").size(), 4U);
}

TEST_F(MenuBar, ItemsAreListedWithTheirPathsInOrder) {
  sim::Node& file = notes.menu("File");
  file.menuItem("Open");
  file.submenu("Recent").menuItem("a.txt");
  file.menuItem("Close");
  notes.menu("Edit").menuItem("Undo");
  EXPECT_EQ(
      commands(),
      (std::vector<Path>{
          {"File", "Open"}, {"File", "Recent", "a.txt"}, {"File", "Close"}, {"Edit", "Undo"}}));
}

TEST_F(MenuBar, ThreeMenusDeepIsListedAndFourIsNot) {
  sim::Node& second = notes.menu("File").submenu("Export");
  sim::Node& third = second.submenu("Image");
  third.menuItem("PNG");
  third.submenu("Raw").menuItem("DNG");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Export", "Image", "PNG"}}));
}

TEST_F(MenuBar, ATitleWithoutANameIsSkippedWithItsMenu) {
  notes.menu("").menuItem("About");
  notes.menu("File").menuItem("Open");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Open"}}));
}

TEST_F(MenuBar, ItemsWithoutANameAreSkipped) {
  sim::Node& file = notes.menu("File");
  file.menuItem("Open");
  file.menuItem("");  // As separators are.
  file.submenu("").menuItem("lost");
  file.menuItem("Close");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Open"}, {"File", "Close"}}));
}

TEST_F(MenuBar, DisabledItemsAreLeftOut) {
  sim::Node& file = notes.menu("File");
  file.menuItem("Save").enabled(false);
  file.menuItem("Open");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Open"}}));
}

TEST_F(MenuBar, ADisabledItemStillShowsWhatIsInItsSubmenu) {
  sim::Node& recent = notes.menu("File").submenu("Recent");
  recent.parent()->enabled(false);
  recent.menuItem("a.txt");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Recent", "a.txt"}}));
}

TEST_F(MenuBar, ATitleWithoutAMenuListsNothing) {
  notes.menuBar().add("AXMenuBarItem", "Help").add("AXGroup").menuItem("Search");
  EXPECT_EQ(commands(), (std::vector<Path>{}));
}

TEST_F(MenuBar, OnlyTheFirstMenuUnderATitleIsListed) {
  sim::Node& first = notes.menu("File");
  first.menuItem("Open");
  first.parent()->add("AXMenu").menuItem("Shadow");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Open"}}));
}

TEST_F(MenuBar, AnItemWithChildrenThatAreNoMenuIsACommand) {
  notes.menu("File").menuItem("Open").add("AXStaticText", "⌘O");
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "Open"}}));
}

TEST_F(MenuBar, ItsItemsStopAtTheNodeBudgetWhichItsOwnNodeMayExceed) {
  sim::Node& file = notes.menu("File");
  file.menuItem("Open");
  file.menuItem("Close");
  EXPECT_EQ(snapshot({{"maxNodes", 4}}).at("nodes").size(), 5U);
  EXPECT_EQ(snapshot({{"maxNodes", 5}}).at("nodes").size(), 5U);
  EXPECT_EQ(snapshot({{"maxNodes", 6}}).at("nodes").size(), 6U);
  EXPECT_EQ(snapshot({{"maxNodes", 7}}).at("nodes").size(), 7U);
}

TEST_F(MenuBar, ThatIsCutOffDoesNotCountAsATruncatedTree) {
  sim::Node& file = notes.menu("File");
  file.menuItem("Open");
  file.menuItem("Close");
  EXPECT_FALSE(snapshot({{"maxNodes", 6}}).at("truncated"));
}

// A title costs four calls before its menu's children are asked for (attributes, value, children,
// the first child's role), an item three (attributes, value, children).

TEST_F(MenuBar, HasASecondAndAHalfOfItsOwnOnceItIsFound) {
  sim::Node& file = notes.menu("File");
  for (int i = 1; i <= 9; ++i) {
    file.menuItem("item " + std::to_string(i));
  }
  notes.menu("Edit").menuItem("Undo");
  notes.facts.eachCallTakes = 150ms;
  // 150 for the titles, 600 for the first, 150 for its items; items from 900 and 1350, not 1800.
  EXPECT_EQ(commands(), (std::vector<Path>{{"File", "item 1"}, {"File", "item 2"}}));
}

TEST_F(MenuBar, NothingIsReadFromTheMomentItsTimeIsUp) {
  sim::Node& file = notes.menu("File");
  for (int i = 1; i <= 9; ++i) {
    file.menuItem("item " + std::to_string(i));
  }
  notes.facts.eachCallTakes = 100ms;  // Items from 600, 900 and 1200, not from 1500.
  EXPECT_EQ(commands().size(), 3U);
}

TEST_F(MenuBar, TitlesAreNoLongerReadWhenItsTimeIsUp) {
  for (int i = 1; i <= 9; ++i) {
    notes.menu("Menu " + std::to_string(i)).menuItem("item");
  }
  notes.facts.eachCallTakes = 100ms;
  // 100 for the titles; 500 for a title and its items' list, 300 for the item: 100, 900, then 1700.
  EXPECT_EQ(commands(), (std::vector<Path>{{"Menu 1", "item"}, {"Menu 2", "item"}}));
}

TEST_F(MenuBar, IsNotStarvedByASlowWindow) {
  notes.menu("File").menuItem("Open");
  notes.facts.eachCallTakes = 100ms;
  const Json taken = snapshot({{"timeoutMs", 100}});
  EXPECT_EQ(taken.at("truncated"), true);
  EXPECT_EQ(taken.at("nodes").back().at("command"), Json({"File", "Open"}));
}

TEST_F(MenuBar, TheAgeOfASnapshotCountsFromItsEnd) {
  notes.menu("File").menuItem("Open");
  const auto slowId = [this] {
    notes.facts.eachCallTakes = 10ms;
    const std::string id = idOf("Save");
    notes.facts.eachCallTakes = {};
    return id;
  };
  // After the menu bar come the title and the proof that the window is the same: five calls.
  const std::string young = slowId();
  desktop.run(60s - 50ms - 1ns);
  EXPECT_EQ(result("click", {{"nodeId", young}}).at("nodeId"), young);
  const std::string old = slowId();
  desktop.run(60s - 50ms);
  EXPECT_EQ(error("click", {{"nodeId", old}})["code"], "stale_snapshot") << "counted from later";
}

TEST_F(MenuBar, ReadAheadIsTheSameAsLive) {
  sim::Node& file = notes.menu("File");
  file.menuItem("Open");
  file.submenu("Recent").menuItem("a.txt");
  file.menuItem("Save").enabled(false);
  const Json live = withoutId(snapshot());
  desktop.accessibility().readsAhead = true;
  EXPECT_EQ(withoutId(snapshot()), live);
}

}  // namespace
}  // namespace tarqo
