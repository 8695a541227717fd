#include "platform/linux/atspi/translate/translate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tarqo::lnx {
namespace {

/// No screen reaches further; what lies beyond was never laid out.
constexpr double kFarthest = 100'000;

struct AttributeRow {
  std::string_view name;
  FactSet facts;
};

const AttributeRow kAttributes[] = {
    {"AXRole", Fact::kind},
    {"AXSubrole", Fact::kind | Fact::attributes | Fact::children},
    {"AXTitle", Fact::name | Fact::attributes},
    {"AXDescription", Fact::description},
    {"AXPlaceholderValue", Fact::name | Fact::description | Fact::attributes},
    {"AXEnabled", Fact::kind},
    {"AXSelected", Fact::kind},
    {"AXFocused", Fact::kind},
    {"AXHidden", Fact::kind | Fact::extents},
    {"AXIdentifier", Fact::identifier | Fact::attributes},
    {"AXURL", Fact::address},
    {"AXValue", Fact::value},
    {"AXPosition", Fact::kind | Fact::extents},
    {"AXSize", Fact::kind | Fact::extents},
    {"AXChildren", Fact::kind | Fact::name | Fact::children | Fact::extents},
    {"AXParent", Fact::kind | Fact::parent},
    {"AXMinimized", Fact::kind},
    {"AXMain", Fact::kind},
    {"AXDocument", Fact::kind},
};

/// Toolkits in which whatever is on the screen has a place, and which go on saying that a thing is
/// shown when it has none any more: rows scrolled away (GTK 3), lists of closed boxes (Qt), pages
/// of a stack (GTK 4). In web pages an empty box may hold what is seen.
bool tellsPlacesOfShown(Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 || toolkit == Toolkit::gtk4 || toolkit == Toolkit::qt;
}

std::optional<Value> textOrNone(std::string text) {
  if (text.empty()) {
    return std::nullopt;
  }
  return Value{std::move(text)};
}

/// GTK 4 names what has no name after its class ("GtkEntry").
bool isClassName(std::string_view name) {
  const bool ours = name.starts_with("Gtk") || name.starts_with("Adw");
  return (ours && name.size() > 3 && name[3] >= 'A' && name[3] <= 'Z' &&
          name.find(' ') == std::string_view::npos) ||
         name.starts_with("__main__+") || name.starts_with("gtkmm__");
}

bool nameIsPlaceholder(const AtspiView& view) {
  const std::string* from = view.facts.attribute("name-from");
  return from != nullptr && *from == "placeholder";
}

/// GTK 4 names a control with a label of its own twice, the first time with the mark of its
/// mnemonic if it has one ("_OK OK", "7 7").
std::string_view namedOnce(std::string_view name) {
  const std::size_t half = name.size() / 2;
  if (name.size() < 3 || name[half] != ' ') {
    return name;
  }
  const std::string_view plain = name.substr(half + 1);
  std::string marked(name.substr(0, half));
  if (marked == plain) {
    return plain;
  }
  const std::size_t mark = marked.find('_');
  return mark != std::string::npos && marked.erase(mark, 1) == plain ? plain : name;
}

ValueSource valueSource(const AtspiView& view) {
  if (view.facet == Facet::openedMenu || isWindow(view) || isSecure(view.facts)) {
    return ValueSource::none;
  }
  return refined(roleRow(view.facts.role), view.facts.states).value;
}

bool isEditableField(const AtspiFacts& facts) {
  return (facts.has(AtspiInterface::editableText) && facts.has(AtspiState::editable)) ||
         (facts.is(AtspiRole::spinButton) && facts.has(AtspiInterface::value));
}

std::optional<Value> title(const AtspiView& view) {
  if (valueSource(view) == ValueSource::label || nameIsPlaceholder(view)) {
    return std::nullopt;
  }
  const std::string name(shownName(view.facts, view.toolkit));
  // GTK 3 and Qt name a list of choices after the choice; that is its value.
  if (valueSource(view) == ValueSource::choice && view.toolkit != Toolkit::chromium) {
    return std::nullopt;
  }
  return textOrNone(name);
}

std::optional<Value> placeholder(const AtspiView& view) {
  const AtspiFacts& facts = view.facts;
  for (const std::string_view key : {"placeholder-text", "placeholder"}) {
    if (const std::string* text = facts.attribute(key)) {
      return textOrNone(*text);
    }
  }
  if (nameIsPlaceholder(view)) {
    return textOrNone(facts.name);
  }
  if (view.toolkit == Toolkit::qt && facts.has(AtspiState::editable)) {
    return textOrNone(facts.description);
  }
  return std::nullopt;
}

std::optional<Value> description(const AtspiView& view) {
  if (view.toolkit == Toolkit::qt && view.facts.has(AtspiState::editable)) {
    return std::nullopt;
  }
  return textOrNone(view.facts.description);
}

std::optional<Value> identifier(const AtspiView& view) {
  if (!view.facts.identifier.empty()) {
    return Value{view.facts.identifier};
  }
  const std::string* id = view.facts.attribute("id");
  return id == nullptr ? std::nullopt : textOrNone(*id);
}

std::optional<Value> checkedState(const AtspiFacts& facts) {
  if (facts.has(AtspiState::indeterminate)) {
    return Value{2.0};
  }
  return Value{facts.has(AtspiState::checked) || facts.has(AtspiState::pressed) ? 1.0 : 0.0};
}

std::optional<Value> contentOf(const AtspiFacts& facts) {
  if (facts.text) {
    return Value{*facts.text};
  }
  if (!facts.number || !std::isfinite(*facts.number)) {
    return std::nullopt;
  }
  // The shortest text that reads as this number again; long enough for every number in plain
  // digits.
  std::array<char, 512> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(),
                                          *facts.number, std::chars_format::fixed);
  return error == std::errc() ? std::optional(Value{std::string(digits.data(), end)})
                              : std::nullopt;
}

