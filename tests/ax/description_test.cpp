#include "ax/description.h"

#include "tests/support/scene.h"

namespace tarqo {
namespace {

Value textValue(const std::string& text) { return Value{text}; }

class Describe : public Scene {
 protected:
  Description describeNode(const sim::Node& node) { return describe(ax, node.element()); }

  sim::Node& bare(const std::string& role) { return window.add(role); }

  sim::App& app = desktop.app("com.example.Notes");
  sim::Window& window = app.window({100, 80, 800, 600}, "Notes");
  Accessibility& ax = platform.accessibility;
};

TEST_F(Describe, NamesByTheTitleFirst) {
  const Description d = describeNode(bare("AXButton")
                                         .title("Title")
                                         .value("Value")
                                         .with("AXDescription", textValue("Detail"))
                                         .with("AXPlaceholderValue", textValue("Placeholder"))
                                         .identifier("identifier"));
  EXPECT_EQ(d.role, "AXButton");
  EXPECT_EQ(d.name, "Title");
  EXPECT_EQ(d.value, "Value");
  EXPECT_EQ(d.detail, "Detail");
  EXPECT_EQ(d.identifier, "identifier");
  EXPECT_FALSE(d.secure);
  EXPECT_TRUE(d.enabled);
}

TEST_F(Describe, NamesAButtonWithAnEmptyTitleByItsDescription) {
  EXPECT_EQ(
      describeNode(bare("AXButton").title("  ").with("AXDescription", textValue("Close"))).name,
      "Close");
}

TEST_F(Describe, NamesWhatBearsAValueByItsDescriptionFirst) {
  for (const char* role : {"AXTextField", "AXTextArea", "AXSearchField", "AXComboBox", "AXSlider",
                           "AXProgressIndicator", "AXIncrementor"}) {
    sim::Node& node = bare(role).value("hello").with("AXDescription", textValue("Search"));
    EXPECT_EQ(describeNode(node).name, "Search") << role;
    EXPECT_EQ(describeNode(node.without("AXDescription")).name, "hello") << role;
  }
}

TEST_F(Describe, NamesEverythingElseByItsValueFirst) {
  for (const char* role : {"AXStaticText", "AXButton", "AXCheckBox", "AXSecureTextArea"}) {
    sim::Node& node = bare(role).value("hello").with("AXDescription", textValue("Label"));
    EXPECT_EQ(describeNode(node).name, "hello") << role;
    EXPECT_EQ(describeNode(node.without("AXValue")).name, "Label") << role;
  }
}

TEST_F(Describe, NamesByThePlaceholderLast) {
  sim::Node& field = bare("AXTextField").with("AXPlaceholderValue", textValue("Email"));
  EXPECT_EQ(describeNode(field).name, "Email");
  EXPECT_EQ(describeNode(field.value("a@b.c")).name, "a@b.c");
}

TEST_F(Describe, NamesNothingByNothing) { EXPECT_EQ(describeNode(bare("AXGroup")).name, ""); }

TEST_F(Describe, TakesANumberForNoName) {
  const Description d = describeNode(bare("AXSlider").with("AXValue", Value{0.5}));
  EXPECT_EQ(d.name, "");
  EXPECT_EQ(d.value, "");
}

TEST_F(Describe, KnowsASecureFieldByItsRole) {
  const Description d = describeNode(bare("AXSecureTextField").value("secret"));
  EXPECT_TRUE(d.secure);
  EXPECT_EQ(d.value, "");
  EXPECT_EQ(d.name, "");
}

TEST_F(Describe, KnowsASecureFieldByItsSubrole) {
  const Description d = describeNode(
      bare("AXTextField").with("AXSubrole", textValue("AXSecureTextField")).value("s"));
  EXPECT_TRUE(d.secure);
  EXPECT_EQ(d.value, "");
}

TEST_F(Describe, NeverAsksForTheValueOfASecureField) {
  const sim::Node& secure = window.secureField().value("secret");
  int before = app.calls();
  (void)describeNode(secure);
  EXPECT_EQ(app.calls() - before, 1);
  const sim::Node& open = window.textField("open");
  before = app.calls();
  (void)describeNode(open);
  EXPECT_EQ(app.calls() - before, 2);
}

TEST_F(Describe, NeverAsksForTheValueOfWhatMayBeASecureField) {
  for (sim::Node* node :
       {&bare("AXButton").value("shown").failingBatch(),
        &bare("AXButton").value("shown").failing("AXRole"), &bare("").value("shown")}) {
    const Description d = describeNode(*node);
    EXPECT_EQ(d.role, "");
    EXPECT_EQ(d.value, "");
    EXPECT_EQ(d.name, "");
    EXPECT_FALSE(d.secure);
  }
}

TEST_F(Describe, KnowsASecureFieldThatTellsNothingAtOnce) {
  const Value subrole = textValue("AXSecureTextField");
  for (sim::Node* node : {&bare("AXSecureTextField").failingBatch(),
                          &bare("AXTextField").with("AXSubrole", subrole).failingBatch(),
                          &bare("AXTextField").with("AXSubrole", subrole).failing("AXRole")}) {
    const Description d = describeNode(node->value("secret"));
    EXPECT_TRUE(d.secure);
    EXPECT_EQ(d.value, "");
    EXPECT_EQ(d.name, "");
  }
}

TEST_F(Describe, CostsNoMoreWhereNothingIsToldThanElsewhere) {
  const sim::Node& node = bare("AXButton").failingBatch().failing("AXRole");
  const int before = app.calls();
  (void)describeNode(node);
  EXPECT_EQ(app.calls() - before, 2);
}

TEST_F(Describe, IsEnabledUnlessTheElementSaysOtherwise) {
  EXPECT_TRUE(describeNode(bare("AXButton").without("AXEnabled")).enabled);
  EXPECT_TRUE(describeNode(bare("AXButton").with("AXEnabled", textValue("false"))).enabled);
  EXPECT_TRUE(describeNode(bare("AXButton").with("AXEnabled", Value{0.0})).enabled);
  EXPECT_FALSE(describeNode(bare("AXButton").enabled(false)).enabled);
}

TEST_F(Describe, HandsOnWhatItRead) {
  EXPECT_EQ(frameFrom(describeNode(bare("AXButton").at({1, 2, 3, 4})).attrs), (Rect{1, 2, 3, 4}));
}

TEST_F(Describe, TrimsEveryText) {
  const Description d = describeNode(bare("AXButton")
                                         .title(" T\n")
                                         .value("\tV ")
                                         .with("AXDescription", textValue(" D "))
                                         .identifier(" I "));
  EXPECT_EQ(d.name, "T");
  EXPECT_EQ(d.value, "V");
  EXPECT_EQ(d.detail, "D");
  EXPECT_EQ(d.identifier, "I");
}

TEST_F(Describe, ADeadElementIsDescribedAsEmpty) {
  sim::Node& node = bare("AXButton").title("Save");
  const Element element = node.element();
  node.remove();
  const Description d = describe(ax, element);
  EXPECT_EQ(d.role, "");
  EXPECT_EQ(d.name, "");
  EXPECT_TRUE(d.enabled);
  EXPECT_FALSE(d.secure);
  EXPECT_TRUE(d.attrs.empty());
}

class EditableText : public Describe {
 protected:
  bool editable(const sim::Node& node) {
    return editableText(ax, node.element(), describeNode(node));
  }
};

TEST_F(EditableText, IsATextEntryWhoseValueCanBeSet) {
  for (const char* role : {"AXTextField", "AXTextArea", "AXSearchField", "AXComboBox"}) {
    EXPECT_TRUE(editable(bare(role).settable("AXValue"))) << role;
    EXPECT_FALSE(editable(bare(role).settable("AXValue", false))) << role;
  }
}

TEST_F(EditableText, IsNothingElse) {
  for (const char* role : {"AXSlider", "AXButton", "AXStaticText", "AXSecureTextField", ""}) {
    EXPECT_FALSE(editable(bare(role).settable("AXValue"))) << role;
  }
}

TEST_F(EditableText, IsNoDisabledField) {
  EXPECT_FALSE(editable(window.textField().enabled(false)));
}

TEST_F(EditableText, IsNoSecureField) { EXPECT_FALSE(editable(window.secureField())); }

TEST_F(EditableText, IsNoFieldThatDoesNotTell) {
  EXPECT_FALSE(editable(window.textField().settableUnknown("AXValue")));
}

TEST_F(EditableText, AsksOnlyWhereTheAnswerMatters) {
  sim::Node& button = bare("AXButton").settable("AXValue");
  const Description description = describeNode(button);
  const int before = app.calls();
  EXPECT_FALSE(editableText(ax, button.element(), description));
  EXPECT_EQ(app.calls(), before);
}

TEST(RoleName, IsShortForTexts) {
  EXPECT_EQ(roleName("AXStaticText"), "text");
  EXPECT_EQ(roleName("AXTextField"), "textbox");
  EXPECT_EQ(roleName("AXTextArea"), "textbox");
  EXPECT_EQ(roleName("AXSecureTextField"), "textbox");
  EXPECT_EQ(roleName("AXSearchField"), "searchbox");
}

TEST(RoleName, LosesItsPrefixAndItsCapitals) {
  EXPECT_EQ(roleName("AXButton"), "button");
  EXPECT_EQ(roleName("AXPopUpButton"), "popupbutton");
  EXPECT_EQ(roleName("AXCheckBox"), "checkbox");
  EXPECT_EQ(roleName("AXMenuItem"), "menuitem");
  EXPECT_EQ(roleName("AXCell"), "cell");
  EXPECT_EQ(roleName("AX"), "");
  EXPECT_EQ(roleName("AXAXThing"), "axthing");
}

TEST(RoleName, IsLowerCasedWithoutThePrefixToo) {
  EXPECT_EQ(roleName("Custom"), "custom");
  EXPECT_EQ(roleName("axButton"), "axbutton");
  EXPECT_EQ(roleName("ÄÖ"), "äö");
  EXPECT_EQ(roleName(""), "");
}

}  // namespace
}  // namespace tarqo
