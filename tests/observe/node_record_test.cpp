// The members of a node, and when each is left out.

#include <array>

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

class NodeRecord : public ConnectedScene {
 protected:
  Json nodes(const Json& more = Json::object()) {
    Json args = {{"image", false}, {"menubar", false}};
    args.update(more);
    return nodesOf(observe(args));
  }

  // The record of a node that was added to the window last.
  Json last() { return nodes().back(); }

  std::string id(int number) { return lastId_ + ":" + std::to_string(number); }

  Json nodesWithId() {
    const Json snapshot = observe({{"image", false}, {"menubar", false}}).at("snapshot");
    lastId_ = snapshot.at("id");
    return snapshot.at("nodes");
  }

 private:
  std::string lastId_;
};

Json box(double x, double y, double width, double height) {
  return {{"x", x}, {"y", y}, {"width", width}, {"height", height}};
}

TEST_F(NodeRecord, OfTheWindow) {
  const Json node = nodesWithId().at(0);
  EXPECT_EQ(node, Json({{"id", id(0)},
                        {"parentId", nullptr},
                        {"role", "window"},
                        {"rawRole", "AXWindow"},
                        {"name", "Notes"},
                        {"enabled", true},
                        {"clickable", false},
                        {"press", false},
                        {"menu", false},
                        {"editable", false},
                        {"focused", true},
                        {"bounds", box(100, 80, 800, 600)}}));
}

TEST_F(NodeRecord, OfAButton) {
  const Json node = nodesWithId().at(1);
  EXPECT_EQ(node, Json({{"id", id(1)},
                        {"parentId", id(0)},
                        {"role", "button"},
                        {"rawRole", "AXButton"},
                        {"name", "Save"},
                        {"enabled", true},
                        {"clickable", true},
                        {"press", true},
                        {"menu", false},
                        {"editable", false},
                        {"bounds", box(200, 200, 80, 24)}}));
}

TEST_F(NodeRecord, OfATextField) {
  const Json node = nodesWithId().at(2);
  EXPECT_EQ(node, Json({{"id", id(2)},
                        {"parentId", id(0)},
                        {"role", "textbox"},
                        {"rawRole", "AXTextField"},
                        {"name", "hello"},
                        {"value", "hello"},
                        {"enabled", true},
                        {"clickable", true},
                        {"press", false},
                        {"menu", false},
                        {"editable", true},
                        {"focused", false},
                        {"bounds", box(200, 240, 200, 24)}}));
}

TEST_F(NodeRecord, OfALabel) {
  const Json node = nodesWithId().at(3);
  EXPECT_EQ(node, Json({{"id", id(3)},
                        {"parentId", id(0)},
                        {"role", "text"},
                        {"rawRole", "AXStaticText"},
                        {"name", "Ready"},
                        {"value", "Ready"},
                        {"enabled", true},
                        {"clickable", true},
                        {"press", false},
                        {"menu", false},
                        {"editable", false},
                        {"bounds", box(200, 280, 200, 20)}}));
}

TEST_F(NodeRecord, OfAPasswordFieldTellsThatItIsSecureAndNothingOfItsContent) {
  window.secureField()
      .value("s3cret")
      .at({200, 320, 200, 24})
      .with("AXPlaceholderValue", Value{"Password"});
  const Json node = nodesWithId().back();
  EXPECT_EQ(node, Json({{"id", id(4)},
                        {"parentId", id(0)},
                        {"role", "textbox"},
                        {"rawRole", "AXTextField"},
                        {"name", "Password"},
                        {"secure", true},
                        {"enabled", true},
                        {"clickable", false},
                        {"press", false},
                        {"menu", false},
                        {"editable", false},
                        {"focused", false},
                        {"bounds", box(200, 320, 200, 24)}}));
}

