// What objects of several toolkits show: their texts, their names, and whether they show at all.
#include "platform/linux/atspi/translate/attributes.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// An object of that role, with the interface for text.
Properties textObject(std::uint32_t role, std::initializer_list<State> states = {}) {
  Properties object;
  object.alive = true;
  object.role = role;
  std::uint64_t bits = 0;
  for (const State state : states) {
    bits |= std::uint64_t{1} << static_cast<unsigned>(state);
  }
  object.states = States(bits);
  object.interfaces.add("org.a11y.atspi.Text");
  return object;
}

Properties textObject(Role role, std::initializer_list<State> states = {}) {
  return textObject(static_cast<std::uint32_t>(role), states);
}

std::string shown(const View& view, std::string_view attribute) {
  const std::optional<Value> value = plainAttribute(view, attribute);
  const std::string* text = value ? value->as<std::string>() : nullptr;
  return text == nullptr ? "(none)" : *text;
}

constexpr std::uint32_t kParagraph = 73;
constexpr std::uint32_t kStatusBar = 54;

TEST(AtspiOwnTexts, AreTheValueOfRolesThatHaveNone) {
  for (const std::uint32_t role : {kParagraph, kStatusBar}) {
    Properties object = textObject(role);
    object.text = "Nothing yet";
    EXPECT_EQ(shown({object, Toolkit::gecko}, "AXValue"), "Nothing yet");
    EXPECT_EQ(shown({object, Toolkit::gecko}, "AXTitle"), "(none)");
  }
}

TEST(AtspiOwnTexts, OfACellStandBesideItsName) {
  Properties cell = textObject(Role::tableCell, {State::editable});
  cell.name = "A1";
  cell.text = "42";
  EXPECT_EQ(shown({cell, Toolkit::gtk3}, "AXTitle"), "A1");
  EXPECT_EQ(shown({cell, Toolkit::gtk3}, "AXValue"), "42");
  cell.text = "A1";
  EXPECT_EQ(shown({cell, Toolkit::gtk3}, "AXValue"), "(none)");
}

TEST(AtspiOwnTexts, OfBlanksAloneAreNone) {
  Properties page = textObject(Role::documentWeb);
  page.text = "  \n ";
  EXPECT_EQ(shown({page, Toolkit::gecko}, "AXValue"), "(none)");
}

TEST(AtspiOwnTexts, OfALabelWithoutANameAreItsValue) {
  Properties label = textObject(Role::label);
  label.text = "Ready";
  EXPECT_EQ(shown({label, Toolkit::other}, "AXValue"), "Ready");
  label.name = "Done";
  EXPECT_EQ(shown({label, Toolkit::other}, "AXValue"), "Done");
}

TEST(AtspiOwnTexts, OfAWindowAndOfAPasswordAreNeverShown) {
  Properties frame = textObject(Role::frame);
  frame.parent = Ref{":1.1", kRootPath};
  frame.text = "text of a frame";
  EXPECT_EQ(shown({frame, Toolkit::gecko}, "AXValue"), "(none)");
  Properties password = textObject(Role::passwordText, {State::editable});
  password.text = "secret";
  EXPECT_EQ(shown({password, Toolkit::gecko}, "AXValue"), "(none)");
}

TEST(AtspiOwnTexts, HaveNoMarksForObjectsAndNone) {
  EXPECT_EQ(withoutMarks("a \uFFFC inside"), "a  inside");
  EXPECT_EQ(withoutMarks("Order 😀\uFEFF"), "Order 😀");
  EXPECT_EQ(withoutMarks("\uFEFF\uFFFC"), "");
  EXPECT_EQ(withoutMarks("plain"), "plain");
}

TEST(AtspiLabels, NameAFieldThatHasNoNameItself) {
  Properties field = textObject(Role::entry, {State::editable});
  field.label = "Full name";
  EXPECT_EQ(shown({field, Toolkit::other}, "AXTitle"), "Full name");
  field.name = "Mail";
  EXPECT_EQ(shown({field, Toolkit::other}, "AXTitle"), "Mail");
}

TEST(AtspiChoices, OfAPageAreNamedByTheirLabel) {
  Properties list = textObject(Role::comboBox);
  list.name = "Size";
  list.text = "Small";
  for (const Toolkit toolkit : {Toolkit::gecko, Toolkit::chromium}) {
    EXPECT_EQ(shown({list, toolkit}, "AXTitle"), "Size");
    EXPECT_EQ(shown({list, toolkit}, "AXValue"), "Small");
    Properties unknown = list;
    unknown.text.reset();
    EXPECT_EQ(shown({unknown, toolkit}, "AXValue"), "(none)");
  }
}

TEST(AtspiChoices, ElsewhereAreNamedAfterTheChoiceAndLabelledBesideIt) {
  Properties list = textObject(Role::comboBox);
  list.name = "Small";
  for (const Toolkit toolkit : {Toolkit::gtk3, Toolkit::qt}) {
    EXPECT_EQ(shown({list, toolkit}, "AXTitle"), "(none)");
    EXPECT_EQ(shown({list, toolkit}, "AXValue"), "Small");
    Properties labelled = list;
    labelled.label = "Size";
    EXPECT_EQ(shown({labelled, toolkit}, "AXTitle"), "Size");
    EXPECT_EQ(shown({labelled, toolkit}, "AXValue"), "Small");
  }
}

TEST(AtspiShowing, LastsInGtk3WithoutAPlaceButForCells) {
  const Rect none{-1, -1, -1, -1};
  for (const Role role : {Role::pageTab, Role::pageTabList, Role::list, Role::text}) {
    Properties holder = textObject(role, {State::showing});
    holder.extents = none;
    EXPECT_FALSE(isHidden({holder, Toolkit::gtk3})) << holder.role;
  }
  Properties cell = textObject(Role::tableCell, {State::showing});
  cell.extents = none;
  EXPECT_TRUE(isHidden({cell, Toolkit::gtk3}));
}

TEST(AtspiShowing, EndsInGtk4WhereAnObjectDoesNotHoldItsOwnMiddle) {
  Properties row = textObject(Role::label, {State::visible});
  row.extents = Rect{10, 20, 100, 20};
  EXPECT_FALSE(isHidden({row, Toolkit::gtk4}));
  row.drawn = true;
  EXPECT_FALSE(isHidden({row, Toolkit::gtk4}));
  row.drawn = false;
  EXPECT_TRUE(isHidden({row, Toolkit::gtk4}));
}

TEST(AtspiToolkits, AreKnownByTheirNames) {
  EXPECT_EQ(toolkitNamed("Gecko", "115"), Toolkit::gecko);
  EXPECT_EQ(toolkitNamed("gtk", "3.24.38"), Toolkit::gtk3);
  EXPECT_EQ(toolkitNamed("GTK", "4.8.3"), Toolkit::gtk4);
  EXPECT_EQ(toolkitNamed("WAL", "1"), Toolkit::other);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
