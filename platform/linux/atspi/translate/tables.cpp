#include "platform/linux/atspi/translate/tables.h"

#include <algorithm>
#include <array>

namespace tarqo::lnx::atspi {
namespace {

using enum ValueSource;

// clang-format off
constexpr RoleRow kRoles[] = {
  // number, AT-SPI, role, subrole, value
  {  0, "invalid",               "AXUnknown",           "",                    none},
  {  1, "accelerator label",     "AXStaticText",        "",                    label},
  {  2, "alert",                 "AXGroup",             "AXApplicationAlert",  none},
  {  3, "animation",             "AXImage",             "",                    none},
  {  4, "arrow",                 "AXImage",             "",                    none},
  {  5, "calendar",              "AXGroup",             "",                    none},
  {  6, "canvas",                "AXGroup",             "",                    none},
  {  7, "check box",             "AXCheckBox",          "",                    onOff},
  {  8, "check menu item",       "AXMenuItem",          "",                    none},
  {  9, "color chooser",         "AXGroup",             "",                    none},
  { 10, "column header",         "AXCell",              "",                    none},
  { 11, "combo box",             "AXPopUpButton",       "",                    choice},
  { 12, "date editor",           "AXDateField",         "",                    text},
  { 13, "desktop icon",          "AXImage",             "",                    none},
  { 14, "desktop frame",         "AXGroup",             "",                    none},
  { 15, "dial",                  "AXSlider",            "",                    quantity},
  { 16, "dialog",                "AXGroup",             "AXApplicationDialog", none},
  { 17, "directory pane",        "AXGroup",             "",                    none},
  { 18, "drawing area",          "AXGroup",             "",                    none},
  { 19, "file chooser",          "AXGroup",             "",                    none},
  { 20, "filler",                "AXGroup",             "",                    none},
  { 21, "focus traversable",     "AXGroup",             "",                    none},
  { 22, "font chooser",          "AXGroup",             "",                    none},
  { 23, "frame",                 "AXGroup",             "",                    none},
  { 24, "glass pane",            "AXGroup",             "",                    none},
  { 25, "html container",        "AXGroup",             "",                    none},
  { 26, "icon",                  "AXImage",             "",                    none},
  { 27, "image",                 "AXImage",             "",                    none},
  { 28, "internal frame",        "AXGroup",             "",                    none},
  { 29, "label",                 "AXStaticText",        "",                    label},
  { 30, "layered pane",          "AXGroup",             "",                    none},
  { 31, "list",                  "AXList",              "",                    none},
  { 32, "list item",             "AXGroup",             "",                    none},
  { 33, "menu",                  "AXMenu",              "",                    none},
  { 34, "menu bar",              "AXMenuBar",           "",                    none},
  { 35, "menu item",             "AXMenuItem",          "",                    none},
  { 36, "option pane",           "AXGroup",             "",                    none},
  { 37, "page tab",              "AXTab",               "",                    none},
  { 38, "page tab list",         "AXTabGroup",          "",                    none},
  { 39, "panel",                 "AXGroup",             "",                    none},
  { 40, "password text",         "AXTextField",         "AXSecureTextField",   none},
  { 41, "popup menu",            "AXMenu",              "",                    none},
  { 42, "progress bar",          "AXProgressIndicator", "",                    quantity},
  { 43, "push button",           "AXButton",            "",                    none},
  { 44, "radio button",          "AXRadioButton",       "",                    onOff},
  { 45, "radio menu item",       "AXMenuItem",          "",                    none},
  { 46, "root pane",             "AXGroup",             "",                    none},
  { 47, "row header",            "AXCell",              "",                    none},
  { 48, "scroll bar",            "AXScrollBar",         "",                    quantity},
  { 49, "scroll pane",           "AXScrollArea",        "",                    none},
  { 50, "separator",             "AXSplitter",          "",                    none},
  { 51, "slider",                "AXSlider",            "",                    quantity},
  // A number that can be typed is a field with two arrows, so that typing into it works.
  { 52, "spin button",           "AXTextField",         "",                    text},
  { 53, "split pane",            "AXSplitGroup",        "",                    none},
  { 54, "status bar",            "AXGroup",             "",                    none},
  { 55, "table",                 "AXTable",             "",                    none},
  { 56, "table cell",            "AXCell",              "",                    none},
  { 57, "table column header",   "AXButton",            "AXSortButton",        none},
  { 58, "table row header",      "AXCell",              "",                    none},
  { 59, "tearoff menu item",     "AXMenuItem",          "",                    none},
  { 60, "terminal",              "AXTextArea",          "",                    text},
  { 61, "text",                  "AXTextField",         "",                    text},
  { 62, "toggle button",         "AXCheckBox",          "AXToggle",            onOff},
  { 63, "tool bar",              "AXToolbar",           "",                    none},
  { 64, "tool tip",              "AXHelpTag",           "",                    label},
  { 65, "tree",                  "AXOutline",           "",                    none},
  { 66, "tree table",            "AXOutline",           "",                    none},
  { 67, "unknown",               "AXUnknown",           "",                    none},
  { 68, "viewport",              "AXGroup",             "",                    none},
  { 69, "window",                "AXGroup",             "",                    none},
  { 70, "extended",              "AXGroup",             "",                    none},
  { 71, "header",                "AXGroup",             "",                    none},
  { 72, "footer",                "AXGroup",             "",                    none},
  { 73, "paragraph",             "AXGroup",             "",                    none},
  { 74, "ruler",                 "AXRuler",             "",                    none},
  { 75, "application",           "AXApplication",       "",                    none},
  { 76, "autocomplete",          "AXComboBox",          "",                    text},
  { 77, "edit bar",              "AXTextField",         "",                    text},
  { 78, "embedded",              "AXGroup",             "",                    none},
  { 79, "entry",                 "AXTextField",         "",                    text},
  { 80, "chart",                 "AXImage",             "",                    none},
  { 81, "caption",               "AXGroup",             "",                    none},
  { 82, "document frame",        "AXWebArea",           "",                    none},
  { 83, "heading",               "AXHeading",           "",                    none},
  { 84, "page",                  "AXGroup",             "",                    none},
  { 85, "section",               "AXGroup",             "",                    none},
  { 86, "redundant object",      "AXGroup",             "",                    none},
  { 87, "form",                  "AXGroup",             "",                    none},
  { 88, "link",                  "AXLink",              "",                    none},
  { 89, "input method window",   "AXGroup",             "",                    none},
  { 90, "table row",             "AXRow",               "",                    none},
  { 91, "tree item",             "AXRow",               "AXOutlineRow",        none},
  { 92, "document spreadsheet",  "AXGroup",             "",                    none},
  { 93, "document presentation", "AXGroup",             "",                    none},
  { 94, "document text",         "AXGroup",             "",                    none},
  { 95, "document web",          "AXWebArea",           "",                    none},
  { 96, "document email",        "AXGroup",             "",                    none},
  { 97, "comment",               "AXGroup",             "",                    none},
  { 98, "list box",              "AXList",              "",                    none},
  { 99, "grouping",              "AXGroup",             "",                    none},
  {100, "image map",             "AXImage",             "",                    none},
  {101, "notification",          "AXGroup",             "AXApplicationStatus", none},
  {102, "info bar",              "AXGroup",             "AXApplicationStatus", none},
  {103, "level bar",             "AXLevelIndicator",    "",                    quantity},
  {104, "title bar",             "AXGroup",             "",                    none},
  {105, "block quote",           "AXGroup",             "",                    none},
  {106, "audio",                 "AXGroup",             "AXAudio",             none},
  {107, "video",                 "AXGroup",             "AXVideo",             none},
  {108, "definition",            "AXGroup",             "AXDefinition",        none},
  {109, "article",               "AXGroup",             "AXDocumentArticle",   none},
  {110, "landmark",              "AXGroup",             "",                    none},
  {111, "log",                   "AXGroup",             "AXApplicationLog",    none},
  {112, "marquee",               "AXGroup",             "AXApplicationMarquee", none},
  {113, "math",                  "AXGroup",             "AXDocumentMath",      none},
  {114, "rating",                "AXLevelIndicator",    "AXRatingIndicator",   quantity},
  {115, "timer",                 "AXGroup",             "AXApplicationTimer",  none},
  {116, "static",                "AXStaticText",        "",                    label},
  {117, "math fraction",         "AXGroup",             "",                    none},
  {118, "math root",             "AXGroup",             "",                    none},
  {119, "subscript",             "AXGroup",             "AXSubscriptStyleGroup", none},
  {120, "superscript",           "AXGroup",             "AXSuperscriptStyleGroup", none},
  {121, "description list",      "AXList",              "AXDescriptionList",   none},
  {122, "description term",      "AXGroup",             "AXTerm",              none},
  {123, "description value",     "AXGroup",             "AXDescription",       none},
  {124, "footnote",              "AXGroup",             "",                    none},
  {125, "content deletion",      "AXGroup",             "AXDeleteStyleGroup",  none},
  {126, "content insertion",     "AXGroup",             "AXInsertStyleGroup",  none},
  {127, "mark",                  "AXGroup",             "",                    none},
  {128, "suggestion",            "AXGroup",             "",                    none},
  {129, "push button menu",      "AXMenuButton",        "",                    none},
  {130, "switch",                "AXCheckBox",          "AXSwitch",            onOff},
};

/// What an action's word means depends on the control: activating a row opens it, as a double click
/// does, and activating an entry is pressing Return in it.
enum class On { any, cell, entry, control, content };

struct ActionRow {
  std::string_view action;
  On on;
  std::string_view ax;
};

constexpr ActionRow kActions[] = {
  {"activate",        On::cell,  "AXOpen"},
  {"activate",        On::entry, "AXConfirm"},
  {"activate",        On::any,   "AXPress"},
  {"click",           On::any,   "AXPress"},
  {"press",           On::any,   "AXPress"},
  {"push",            On::any,   "AXPress"},
  {"invoke",          On::any,   "AXPress"},
  {"toggle",          On::any,   "AXPress"},
  {"check",           On::any,   "AXPress"},
  {"uncheck",         On::any,   "AXPress"},
  {"jump",            On::any,   "AXPress"},
  {"open",            On::any,   "AXPress"},
  {"select",          On::any,   "AXPress"},
  {"switch",          On::any,   "AXPress"},
  // Chromium offers this on everything, on most of it to no effect.
  {"dodefault",       On::control, "AXPress"},
  {"menu",            On::any,   "AXShowMenu"},
  {"showmenu",        On::any,   "AXShowMenu"},
  {"showcontextmenu", On::content, "AXShowMenu"},
  {"increase",        On::any,   "AXIncrement"},
  {"increment",       On::any,   "AXIncrement"},
  {"decrease",        On::any,   "AXDecrement"},
  {"decrement",       On::any,   "AXDecrement"},
};

constexpr EventRow kEvents[] = {
  // interface, member, detail, what is requested of the registry, notification
  {"Object", "StateChanged",        "focused",          "object:state-changed:focused",          "AXFocusedUIElementChanged"},
  {"Object", "StateChanged",        "showing",          "object:state-changed:showing",          "AXLayoutChanged"},
  {"Object", "StateChanged",        "expanded",         "object:state-changed:expanded",         "AXLayoutChanged"},
  {"Object", "StateChanged",        "sensitive",        "object:state-changed:sensitive",        "AXLayoutChanged"},
  {"Object", "StateChanged",        "checked",          "object:state-changed:checked",          "AXValueChanged"},
  {"Object", "StateChanged",        "pressed",          "object:state-changed:pressed",          "AXValueChanged"},
  {"Object", "StateChanged",        "indeterminate",    "object:state-changed:indeterminate",    "AXValueChanged"},
  {"Object", "StateChanged",        "selected",         "object:state-changed:selected",         "AXSelectedChildrenChanged"},
  {"Object", "PropertyChange",      "accessible-name",  "object:property-change:accessible-name", "AXTitleChanged"},
  {"Object", "PropertyChange",      "accessible-value", "object:property-change:accessible-value", "AXValueChanged"},
  {"Object", "TextChanged",         "",                 "object:text-changed",                   "AXValueChanged"},
  {"Object", "TextCaretMoved",      "",                 "object:text-caret-moved",               "AXSelectedTextChanged"},
  {"Object", "TextSelectionChanged", "",                "object:text-selection-changed",         "AXSelectedTextChanged"},
  {"Object", "SelectionChanged",    "",                 "object:selection-changed",              "AXSelectedChildrenChanged"},
  {"Object", "ActiveDescendantChanged", "",             "object:active-descendant-changed",      "AXFocusedUIElementChanged"},
  {"Object", "ChildrenChanged",     "add",              "object:children-changed:add",           "AXCreated"},
  {"Object", "ChildrenChanged",     "remove",           "object:children-changed:remove",        "AXUIElementDestroyed"},
  {"Object", "RowInserted",         "",                 "object:row-inserted",                   "AXRowCountChanged"},
  {"Object", "RowDeleted",          "",                 "object:row-deleted",                    "AXRowCountChanged"},
  {"Object", "ModelChanged",        "",                 "object:model-changed",                  "AXRowCountChanged"},
  {"Document", "LoadComplete",      "",                 "document:load-complete",                "AXLayoutChanged"},
  {"Window", "Create",              "",                 "window:create",                         "AXWindowCreated"},
  {"Window", "Destroy",             "",                 "window:destroy",                        "AXUIElementDestroyed"},
  {"Window", "Resize",              "",                 "window:resize",                         "AXWindowResized"},
  {"Window", "Move",                "",                 "window:move",                           "AXWindowMoved"},
  {"Window", "Activate",            "",                 "window:activate",                       "AXApplicationActivated"},
};

struct MenuEventRow {
  std::string_view detail;
  Role role;
};

// How toolkits report that a menu opened: all of these are changes of a state.
constexpr MenuEventRow kMenuEvents[] = {
  {"showing",  Role::menu},       // Chromium
  {"showing",  Role::popupMenu},  // Qt
  {"focused",  Role::menu},       // GTK 3, of a context menu
  {"selected", Role::menu},       // GTK 3, in the menu bar
  {"expanded", Role::menuItem},   // GTK 4, in the menu bar
};
// clang-format on

constexpr std::uint32_t kWindowRoles[] = {2, 9, 16, 19, 22, 23, 69};
constexpr std::uint32_t kMenuEntryRoles[] = {8, 33, 35, 45, 50, 59};
constexpr std::uint32_t kHeaderRoles[] = {10, 47, 57, 58};
constexpr std::uint32_t kCellRoles[] = {32, 56, 90, 91};
constexpr std::uint32_t kControlRoles[] = {7,  8,  11, 32, 33, 35, 37,  43,
                                           44, 45, 57, 62, 88, 91, 129, 130};
constexpr std::uint32_t kEntryRoles[] = {40, 52, 60, 61, 77, 79};

bool contains(std::span<const std::uint32_t> roles, std::uint32_t role) {
  return std::ranges::find(roles, role) != roles.end();
}

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool sameIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lowered, lowered);
}

