// What "states": true adds to the nodes, and what it asks of the target for it.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

class States : public ConnectedScene {
 protected:
  Json nodes(bool states = true) {
    return nodesOf(observe({{"image", false}, {"states", states}}));
  }
  // Of the node of the window that was added last.
  Json last() {
    return nodesOf(observe({{"image", false}, {"states", true}, {"menubar", false}})).back();
  }
};

TEST_F(States, AreLeftOutUnlessTheyAreWanted) {
  window.checkBox("Wrap lines", true).with("AXExpanded", Value{true});
  EXPECT_FALSE(nodes(false).back().contains("checked"));
  EXPECT_FALSE(nodes(false).back().contains("expanded"));
  EXPECT_EQ(last().at("checked"), true);
  EXPECT_EQ(last().at("expanded"), true);
}

TEST_F(States, ACheckBoxIsCheckedOrNotOrMixed) {
  sim::Node& box = window.checkBox("Wrap lines", false);
  EXPECT_EQ(last().at("checked"), false);
  box.with("AXValue", Value{1.0});
  EXPECT_EQ(last().at("checked"), true);
  box.with("AXValue", Value{2.0});
  EXPECT_EQ(last().at("checked"), "mixed");
  box.with("AXValue", Value{true});
  EXPECT_EQ(last().at("checked"), true);
  box.without("AXValue");
  EXPECT_FALSE(last().contains("checked"));
}

TEST_F(States, ARadioButtonHasThemToo) {
  window.add("AXRadioButton", "Left").with("AXValue", Value{1.0});
  EXPECT_EQ(last().at("checked"), true);
}

TEST_F(States, TheNumberOfAnythingElseIsNoCheckMark) {
  window.add("AXSlider", "Volume").with("AXValue", Value{1.0});
  EXPECT_FALSE(last().contains("checked"));
}

TEST_F(States, AMarkBesideARowIsACheckMark) {
  sim::Node& row = window.add("AXRow", "Milk").with("AXMenuItemMarkChar", Value{std::string("✓")});
  EXPECT_EQ(last().at("checked"), true);
  row.with("AXMenuItemMarkChar", Value{std::string("–")});
  EXPECT_EQ(last().at("checked"), "mixed");
  row.with("AXMenuItemMarkChar", Value{std::string()});
  EXPECT_EQ(last().at("checked"), false);
  row.with("AXMenuItemMarkChar", Value{7.0});
  EXPECT_FALSE(last().contains("checked"));
}

TEST_F(States, ADisclosureTriangleIsExpandedByItsValue) {
  sim::Node& triangle = window.add("AXDisclosureTriangle", "More").with("AXValue", Value{1.0});
  EXPECT_EQ(last().at("expanded"), true);
  EXPECT_FALSE(last().contains("checked"));
  triangle.with("AXValue", Value{0.0});
  EXPECT_EQ(last().at("expanded"), false);
}

TEST_F(States, ARowIsExpandedWhenItDiscloses) {
  sim::Node& row = window.add("AXRow", "Folder").with("AXDisclosing", Value{true});
  EXPECT_EQ(last().at("expanded"), true);
  row.with("AXExpanded", Value{false});
  EXPECT_EQ(last().at("expanded"), false);
}

TEST_F(States, AMenuItemWithAMarkIsChecked) {
  sim::Node& menu = notes.menu("View");
  menu.menuItem("Ruler").with("AXMenuItemMarkChar", Value{std::string("✓")});
  menu.menuItem("Zoom");
  const Json listed = nodes();
  EXPECT_EQ(listed[listed.size() - 2].at("checked"), true);
  EXPECT_FALSE(listed.back().contains("checked"));
}

TEST_F(States, TheFocusedFieldElsewhereHasThem) {
  sim::Node& elsewhere = notes.window({0, 0, 300, 300}, "Find").textField("milk");
  elsewhere.with("AXExpanded", Value{false}).focus();
  EXPECT_EQ(last().at("expanded"), false);
}

class AskedStates : public States {
 protected:
  void observeAsked() {
    const auto ask = [&](const Json& request) { (void)askedServer_.serve(request.dump()); };
    ask({{"method", "connect"}, {"args", {{"bundleId", "com.example.Notes"}}}});
    ask({{"method", "observe"}, {"args", {{"image", false}, {"states", true}}}});
  }

  AskedAccessibility asked{desktop.accessibility()};

 private:
  Platform askedPlatform_ = asked.in(platform);
  Server askedServer_{askedPlatform_};
};

TEST_F(AskedStates, NothingMoreIsAskedOfAPasswordFieldOrOfWhatHasNoRole) {
  sim::Node& secure = window.secureField().value("s3cret");
  sim::Node& unknown = window.add("AXCheckBox").value("s3cret").failing("AXRole");
  observeAsked();
  EXPECT_EQ(asked.reads(secure, "AXValue"), 0);
  EXPECT_EQ(asked.reads(secure, "AXExpanded"), 0);
  EXPECT_EQ(asked.reads(unknown, "AXValue"), 0);
  EXPECT_EQ(asked.reads(unknown, "AXExpanded"), 0);
}

TEST_F(AskedStates, TheTextOfAFieldIsNotReadTwice) {
  observeAsked();
  EXPECT_EQ(asked.reads(field, "AXValue"), 1);
  EXPECT_EQ(asked.reads(field, "AXExpanded"), 1);
}

}  // namespace
}  // namespace tarqo
