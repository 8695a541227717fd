// A snapshot as a whole: its ids, its title, which window it shows, the element with the focus.

#include <algorithm>

#include "observe/snapshot_id.h"
#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

// The text with every hexadecimal digit in lower case as an "x".
std::string shapeOf(std::string text) {
  const std::string digits = "0123456789abcdef";
  std::replace_if(
      text.begin(), text.end(), [&](char c) { return digits.find(c) != std::string::npos; }, 'x');
  return text;
}

class Snapshot : public ConnectedScene {
 protected:
  Json snapshot(Json args = Json::object()) {
    args["image"] = false;
    args.emplace("menubar", false);
    return observe(args).at("snapshot");
  }
};

TEST_F(Snapshot, HasExactlyTheseMembers) {
  EXPECT_EQ(keysOf(snapshot()), (std::vector<std::string>{"durationMs", "id", "nodes", "source",
                                                          "title", "truncated"}));
}

TEST_F(Snapshot, NamesItsSource) { EXPECT_EQ(snapshot().at("source"), "macos"); }

TEST_F(Snapshot, HasARandomIdInLowerCase) {
  const std::string first = snapshot().at("id");
  const std::string second = snapshot().at("id");
  EXPECT_NE(first, second);
  for (const std::string& id : {first, second}) {
    EXPECT_EQ(shapeOf(id), "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx");
    EXPECT_EQ(id.at(14), '4') << id;
    EXPECT_NE(std::string("89ab").find(id.at(19)), std::string::npos) << id;
  }
}

TEST(SnapshotId, HoldsEveryRandomBitThatItsVersionLeaves) {
  class Numbers : public Random {
   public:
    std::uint64_t next() override {
      return calls_++ == 0 ? 0x0123456789abfcdeU : 0xfedcba9876543210U;
    }

   private:
    int calls_ = 0;
  };
  Numbers numbers;
  EXPECT_EQ(makeSnapshotId(numbers), "01234567-89ab-4cde-bedc-ba9876543210");
}

TEST_F(Snapshot, NumbersItsNodesFromZeroEachTime) {
  for (int round = 0; round < 2; ++round) {
    const Json taken = snapshot();
    for (std::size_t i = 0; i < taken.at("nodes").size(); ++i) {
      EXPECT_EQ(taken.at("nodes")[i].at("id"),
                taken.at("id").get<std::string>() + ":" + std::to_string(i));
    }
  }
}

TEST_F(Snapshot, MakesEveryEarlierIdUnknown) {
  const std::string id = idOf("Save");
  (void)snapshot();
  EXPECT_EQ(failure("click", {{"nodeId", id}}),
            "stale_snapshot: This node reference expired. Take a new snapshot before clicking.");
}

TEST_F(Snapshot, TellsHowLongItTook) {
  // The window costs two calls, its nodes four each (the field one more), the focus and the title
  // one each.
  notes.facts.eachCallTakes = 2ms;
  EXPECT_EQ(snapshot().at("durationMs"), 2 * (2 + 4 * 4 + 1 + 1 + 1));
}

TEST_F(Snapshot, IsTitledLikeItsWindow) {
  window.title("  Shopping list \n");
  EXPECT_EQ(snapshot().at("title"), "Shopping list");
}

TEST_F(Snapshot, OfAWindowWithoutATitleIsTitledLikeTheApplication) {
  window.title("");
  EXPECT_EQ(snapshot().at("title"), "Notes");
}

TEST_F(Snapshot, OfANamelessApplicationIsTitledLikeTheSystem) {
  window.title("");
  notes.facts.localizedName.reset();
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  EXPECT_EQ(snapshot().at("title"), "macOS");
}

// Which window.

TEST_F(Snapshot, WithoutAnyWindowFailsAndSaysSo) {
  window.close();
  EXPECT_EQ(
      error("observe", {{"image", false}}),
      Json({{"code", "no_window"},
            {"message", "The application has no accessible window. Open a window and retry."}}));
}

TEST_F(Snapshot, OfABoundSiteThatIsGoneNamesTheSiteAndTellsWhatItSaw) {
  window.shows("https://example.com:8443/list?a=b");
  (void)result("connect",
               {{"bundleId", "com.example.Notes"}, {"site", "https://example.com:8443"}});
  window.shows("https://other.example/private");
  notes.window({0, 0, 300, 300}, "About").minimize();
  notes.window({0, 0, 0, 0}, "Empty").shows("file://localhost/secret");
  EXPECT_EQ(error("observe", {{"image", false}}),
            Json({{"code", "no_window"},
                  {"message",
                   "No window shows https://example.com:8443 any more: the page left the site, or "
                   "its window closed."},
                  {"seen",
                   {{{"page", "another site"}},
                    {{"page", "none"}, {"minimized", true}},
                    {{"page", "file"}, {"framed", false}}}}}));
}

TEST_F(Snapshot, ThatFailsLeavesNoNodeToActOn) {
  const std::string id = idOf("Save");
  notes.focusWindow(nullptr);
  window.withoutFrame();
  EXPECT_EQ(error("observe", {{"image", false}}).at("code"), "no_window");
  window.at({100, 80, 800, 600});
  EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), "stale_snapshot");
  EXPECT_EQ(save.activations(), 0);
}

TEST_F(Snapshot, ShowsTheDialogThatCameUpSinceConnecting) {
  sim::Window& dialog = notes.window({300, 200, 400, 200}, "Discard?");
  dialog.button("Discard");
  notes.focusWindow(&dialog);
  EXPECT_EQ(snapshot().at("title"), "Discard?");
}