TEST_F(NodeRecord, ParentsComeBeforeTheirChildrenAndChildrenInTheirOwnOrder) {
  sim::Node& outer = window.group("outer");
  outer.label("first");
  outer.group("inner").label("innermost");
  outer.label("last");
  const Json listed = nodesWithId();
  ASSERT_EQ(listed.size(), 9U);
  EXPECT_EQ(listed[4].at("parentId"), id(0));
  EXPECT_EQ(listed[5].at("parentId"), id(4));
  EXPECT_EQ(listed[6].at("name"), "inner");
  EXPECT_EQ(listed[7].at("parentId"), id(6));
  EXPECT_EQ(listed[8].at("name"), "last");
  EXPECT_EQ(listed[8].at("parentId"), id(4));
}

TEST_F(NodeRecord, AFieldWithTheSearchSubroleIsASearchbox) {
  window.textField().with("AXSubrole", Value{"AXSearchField"});
  EXPECT_EQ(last().at("role"), "searchbox");
  EXPECT_EQ(last().at("rawRole"), "AXTextField");
}

TEST_F(NodeRecord, TheAddressIsToldOfAWebAreaAlone) {
  const Value address{Url{"https://example.com/a?b#c"}};
  window.add("AXWebArea").with("AXURL", address);
  EXPECT_EQ(last().at("url"), "https://example.com/a?b#c");
  window.link("Home").with("AXURL", address);
  EXPECT_FALSE(last().contains("url"));
}

TEST_F(NodeRecord, AnAddressThatIsATextIsNone) {
  window.add("AXWebArea").with("AXURL", Value{"https://example.com"});
  EXPECT_FALSE(last().contains("url"));
}

TEST_F(NodeRecord, TheDescriptionIsToldWhenItDiffersFromTheName) {
  window.button("Save").with("AXDescription", Value{"Saves the note"});
  EXPECT_EQ(last().at("description"), "Saves the note");
}

TEST_F(NodeRecord, ADescriptionThatIsTheNameIsNotToldTwice) {
  window.button("").with("AXDescription", Value{"Close"});
  EXPECT_EQ(last().at("name"), "Close");
  EXPECT_FALSE(last().contains("description"));
}

TEST_F(NodeRecord, ASizeOfZeroLeavesOutTheBounds) {
  sim::Node& flat = window.button("Flat").at({10, 10, 0, 20});
  EXPECT_FALSE(last().contains("bounds"));
  flat.withoutFrame();
  EXPECT_FALSE(last().contains("bounds"));
}

TEST_F(NodeRecord, BoundsAreToldUnrounded) {
  window.button("Fine").at({200.25, 300.125, 80.5, 24.75});
  EXPECT_EQ(last().at("bounds"), box(200.25, 300.125, 80.5, 24.75));
}

TEST_F(NodeRecord, SelectedIsToldWhenItIsABoolean) {
  sim::Node& row = window.add("AXRow", "first").with("AXSelected", Value{false});
  EXPECT_EQ(last().at("selected"), false);
  row.with("AXSelected", Value{true});
  EXPECT_EQ(last().at("selected"), true);
  row.with("AXSelected", Value{1.0});
  EXPECT_FALSE(last().contains("selected"));
}

TEST_F(NodeRecord, FocusedIsToldWhenItIsABoolean) {
  field.focus();
  EXPECT_EQ(nodes()[2].at("focused"), true);
  field.with("AXFocused", Value{"yes"});
  EXPECT_FALSE(nodes()[2].contains("focused"));
}

TEST_F(NodeRecord, ANumberIsNoValue) {
  window.checkBox("Wrap lines", true);
  EXPECT_FALSE(last().contains("value"));
}

TEST_F(NodeRecord, AHiddenElementIsLeftOutWithAllUnderIt) {
  sim::Node& hidden = window.group("hidden").hidden(true);
  hidden.label("inner");
  window.label("shown");
  EXPECT_EQ(nodes().size(), 5U);
  EXPECT_EQ(last().at("name"), "shown");
  EXPECT_EQ(last().at("id").get<std::string>().substr(36), ":4");
}