bool applies(On on, std::uint32_t role) {
  switch (on) {
    case On::any:
      return true;
    case On::cell:
      return contains(kCellRoles, role);
    case On::entry:
      return contains(kEntryRoles, role);
    case On::control:
      return contains(kControlRoles, role);
    case On::content:
      return roleRow(role).axRole != "AXGroup";
  }
  return false;
}

}  // namespace

const RoleRow& roleRow(std::uint32_t role) {
  if (role < std::size(kRoles)) {
    return kRoles[role];
  }
  return kRoles[0];
}

bool isWindowRole(std::uint32_t role) { return contains(kWindowRoles, role); }

bool isMenuEntryRole(std::uint32_t role) { return contains(kMenuEntryRoles, role); }

bool isCellRole(std::uint32_t role) {
  return contains(kCellRoles, role) || contains(kHeaderRoles, role);
}

RoleRow refined(const RoleRow& row, States states) {
  RoleRow result = row;
  const auto role = static_cast<Role>(row.role);
  const bool manyLines = states.has(State::multiLine);
  if ((role == Role::text || role == Role::entry) && manyLines) {
    result.axRole = "AXTextArea";
  } else if (role == Role::comboBox && states.has(State::editable)) {
    result.axRole = "AXComboBox";
    result.value = text;
  } else if (role == Role::listItem && states.has(State::selectable)) {
    result.axRole = "AXRow";
  }
  return result;
}

std::optional<std::string_view> axAction(std::string_view action, std::uint32_t role) {
  for (const ActionRow& row : kActions) {
    if (sameIgnoringCase(row.action, action) && applies(row.on, role)) {
      return row.ax;
    }
  }
  return std::nullopt;
}

std::span<const EventRow> eventRows() { return kEvents; }

const EventRow* eventRow(std::string_view interface, std::string_view member,
                         std::string_view detail) {
  for (const EventRow& row : kEvents) {
    if (row.interface == interface && sameIgnoringCase(row.member, member) &&
        (row.detail.empty() || row.detail == detail.substr(0, detail.find('/')))) {
      return &row;
    }
  }
  return nullptr;
}

bool mayBeOfMenu(const EventRow& row) {
  return row.member == "StateChanged" &&
         std::ranges::find(kMenuEvents, row.detail, &MenuEventRow::detail) != std::end(kMenuEvents);
}

bool isOfMenu(const EventRow& row, std::uint32_t role) {
  return row.member == "StateChanged" &&
         std::ranges::any_of(kMenuEvents, [&](const MenuEventRow& each) {
           return each.detail == row.detail && static_cast<std::uint32_t>(each.role) == role;
         });
}

}  // namespace tarqo::lnx::atspi