TEST_F(Snapshot, MakesTheDialogItShowsTheWindowThatIsActedIn) {
  sim::Window& dialog = notes.window({300, 800, 400, 200}, "Discard?");  // Beside the first window.
  sim::Node& discard = dialog.button("Discard").withoutAction("AXPress");
  notes.focusWindow(&dialog);
  const std::string id = idOf("Discard");
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "pointer");
  EXPECT_EQ(discard.clicks(), 1);
}

TEST_F(Snapshot, MakesTheDialogItShowsTheWindowThatIsCaptured) {
  sim::Window& dialog = notes.window({300, 200, 400, 200}, "Discard?");
  dialog.button("Discard");
  notes.focusWindow(&dialog);
  const Json observation = observe({});
  EXPECT_EQ(observation.at("image").at("bounds"),
            Json({{"x", 300}, {"y", 200}, {"width", 400}, {"height", 200}}));
}

TEST_F(Snapshot, ReturnsToTheFirstWindowWhenTheDialogCloses) {
  sim::Window& dialog = notes.window({300, 200, 400, 200}, "Discard?");
  notes.focusWindow(&dialog);
  (void)snapshot({{"ocr", false}});
  dialog.close();
  const std::string id = idOf("Save");
  save.withoutAction("AXPress");
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "pointer");
}

// The element with the focus.

class FocusedElement : public Snapshot {
 protected:
  FocusedElement() { elsewhere.at({1000, 20, 200, 24}).focus(); }

  sim::Node& elsewhere = notes.window({950, 0, 300, 60}, "Search").textField("query");
};

TEST_F(FocusedElement, OutsideTheWindowIsListedLast) {
  const Json taken = snapshot();
  const std::string id = taken.at("id");
  ASSERT_EQ(taken.at("nodes").size(), 5U);
  EXPECT_EQ(taken.at("nodes")[4],
            Json({{"id", id + ":4"},
                  {"parentId", id + ":0"},
                  {"role", "textbox"},
                  {"rawRole", "AXTextField"},
                  {"name", "query"},
                  {"value", "query"},
                  {"enabled", true},
                  {"clickable", true},
                  {"focused", true},
                  {"editable", true},
                  {"bounds", {{"x", 1000}, {"y", 20}, {"width", 200}, {"height", 24}}}}));
}

TEST_F(FocusedElement, ThatIsAPasswordFieldIsSecureAndNotClickable) {
  elsewhere.with("AXSubrole", Value{"AXSecureTextField"}).title("Password");
  const Json node = snapshot().at("nodes").back();
  EXPECT_EQ(node.at("secure"), true);
  EXPECT_EQ(node.at("editable"), false);
  EXPECT_EQ(node.at("clickable"), false);
  EXPECT_FALSE(node.contains("value"));
}

TEST_F(FocusedElement, WithTheSearchSubroleIsASearchbox) {
  elsewhere.with("AXSubrole", Value{"AXSearchField"});
  EXPECT_EQ(snapshot().at("nodes").back().at("role"), "searchbox");
}

TEST_F(FocusedElement, ThatIsDisabledIsNotClickable) {
  elsewhere.enabled(false);
  EXPECT_EQ(snapshot().at("nodes").back().at("clickable"), false);
}

TEST_F(FocusedElement, NeedsNoFrame) {
  elsewhere.withoutFrame();
  const Json node = snapshot().at("nodes").back();
  EXPECT_EQ(node.at("clickable"), true);
  EXPECT_FALSE(node.contains("bounds"));
}

TEST_F(FocusedElement, InsideTheWindowIsNotListedTwice) {
  field.focus();
  EXPECT_EQ(snapshot().at("nodes").size(), 4U);
}

TEST_F(FocusedElement, IsAddedWhenTheDepthLeftItOut) {
  sim::Node& deep = window.group("outer").group("inner").textField("deep");
  deep.focus();
  const Json nodes = snapshot({{"maxDepth", 1}}).at("nodes");
  EXPECT_EQ(nodes.back().at("name"), "deep");
}

TEST_F(FocusedElement, IsLeftOutOfAFullList) {
  EXPECT_EQ(snapshot({{"maxNodes", 4}}).at("nodes").size(), 4U);
  EXPECT_EQ(snapshot({{"maxNodes", 5}}).at("nodes").size(), 5U);
}

TEST_F(FocusedElement, ThatIsHiddenIsLeftOut) {
  elsewhere.hidden(true);
  EXPECT_EQ(snapshot().at("nodes").size(), 4U);
}

TEST_F(FocusedElement, IsListedForTheRolesThatTakeText) {
  for (const char* role : {"AXTextField", "AXSearchField", "AXTextArea", "AXComboBox"}) {
    elsewhere.with("AXRole", Value{role});
    EXPECT_EQ(snapshot().at("nodes").size(), 5U) << role;
  }
  for (const char* role : {"AXButton", "AXSecureTextField", "AXGroup", "AXWindow"}) {
    elsewhere.with("AXRole", Value{role});
    EXPECT_EQ(snapshot().at("nodes").size(), 4U) << role;
  }
}

TEST_F(FocusedElement, ThatIsNoElementIsIgnored) {
  notes.node().with("AXFocusedUIElement", Value{"query"});
  EXPECT_EQ(snapshot().at("nodes").size(), 4U);
}

TEST_F(FocusedElement, CanBeActedOnByItsId) {
  const std::string id = snapshot().at("nodes").back().at("id");
  EXPECT_EQ(failure("click", {{"nodeId", id}}),
            "not_visible: Target has no visible position inside its window; take a fresh snapshot");
}

}  // namespace
}  // namespace tarqo
