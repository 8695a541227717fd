// What is listed of a window, and of a menu bar, when only a part could be read.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using Names = std::vector<std::string>;

/// The window holds three labels and, between the second and the third, a group with a button.
class IncompleteTree : public Scene {
 protected:
  void SetUp() override {
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
    desktop.accessibility().readsAhead = true;
  }

  Json observe(std::size_t silentAfter, Json args = Json::object()) {
    desktop.accessibility().silentAfter = silentAfter;
    args["image"] = false;
    return result("observe", args);
  }

  Names namesAfter(std::size_t silentAfter, const Json& args = {{"ocr", false}}) {
    return namesOf(observe(silentAfter, args));
  }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 800, 600}, "Notes");
  sim::Node& first = window.label("first");
  sim::Node& second = window.label("second");
  sim::Node& group = window.group("group");
  sim::Node& button = group.button("button");
  sim::Node& third = window.label("third");
};

TEST_F(IncompleteTree, KeepsWhatWasRead) {
  EXPECT_EQ(namesAfter(1), (Names{"Notes"}));
  EXPECT_EQ(namesAfter(3), (Names{"Notes", "first", "second"}));
  EXPECT_EQ(namesAfter(5), (Names{"Notes", "first", "second", "group", "button"}));
  EXPECT_EQ(namesAfter(6), (Names{"Notes", "first", "second", "group", "button", "third"}));
}

TEST_F(IncompleteTree, IsTruncated) {
  const Json args = {{"ocr", false}};
  EXPECT_TRUE(observe(1, args).at("snapshot").at("truncated"));
  const Json most = observe(5, args);
  EXPECT_TRUE(most.at("snapshot").at("truncated"));
  EXPECT_EQ(most.at("omissions").back(),
            "The UI tree was truncated by the configured observation budget.");
  EXPECT_FALSE(observe(6, args).at("snapshot").at("truncated"));
}

TEST_F(IncompleteTree, BeginsWithTheWindowEvenWhenNothingWasRead) {
  const Json nodes = nodesOf(observe(0, {{"ocr", false}}));
  ASSERT_EQ(nodes.size(), 1U);
  EXPECT_TRUE(nodes[0].at("id").get<std::string>().ends_with(":0"));
  EXPECT_EQ(nodes[0].at("parentId"), nullptr);
}

TEST_F(IncompleteTree, StillTellsTheFocusedElement) {
  third.with("AXRole", Value{"AXTextField"}).title("query").focus();
  const Json nodes = nodesOf(observe(2, {{"ocr", false}}));
  ASSERT_EQ(nodes.size(), 3U);
  EXPECT_EQ(nodes[2].at("name"), "query");
  EXPECT_EQ(nodes[2].at("focused"), true);
  EXPECT_EQ(nodes[2].at("parentId"), nodes[0].at("id"));
}

TEST_F(IncompleteTree, DoesNotRepeatAFocusedElementThatWasRead) {
  first.with("AXRole", Value{"AXTextField"}).focus();
  EXPECT_EQ(namesAfter(2), (Names{"Notes", "first"}));
}

TEST_F(IncompleteTree, LeavesOutTheFocusedElementOfAListThatIsFull) {
  third.with("AXRole", Value{"AXTextField"}).focus();
  EXPECT_EQ(namesAfter(2, {{"ocr", false}, {"maxNodes", 2}}), (Names{"Notes", "first"}));
}

TEST_F(IncompleteTree, WithTextOfItsOwnIsNotRecognised) {
  (void)observe(2);
  EXPECT_EQ(desktop.recognizer().recognitions(), 0);
}

TEST_F(IncompleteTree, RecognisedTextHangsOnTheWindow) {
  desktop.recognizer().lines = {{"Hello", {0.125, 0.25, 0.25, 0.0625}, 0.5F}};
  for (const std::size_t silentAfter : {0U, 1U}) {
    const Json nodes = nodesOf(observe(silentAfter));
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[1].at("name"), "Hello");
    EXPECT_EQ(nodes[1].at("parentId"), nodes[0].at("id"));
    EXPECT_NE(nodes[1].at("id"), nodes[0].at("id"));
  }
}

TEST_F(IncompleteTree, NoTextIsToldOverTheFocusedPasswordFieldThatWasNotRead) {
  third.with("AXRole", Value{"AXTextField"}).with("AXSubrole", Value{"AXSecureTextField"});
  third.title("").at({100, 80, 800, 600}).focus();
  desktop.recognizer().lines = {{"s3cret", {0.125, 0.25, 0.25, 0.0625}, 0.5F}};
  const Json observation = observe(1);
  EXPECT_EQ(observation.at("snapshot").at("ocr").at("nodes"), 0);
  EXPECT_EQ(nodesOf(observation).back().at("secure"), true);
}

TEST_F(IncompleteTree, AWindowReachedAfterTheTimeOutIsListedAlone) {
  desktop.accessibility().readsAhead = false;
  notes.facts.eachCallTakes = 40ms;  // Three calls choose the window.
  const Json taken = result("observe", {{"image", false}, {"ocr", false}, {"timeoutMs", 100}});
  EXPECT_EQ(namesOf(taken), (Names{"Notes"}));
  EXPECT_TRUE(taken.at("snapshot").at("truncated"));
}

/// A menu bar of two menus, with a submenu in the first.
class IncompleteMenuBar : public IncompleteTree {
 protected:
  void SetUp() override {
    IncompleteTree::SetUp();
    // The window must take no part: its tree is read ahead to the same limit.
    for (sim::Node* node : {&first, &second, &group, &third}) {
      node->remove();
    }
    sim::Node& file = notes.menu("File");
    file.menuItem("Open");
    file.submenu("Recent").menuItem("a.txt");
    notes.menu("Edit").menuItem("Undo");
  }

  std::vector<Names> commandsAfter(std::size_t silentAfter) {
    std::vector<Names> paths;
    const Json taken = observe(silentAfter, {{"ocr", false}});
    for (const Json& node : nodesOf(taken)) {
      if (node.contains("command")) {
        paths.push_back(node.at("command").get<Names>());
      }
    }
    return paths;
  }
};

TEST_F(IncompleteMenuBar, KeepsWhatWasRead) {
  // The bar, File, its menu, Open, Recent, its menu, a.txt, Edit, its menu, Undo.
  EXPECT_EQ(commandsAfter(3), (std::vector<Names>{}));
  EXPECT_EQ(commandsAfter(4), (std::vector<Names>{{"File", "Open"}}));
  EXPECT_EQ(commandsAfter(7), (std::vector<Names>{{"File", "Open"}, {"File", "Recent", "a.txt"}}));
  EXPECT_EQ(commandsAfter(10),
            (std::vector<Names>{{"File", "Open"}, {"File", "Recent", "a.txt"}, {"Edit", "Undo"}}));
}

TEST_F(IncompleteMenuBar, DoesNotTakeAnItemForACommandWhoseMenuWasNotRead) {
  EXPECT_EQ(commandsAfter(5), (std::vector<Names>{{"File", "Open"}}));
}

}  // namespace
}  // namespace tarqo