std::optional<Value> value(const AtspiView& view) {
  const AtspiFacts& facts = view.facts;
  switch (valueSource(view)) {
    case ValueSource::none:
      return std::nullopt;
    case ValueSource::label:
      return textOrNone(std::string(shownName(view.facts, view.toolkit)));
    case ValueSource::text:
      return contentOf(facts);
    case ValueSource::choice:
      if (facts.text && !facts.text->empty()) {
        return Value{*facts.text};
      }
      return view.toolkit == Toolkit::chromium
                 ? std::nullopt
                 : textOrNone(std::string(shownName(view.facts, view.toolkit)));
    case ValueSource::onOff:
      return checkedState(facts);
    case ValueSource::quantity:
      return facts.number && std::isfinite(*facts.number) ? std::optional(Value{*facts.number})
                                                          : std::nullopt;
  }
  return std::nullopt;
}

std::optional<Value> subrole(const AtspiView& view) {
  return textOrNone(std::string(axRole(view).subrole));
}

bool isSearchField(const AtspiView& view) {
  const AtspiFacts& facts = view.facts;
  if (!facts.is(AtspiRole::entry) && !facts.is(AtspiRole::text)) {
    return false;
  }
  // GTK 4 has another role for its other entries.
  if (view.toolkit == Toolkit::gtk4 && facts.is(AtspiRole::entry)) {
    return true;
  }
  for (const std::string_view key : {"text-input-type", "xml-roles"}) {
    const std::string* kind = facts.attribute(key);
    if (kind != nullptr && (*kind == "search" || *kind == "searchbox")) {
      return true;
    }
  }
  return false;
}

}  // namespace

FactSet factsFor(std::string_view attribute) {
  for (const AttributeRow& row : kAttributes) {
    if (row.name == attribute) {
      return row.facts;
    }
  }
  return {};
}

bool isWindow(const AtspiFacts& facts) {
  return isWindowRole(facts.role) && facts.parent && facts.parent->path == kRootPath;
}