TEST_F(NodeRecord, WhatIsListedOfAHiddenWindowHangsOnNothing) {
  desktop.recognizer().lines = {{"Start", {0.1, 0.1, 0.2, 0.1}, 1},
                                {"End", {0.5, 0.5, 0.2, 0.1}, 1}};
  window.textField("typed").focus();
  window.hidden(true);
  const Json listed = nodes({{"forceOcr", true}});
  ASSERT_EQ(listed.size(), 3U);
  EXPECT_EQ(listed[0].at("focused"), true);
  for (const Json& node : listed) {
    EXPECT_EQ(node.at("parentId"), nullptr);
  }
}

TEST_F(NodeRecord, AHiddenMarkThatIsNoBooleanHidesNothing) {
  window.label("shown").with("AXHidden", Value{"true"});
  EXPECT_EQ(last().at("name"), "shown");
}

// Clickable.

TEST_F(NodeRecord, FifteenRolesAreClickableWithoutOfferingAPress) {
  const std::vector<std::string> roles{
      "AXButton",   "AXLink",      "AXCheckBox",    "AXRadioButton", "AXPopUpButton",
      "AXMenuItem", "AXTab",       "AXRow",         "AXCell",        "AXStaticText",
      "AXImage",    "AXTextField", "AXSearchField", "AXComboBox",    "AXDisclosureTriangle"};
  for (const std::string& role : roles) {
    window.add(role, role);
  }
  const Json listed = nodes();
  for (std::size_t i = 0; i < roles.size(); ++i) {
    EXPECT_EQ(listed[4 + i].at("clickable"), true) << roles[i];
    EXPECT_EQ(listed[4 + i].at("press"), false) << roles[i];
  }
}

TEST_F(NodeRecord, OtherRolesAreNotClickableWithoutAPress) {
  for (const char* role : {"AXGroup", "AXTextArea", "AXSlider", "AXTable", "AXUnknown"}) {
    window.add(role, role);
    EXPECT_EQ(last().at("clickable"), false) << role;
  }
}

TEST_F(NodeRecord, AClickableRoleNeedsAFrame) {
  window.label("nowhere").withoutFrame();
  EXPECT_EQ(last().at("clickable"), false);
}

TEST_F(NodeRecord, WhatOffersAPressIsClickableWithoutAFrameAndWhateverItsRole) {
  window.add("AXGroup", "card").withoutFrame().action("AXPress");
  EXPECT_EQ(last().at("clickable"), true);
  EXPECT_EQ(last().at("press"), true);
}

TEST_F(NodeRecord, ADisabledElementIsNotClickableThoughItsPressIsTold) {
  window.button("Off").enabled(false);
  EXPECT_EQ(last().at("enabled"), false);
  EXPECT_EQ(last().at("clickable"), false);
  EXPECT_EQ(last().at("press"), true);
}

TEST_F(NodeRecord, APasswordFieldIsNotClickableEvenWhenItOffersAPress) {
  window.secureField().action("AXPress");
  EXPECT_EQ(last().at("clickable"), false);
  EXPECT_EQ(last().at("press"), true);
}

TEST_F(NodeRecord, AContextMenuIsTold) {
  window.label("note").action("AXShowMenu");
  EXPECT_EQ(last().at("menu"), true);
}

// Editable.

TEST_F(NodeRecord, FourRolesAreEditableWhenTheirValueCanBeSet) {
  for (const char* role : {"AXTextField", "AXTextArea", "AXSearchField", "AXComboBox"}) {
    sim::Node& entry = window.add(role, role).value("text").settable("AXValue");
    EXPECT_EQ(last().at("editable"), true) << role;
    entry.settable("AXValue", false);
    EXPECT_EQ(last().at("editable"), false) << role;
    entry.settable("AXValue").settableUnknown("AXValue");
    EXPECT_EQ(last().at("editable"), false) << role;
  }
}

TEST_F(NodeRecord, OtherRolesAndDisabledFieldsAreNotEditable) {
  window.add("AXSlider").settable("AXValue");
  EXPECT_EQ(last().at("editable"), false);
  window.textField("text").enabled(false);
  EXPECT_EQ(last().at("editable"), false);
}

