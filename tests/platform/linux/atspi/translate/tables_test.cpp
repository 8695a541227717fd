// The translation of AT-SPI into the protocol's vocabulary, row by row and object by object.
#include "platform/linux/atspi/translate/tables.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/linux/atspi/translate/attributes.h"
#include "platform/linux/atspi/translate/view.h"
#include "tests/platform/linux/atspi/translate/properties_of.h"

namespace tarqo::lnx::atspi {
namespace {

void offer(Properties& properties, std::initializer_list<const char*> interfaces) {
  for (const char* name : interfaces) {
    properties.interfaces.add(std::string("org.a11y.atspi.") + name);
  }
}

std::string textOf(const View& view, std::string_view attribute) {
  const std::optional<Value> value = plainAttribute(view, attribute);
  const std::string* text = value ? value->as<std::string>() : nullptr;
  return text == nullptr ? "(none)" : *text;
}

TEST(AtspiValues, OfASpinButtonWithoutTextHaveAllTheirDigits) {
  Properties spin = propertiesOf(Role::spinButton, {});
  for (const auto& [number, text] :
       std::initializer_list<std::pair<double, const char*>>{{1234567, "1234567"},
                                                             {0, "0"},
                                                             {-12.25, "-12.25"},
                                                             {0.1, "0.1"},
                                                             {1e21, "1000000000000000000000"},
                                                             {5e-7, "0.0000005"}}) {
    spin.number = number;
    EXPECT_EQ(textOf({spin}, "AXValue"), text);
  }
}

TEST(AtspiRoles, StandInTheirTableAtTheirNumber) {
  for (std::uint32_t role = 0; role <= 130; ++role) {
    EXPECT_EQ(roleRow(role).role, role) << "row " << role;
    EXPECT_TRUE(roleRow(role).axRole.starts_with("AX")) << "row " << role;
  }
}

TEST(AtspiRoles, ThatNobodyKnowsAreUnknown) {
  EXPECT_EQ(roleRow(131).axRole, "AXUnknown");
  EXPECT_EQ(roleRow(4'000'000'000).axRole, "AXUnknown");
}

TEST(AtspiRoles, OfTextDependOnTheNumberOfLines) {
  EXPECT_EQ(axRole({propertiesOf(Role::text, {State::singleLine})}).role, "AXTextField");
  EXPECT_EQ(axRole({propertiesOf(Role::text, {State::multiLine})}).role, "AXTextArea");
  EXPECT_EQ(axRole({propertiesOf(Role::entry, {State::multiLine})}).role, "AXTextArea");
}

TEST(AtspiRoles, OfWindowsCountAtTheTopOnly) {
  Properties dialog = propertiesOf(Role::dialog);
  dialog.parent = Ref{":1.1", "/org/a11y/atspi/accessible/7"};
  EXPECT_EQ(axRole({dialog}).role, "AXGroup");
  EXPECT_EQ(axRole({dialog}).subrole, "AXApplicationDialog");
  dialog.parent = Ref{":1.1", kRootPath};
  EXPECT_EQ(axRole({dialog}).role, "AXWindow");
  EXPECT_EQ(axRole({dialog}).subrole, "AXDialog");
  Properties frame = propertiesOf(Role::frame);
  frame.parent = Ref{":1.1", kRootPath};
  EXPECT_EQ(axRole({frame}).subrole, "AXStandardWindow");
}

TEST(AtspiRoles, OfOneMenuObjectAreItsTitleAndItsMenu) {
  const Properties menu = propertiesOf(Role::menu);
  EXPECT_EQ(axRole({.properties = menu, .place = MenuPlace::bar}).role, "AXMenuBarItem");
  EXPECT_EQ(axRole({.properties = menu, .place = MenuPlace::menu}).role, "AXMenuItem");
  EXPECT_EQ(axRole({.properties = menu, .facet = Facet::openedMenu}).role, "AXMenu");
  EXPECT_EQ(axRole({.properties = menu}).role, "AXMenu");
}

TEST(AtspiRoles, OfMenusThatOnlyThePointerOpensCanBeClicked) {
  const Properties entry = propertiesOf(Role::menuItem);
  EXPECT_EQ(axRole({.properties = entry, .toolkit = Toolkit::gtk4, .place = MenuPlace::bar}).role,
            "AXPopUpButton");
}

TEST(AtspiRoles, OfSearchFieldsShowInTheSubrole) {
  Properties field = propertiesOf(Role::entry, {State::editable});
  EXPECT_EQ(axRole({field, Toolkit::chromium}).subrole, "");
  field.attributes = {{"text-input-type", "search"}};
  EXPECT_EQ(axRole({field, Toolkit::chromium}).subrole, "AXSearchField");
  EXPECT_EQ(axRole({propertiesOf(Role::entry), Toolkit::gtk4}).subrole, "AXSearchField");
}

TEST(AtspiActions, ArePressesWhateverTheToolkitCallsThem) {
  const auto button = std::uint32_t{43};
  for (const char* name : {"click", "Click", "press", "Press", "activate", "Toggle", "jump",
                           "check", "uncheck", "open", "select", "doDefault"}) {
    EXPECT_EQ(axAction(name, button), "AXPress") << name;
  }
  EXPECT_EQ(axAction("ShowMenu", button), "AXShowMenu");
  EXPECT_EQ(axAction("showContextMenu", button), "AXShowMenu");
}

TEST(AtspiActions, OfRowsAndEntriesAreNoPresses) {
  EXPECT_EQ(axAction("activate", static_cast<std::uint32_t>(Role::tableCell)), "AXOpen");
  EXPECT_EQ(axAction("activate", static_cast<std::uint32_t>(Role::text)), "AXConfirm");
}

TEST(AtspiActions, ThatEveryObjectOffersCountOnControlsOnly) {
  const std::uint32_t panel = 39;
  EXPECT_EQ(axAction("doDefault", panel), std::nullopt);
  EXPECT_EQ(axAction("showContextMenu", panel), std::nullopt);
  EXPECT_EQ(axAction("doDefault", static_cast<std::uint32_t>(Role::pageTab)), "AXPress");
}

TEST(AtspiActions, WithoutAMeaningHereAreLeftOut) {
  EXPECT_EQ(axAction("clipboard.copy", static_cast<std::uint32_t>(Role::label)), std::nullopt);
  EXPECT_EQ(axAction("", 43), std::nullopt);
}

TEST(AtspiActions, AreNamedOnceAndFoundByTheirIndex) {
  Properties button = propertiesOf(Role::invalid);
  button.role = 43;
  button.actions = {"SetFocus", "Press", "click", "ShowMenu"};
  EXPECT_EQ(axActionNames({button}), (std::vector<std::string>{"AXPress", "AXShowMenu"}));
  EXPECT_EQ(actionIndex({button}, "AXPress"), 1);
  EXPECT_EQ(actionIndex({button}, "AXShowMenu"), 3);
  EXPECT_EQ(actionIndex({button}, "AXConfirm"), std::nullopt);
}

TEST(Events, AreTranslatedToNotificationsOfTheProtocolOnly) {
  const std::set<std::string_view> known{"AXMenuOpened",
                                         "AXMenuClosed",
                                         "AXMenuItemSelected",
                                         "AXFocusedUIElementChanged",
                                         "AXValueChanged",
                                         "AXTitleChanged",
                                         "AXLayoutChanged",
                                         "AXRowCountChanged",
                                         "AXSelectedRowsChanged",
                                         "AXSelectedChildrenChanged",
                                         "AXCreated",
                                         "AXUIElementDestroyed",
                                         "AXWindowCreated",
                                         "AXWindowResized",
                                         "AXWindowMoved",
                                         "AXApplicationActivated",
                                         "AXSelectedTextChanged"};
  for (const EventRow& row : eventRows()) {
    EXPECT_TRUE(known.contains(row.notification)) << row.notification;
  }
}

TEST(Events, AreNeverSubscribedWholesale) {
  for (const EventRow& row : eventRows()) {
    EXPECT_NE(row.subscription, "object:");
    EXPECT_NE(row.subscription, "object:state-changed");
    EXPECT_EQ(row.subscription.find("bounds"), std::string_view::npos);
  }
}

TEST(Events, AreFoundByMemberAndDetail) {
  const EventRow* focus = eventRow("Object", "StateChanged", "focused");
  ASSERT_NE(focus, nullptr);
  EXPECT_EQ(focus->notification, "AXFocusedUIElementChanged");
  EXPECT_EQ(eventRow("Object", "StateChanged", "animated"), nullptr);
  const EventRow* added = eventRow("Object", "ChildrenChanged", "add/system");
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->notification, "AXCreated");
}

TEST(Events, OfMenusAreKnownByStateAndRole) {
  const auto role = [](Role each) { return static_cast<std::uint32_t>(each); };
  const EventRow* showing = eventRow("Object", "StateChanged", "showing");
  const EventRow* expanded = eventRow("Object", "StateChanged", "expanded");
  const EventRow* checked = eventRow("Object", "StateChanged", "checked");
  EXPECT_TRUE(mayBeOfMenu(*showing));
  EXPECT_FALSE(mayBeOfMenu(*checked));
  EXPECT_FALSE(mayBeOfMenu(*eventRow("Object", "SelectionChanged", "")));
  EXPECT_TRUE(isOfMenu(*showing, role(Role::popupMenu)));
  EXPECT_FALSE(isOfMenu(*showing, role(Role::menuItem)));
  EXPECT_TRUE(isOfMenu(*expanded, role(Role::menuItem)));
  EXPECT_FALSE(isOfMenu(*expanded, role(Role::comboBox)));
}

TEST(Events, OfWindowsAreFoundInEitherCase) {
  EXPECT_NE(eventRow("Window", "Activate", ""), nullptr);
  EXPECT_EQ(eventRow("Window", "activate", ""), eventRow("Window", "Activate", ""));
}

TEST(AtspiTexts, OfALabelAreItsValue) {
  Properties label = propertiesOf(Role::label);
  label.name = "Hello";
  EXPECT_EQ(textOf({label}, "AXValue"), "Hello");
  EXPECT_EQ(textOf({label}, "AXTitle"), "(none)");
}

TEST(AtspiTexts, OfAButtonAreItsTitle) {
  Properties button = propertiesOf(Role::invalid);
  button.role = 43;
  button.name = "Save";
  EXPECT_EQ(textOf({button}, "AXTitle"), "Save");
  EXPECT_EQ(textOf({button}, "AXValue"), "(none)");
}

TEST(AtspiTexts, OfAPasswordAreNeverShown) {
  Properties field = propertiesOf(Role::passwordText, {State::editable});
  offer(field, {"Text", "EditableText"});
  field.text = "secret";
  EXPECT_EQ(plainAttribute({field}, "AXValue"), std::nullopt);
  EXPECT_EQ(textOf({field}, "AXSubrole"), "AXSecureTextField");
}

TEST(AtspiTexts, ThatAreTheNameOfAClassAreNone) {
  Properties entry = propertiesOf(Role::text);
  entry.name = "GtkEntry";
  EXPECT_EQ(textOf({entry, Toolkit::gtk4}, "AXTitle"), "(none)");
  EXPECT_EQ(textOf({entry, Toolkit::gtk3}, "AXTitle"), "GtkEntry");
}

TEST(AtspiTexts, OfPlaceholdersComeFromWhereTheToolkitKeepsThem) {
  Properties gtk = propertiesOf(Role::text, {State::editable});
  gtk.attributes = {{"placeholder-text", "Name"}};
  EXPECT_EQ(textOf({gtk, Toolkit::gtk3}, "AXPlaceholderValue"), "Name");
  Properties qt = propertiesOf(Role::text, {State::editable});
  qt.description = "Name";
  EXPECT_EQ(textOf({qt, Toolkit::qt}, "AXPlaceholderValue"), "Name");
  EXPECT_EQ(textOf({qt, Toolkit::qt}, "AXDescription"), "(none)");
  Properties web = propertiesOf(Role::entry, {State::editable});
  web.name = "Name";
  web.attributes = {{"name-from", "placeholder"}};
  EXPECT_EQ(textOf({web, Toolkit::chromium}, "AXPlaceholderValue"), "Name");
  EXPECT_EQ(textOf({web, Toolkit::chromium}, "AXTitle"), "(none)");
}

TEST(AtspiValues, OfACheckBoxAreNumbers) {
  const auto number = [](std::initializer_list<State> states) {
    const Properties box = propertiesOf(Role::checkBox, states);
    return *plainAttribute({box}, "AXValue")->as<double>();
  };
  EXPECT_EQ(number({}), 0);
  EXPECT_EQ(number({State::checked}), 1);
  EXPECT_EQ(number({State::checked, State::indeterminate}), 2);
}

TEST(AtspiValues, AreSettableWhereTheToolkitTakesThem) {
  Properties field = propertiesOf(Role::text, {State::editable});
  offer(field, {"Text"});
  EXPECT_FALSE(hasSettableValue({field}));
  offer(field, {"EditableText"});
  EXPECT_TRUE(hasSettableValue({field}));
  Properties shown = propertiesOf(Role::text);
  offer(shown, {"Text", "EditableText"});
  EXPECT_FALSE(hasSettableValue({shown}));
}

TEST(AtspiRoles, MakeAFieldOfAComboBoxThatTakesATextItself) {
  Properties box = propertiesOf(Role::comboBox, {State::editable});
  EXPECT_EQ(axRole({box}).role, "AXComboBox");
  offer(box, {"EditableText"});
  EXPECT_EQ(axRole({box}).role, "AXTextField");
}

TEST(AtspiRoles, OfPlainWidgetsThatAreWindowsAreThoseOfWindows) {
  Properties label = propertiesOf(Role::label);
  label.name = "Plain";
  const View window{.properties = label, .toolkit = Toolkit::qt, .topLevel = true};
  EXPECT_EQ(axRole(window).role, "AXWindow");
  EXPECT_EQ(axRole(window).subrole, "AXStandardWindow");
  EXPECT_EQ(textOf(window, "AXTitle"), "Plain");
  EXPECT_EQ(axActionNames(window), std::vector<std::string>{"AXRaise"});
  EXPECT_EQ(axRole({.properties = label, .toolkit = Toolkit::qt}).role, "AXStaticText");
}

}  // namespace
}  // namespace tarqo::lnx::atspi