bool isWindow(const AtspiElement::Parts& object, const AtspiFacts& facts) {
  return object.isTopLevel() || isWindow(facts);
}

bool isWindow(const AtspiView& view) { return view.topLevel || isWindow(view.facts); }

bool isSecure(const AtspiFacts& facts) { return facts.is(AtspiRole::passwordText); }

std::string_view shownName(const AtspiFacts& facts, Toolkit toolkit) {
  if (toolkit != Toolkit::gtk4 || facts.is(AtspiRole::label)) {
    return facts.name;
  }
  return isClassName(facts.name) ? std::string_view() : namedOnce(facts.name);
}

AxRole axRole(const AtspiView& view) {
  const AtspiFacts& facts = view.facts;
  if (isWindow(view)) {
    const bool standard =
        facts.is(AtspiRole::frame) || facts.is(AtspiRole::window) || !isWindowRole(facts.role);
    return {"AXWindow", standard ? "AXStandardWindow" : "AXDialog"};
  }
  if (view.facet == Facet::openedMenu) {
    return {"AXMenu", ""};
  }
  if (isMenuEntryRole(facts.role) && !facts.is(AtspiRole::separator)) {
    if (view.place == MenuPlace::bar && view.toolkit == Toolkit::gtk4) {
      // Nothing opens these menus but the pointer, and what is in them shows only then.
      return {"AXPopUpButton", ""};
    }
    if (view.place == MenuPlace::bar) {
      return {"AXMenuBarItem", ""};
    }
    if (view.place == MenuPlace::menu) {
      return {"AXMenuItem", ""};
    }
  }
  const RoleRow row = refined(roleRow(facts.role), facts.states);
  if (isSearchField(view)) {
    return {row.axRole, "AXSearchField"};
  }
  return {row.axRole, row.axSubrole};
}

std::optional<Rect> plausible(const std::optional<Rect>& extents) {
  if (!extents || extents->width <= 0 || extents->height <= 0 ||
      std::max({std::abs(extents->x), std::abs(extents->y), extents->width, extents->height}) >
          kFarthest) {
    return std::nullopt;
  }
  return extents;
}

bool hasFocus(const AtspiFacts& facts, Toolkit toolkit) {
  // The links that GTK 3 makes of a label's words have no place, and all claim the focus; so does
  // the front tab in Qt 5, wherever the focus is.
  const bool falseClaim = !facts.has(AtspiInterface::component) ||
                          (toolkit == Toolkit::qt && facts.is(AtspiRole::pageTab));
  return facts.has(AtspiState::focused) && !falseClaim;
}

namespace {

/// Whether enough of an object shows in an area to be found there: its centre, of what holds others
/// anything at all, and of what is larger than the area half the area's worth.
bool showsIn(const Rect& area, const Rect& extents, std::string_view axRole) {
  constexpr std::array<std::string_view, 5> kHolders{"AXGroup", "AXList", "AXTable", "AXOutline",
                                                     "AXScrollArea"};
  const bool holds = std::ranges::find(kHolders, axRole) != kHolders.end();
  const double shown = area.intersection(extents).area();
  return area.contains(extents.center()) || (holds && shown > 0) || shown >= area.area() / 2;
}

}  // namespace

bool isHidden(const AtspiView& view) {
  if (view.inMenuBar) {
    return false;
  }
  if (!isShowing(view.facts, view.toolkit)) {
    return true;
  }
  const bool mustHavePlace =
      tellsPlacesOfShown(view.toolkit) || view.facts.is(AtspiRole::staticText);
  if (!view.facts.extents || !mustHavePlace) {
    return false;
  }
  const std::optional<Rect> extents = plausible(view.facts.extents);
  return !extents || (view.clip && mayBeScrolledAway(view) &&
                      !showsIn(*view.clip, *extents, roleRow(view.facts.role).axRole));
}

bool mayBeScrolledAway(const AtspiView& view) {
  return view.toolkit == Toolkit::gtk4 ||
         (view.toolkit == Toolkit::qt && isCellRole(view.facts.role));
}