// What is asked of the target.

class AskedQuestions : public ConnectedScene {
 protected:
  Json observeAsked(const Json& args) {
    const auto ask = [&](const Json& request) {
      return Json::parse(askedServer_.serve(request.dump()).response.value());
    };
    ask({{"method", "connect"}, {"args", {{"bundleId", "com.example.Notes"}}}});
    return ask({{"method", "observe"}, {"args", args}}).at("result");
  }

  AskedAccessibility asked{desktop.accessibility()};

 private:
  Platform askedPlatform_ = asked.in(platform);
  Server askedServer_{askedPlatform_};
};

TEST_F(AskedQuestions, TheValueOfAPasswordFieldIsNeverRead) {
  sim::Node& bySubrole = window.secureField().value("s3cret");
  sim::Node& byRole = window.add("AXSecureTextField").value("s3cret");
  const Json observation = observeAsked({{"image", false}});
  EXPECT_EQ(asked.reads(bySubrole, "AXRole"), 1);
  EXPECT_EQ(asked.reads(byRole, "AXRole"), 1);
  EXPECT_EQ(asked.reads(bySubrole, "AXValue"), 0);
  EXPECT_EQ(asked.reads(byRole, "AXValue"), 0);
  EXPECT_EQ(asked.reads(field, "AXValue"), 1);
  EXPECT_EQ(observation.dump().find("s3cret"), std::string::npos);
}

TEST_F(AskedQuestions, TheValueOfAFocusedPasswordFieldElsewhereIsNeverRead) {
  sim::Node& elsewhere = notes.window({0, 0, 300, 300}, "Sign in").secureField().value("s3cret");
  elsewhere.focus();
  const Json observation = observeAsked({{"image", false}});
  EXPECT_EQ(nodesOf(observation).size(), 5U);
  EXPECT_EQ(asked.reads(elsewhere, "AXRole"), 1);
  EXPECT_EQ(asked.reads(elsewhere, "AXValue"), 0);
}

TEST_F(AskedQuestions, TheChildrenOfAPasswordFieldAreNotVisited) {
  sim::Node& secure = window.secureField();
  sim::Node& inner = secure.label("s3cret");
  const Json observation = observeAsked({{"image", false}});
  EXPECT_EQ(asked.reads(secure, "AXChildren"), 0);
  EXPECT_EQ(asked.reads(inner, "AXRole"), 0);
  EXPECT_EQ(nodesOf(observation).size(), 5U);
}

TEST_F(AskedQuestions, APasswordFieldAtTheDepthLimitHidesNothing) {
  window.secureField().label("inner");
  const Json snapshot = observeAsked({{"image", false}, {"maxDepth", 1}}).at("snapshot");
  EXPECT_EQ(snapshot.at("truncated"), false);
}

TEST_F(AskedQuestions, WhetherTheValueCanBeSetIsAskedOfEnabledFieldsAlone) {
  sim::Node& off = window.textField().enabled(false);
  sim::Node& secure = window.secureField();
  (void)observeAsked({{"image", false}});
  EXPECT_EQ(asked.settableQuestions(field, "AXValue"), 1);
  EXPECT_EQ(asked.settableQuestions(off, "AXValue"), 0);
  EXPECT_EQ(asked.settableQuestions(secure, "AXValue"), 0);
  EXPECT_EQ(asked.settableQuestions(save, "AXValue"), 0);
}

TEST_F(AskedQuestions, WhatLiesUnderAHiddenElementIsNotAskedAnything) {
  sim::Node& hidden = window.group("hidden").hidden(true);
  sim::Node& inner = hidden.label("inner");
  (void)observeAsked({{"image", false}});
  EXPECT_EQ(asked.reads(hidden, "AXHidden"), 1);
  EXPECT_EQ(asked.reads(hidden, "AXChildren"), 0);
  EXPECT_EQ(asked.reads(inner, "AXRole"), 0);
}

}  // namespace
}  // namespace tarqo
