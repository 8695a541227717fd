#include "session/node_table.h"

#include "tests/support/scene.h"

namespace tarqo {
namespace {

class Nodes : public Scene {
 protected:
  StoredNode node(const std::string& name) {
    return {app.node().element(), "AXButton", name, "", true, std::nullopt};
  }

  sim::App& app = desktop.app("com.example.Notes");
  NodeTable table;
};

TEST_F(Nodes, AreFoundById) {
  table.add("a", node("A"));
  table.add("b", node("B"));
  EXPECT_EQ(table.find("b")->name, "B");
  EXPECT_EQ(table.find("c"), nullptr);
}

TEST_F(Nodes, KeepTheirOrder) {
  table.add("b", node("B"));
  table.add("a", node("A"));
  EXPECT_EQ(table.entries()[0].first, "b");
  EXPECT_EQ(table.entries()[1].first, "a");
}

TEST_F(Nodes, AnIdKeepsItsFirstNode) {
  table.add("a", node("A"));
  table.add("a", node("B"));
  EXPECT_EQ(table.find("a")->name, "A");
  EXPECT_EQ(table.entries().size(), 1);
}

TEST_F(Nodes, AreGoneWhenCleared) {
  table.add("a", node("A"));
  table.clear();
  EXPECT_EQ(table.find("a"), nullptr);
  EXPECT_TRUE(table.entries().empty());
  table.add("a", node("B"));
  EXPECT_EQ(table.find("a")->name, "B");
}

}  // namespace
}  // namespace tarqo