std::optional<Rect> clipBelow(const std::optional<Rect>& clip, const AtspiFacts& facts,
                              Toolkit toolkit) {
  const std::optional<Rect> extents = plausible(facts.extents);
  if (toolkit != Toolkit::gtk4 || !extents || !facts.is(AtspiRole::scrollPane)) {
    return clip;
  }
  return clip ? clip->intersection(*extents) : extents;
}

std::optional<Value> plainAttribute(const AtspiView& view, std::string_view name) {
  const AtspiFacts& facts = view.facts;
  if (name == "AXRole") {
    return Value{std::string(axRole(view).role)};
  }
  if (name == "AXSubrole") {
    return subrole(view);
  }
  if (name == "AXTitle") {
    return title(view);
  }
  if (name == "AXDescription") {
    return description(view);
  }
  if (name == "AXPlaceholderValue") {
    return placeholder(view);
  }
  if (name == "AXIdentifier") {
    return identifier(view);
  }
  if (name == "AXValue") {
    return value(view);
  }
  if (name == "AXEnabled") {
    return Value{facts.has(AtspiState::sensitive) || facts.has(AtspiState::enabled)};
  }
  if (name == "AXHidden") {
    return Value{isHidden(view)};
  }
  const bool focused = hasFocus(facts, view.toolkit);
  if (name == "AXFocused" && (facts.has(AtspiState::focusable) || focused)) {
    return Value{focused};
  }
  if (name == "AXSelected" && facts.has(AtspiState::selectable) && !isMenuEntryRole(facts.role)) {
    return Value{facts.has(AtspiState::selected)};
  }
  if (name == "AXURL" && !facts.address.empty()) {
    return Value{Url{facts.address}};
  }
  return std::nullopt;
}

std::vector<std::string> axActionNames(const AtspiView& view) {
  std::vector<std::string> result;
  if (view.facet == Facet::openedMenu) {
    return result;
  }
  const bool window = isWindow(view);
  for (const std::string& action : view.facts.actions) {
    const auto name = axAction(action, view.facts.role);
    if (name && !window && std::ranges::find(result, *name) == result.end()) {
      result.emplace_back(*name);
    }
  }
  if (window) {
    result.emplace_back("AXRaise");
  }
  return result;
}

std::optional<int> actionIndex(const AtspiView& view, std::string_view wanted) {
  if (view.facet == Facet::openedMenu) {
    return std::nullopt;
  }
  const std::vector<std::string>& actions = view.facts.actions;
  for (std::size_t i = 0; i < actions.size(); ++i) {
    if (axAction(actions[i], view.facts.role) == wanted) {
      return static_cast<int>(i);
    }
  }
  return std::nullopt;
}

bool hasSettableValue(const AtspiView& view) {
  const AtspiFacts& facts = view.facts;
  switch (valueSource(view)) {
    case ValueSource::none:
      // The content of a password field can be replaced, though never read.
      return isSecure(facts) && facts.has(AtspiInterface::editableText);
    case ValueSource::label:
    case ValueSource::onOff:
      return false;
    case ValueSource::choice:
    case ValueSource::text:
      return isEditableField(facts) && !facts.has(AtspiState::readOnly);
    case ValueSource::quantity:
      return facts.has(AtspiInterface::value) && !facts.has(AtspiState::readOnly) &&
             roleRow(facts.role).axRole != "AXProgressIndicator";
  }
  return false;
}

bool hasTextChildren(Toolkit toolkit) {
  return toolkit == Toolkit::chromium || toolkit == Toolkit::gtk4;
}

bool repeatsParent(const AtspiFacts& child, const AtspiFacts& parent, Toolkit toolkit) {
  return (child.is(AtspiRole::staticText) || child.is(AtspiRole::label)) && !child.name.empty() &&
         child.name == shownName(parent, toolkit);
}

}  // namespace tarqo::lnx
