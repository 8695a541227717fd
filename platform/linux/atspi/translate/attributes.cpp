#include "platform/linux/atspi/translate/attributes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

struct AttributeRow {
  std::string_view name;
  PropertySet properties;
};

const AttributeRow kAttributes[] = {
    {"AXRole", Property::basics},
    {"AXSubrole", Property::basics | Property::attributes | Property::children},
    {"AXTitle", Property::name | Property::attributes},
    {"AXDescription", Property::description},
    {"AXPlaceholderValue", Property::name | Property::description | Property::attributes},
    {"AXEnabled", Property::basics},
    {"AXSelected", Property::basics},
    {"AXFocused", Property::basics},
    {"AXHidden", Property::basics | Property::extents},
    {"AXIdentifier", Property::identifier | Property::attributes},
    {"AXURL", Property::address},
    {"AXValue", Property::value},
    {"AXPosition", Property::basics | Property::extents},
    {"AXSize", Property::basics | Property::extents},
    {"AXChildren", Property::basics | Property::name | Property::children | Property::extents},
    {"AXParent", Property::basics | Property::parent},
    {"AXMinimized", Property::basics},
    {"AXMain", Property::basics},
    {"AXDocument", Property::basics},
    {"AXExpanded", Property::basics},
    {"AXMenuItemMarkChar", Property::basics},
};

std::optional<Value> textOrNone(std::string text) {
  if (text.empty()) {
    return std::nullopt;
  }
  return Value{std::move(text)};
}

bool nameIsPlaceholder(const View& view) {
  const std::string* from = view.properties.attribute("name-from");
  return from != nullptr && *from == "placeholder";
}

bool isEditableField(const Properties& properties) {
  return (properties.has(Interface::editableText) && properties.has(State::editable)) ||
         (properties.is(Role::spinButton) && properties.has(Interface::value));
}

/// Whether the name of a list of choices is the choice: in GTK 3 and Qt. Elsewhere it is its label.
bool isNamedByChoice(const View& view) {
  return valueSource(view) == ValueSource::choice && view.toolkit != Toolkit::chromium &&
         view.toolkit != Toolkit::gecko;
}

/// The text that a role without a value has all the same; none where it repeats the name.
std::optional<Value> ownText(const View& view) {
  const Properties& properties = view.properties;
  const bool isText = properties.text && *properties.text != properties.name &&
                      properties.text->find_first_not_of(" \n\t") != std::string::npos;
  const bool isPlain = view.facet == Facet::whole && !isWindow(view) && !isSecure(properties);
  return isText && isPlain ? std::optional(Value{*properties.text}) : std::nullopt;
}

std::optional<Value> title(const View& view) {
  if (valueSource(view) == ValueSource::label || nameIsPlaceholder(view)) {
    return std::nullopt;
  }
  const std::string name(shownName(view.properties, view.toolkit));
  // Without a name a node is called by its text, and that of a terminal changes all the time.
  if (name.empty() && view.properties.is(Role::terminal)) {
    return Value{std::string("Terminal")};
  }
  return textOrNone(name.empty() || isNamedByChoice(view) ? view.properties.label : name);
}

std::optional<Value> placeholder(const View& view) {
  const Properties& properties = view.properties;
  for (const std::string_view key : {"placeholder-text", "placeholder"}) {
    if (const std::string* text = properties.attribute(key)) {
      return textOrNone(*text);
    }
  }
  if (nameIsPlaceholder(view)) {
    return textOrNone(properties.name);
  }
  if (view.toolkit == Toolkit::qt && properties.has(State::editable)) {
    return textOrNone(properties.description);
  }
  return std::nullopt;
}

std::optional<Value> description(const View& view) {
  if (view.toolkit == Toolkit::qt && view.properties.has(State::editable)) {
    return std::nullopt;
  }
  return textOrNone(view.properties.description);
}

std::optional<Value> identifier(const View& view) {
  if (!view.properties.identifier.empty()) {
    return Value{view.properties.identifier};
  }
  const std::string* id = view.properties.attribute("id");
  return id == nullptr ? std::nullopt : textOrNone(*id);
}

std::optional<Value> checkedState(const Properties& properties) {
  if (properties.has(State::indeterminate)) {
    return Value{2.0};
  }
  return Value{properties.has(State::checked) || properties.has(State::pressed) ? 1.0 : 0.0};
}

// Beside menu items, and beside the rows and cells that can be ticked. Empty: nothing stands there
// now.
std::optional<Value> mark(const Properties& properties) {
  const bool isTicked = properties.has(State::checked);
  if (!isTicked && !properties.has(State::checkable) && !properties.is(Role::checkMenuItem) &&
      !properties.is(Role::radioMenuItem)) {
    return std::nullopt;
  }
  if (properties.has(State::indeterminate)) {
    return Value{std::string("–")};
  }
  return Value{std::string(isTicked ? "✓" : "")};
}

std::optional<Value> contentOf(const Properties& properties) {
  if (properties.text) {
    return Value{*properties.text};
  }
  if (!properties.number || !std::isfinite(*properties.number)) {
    return std::nullopt;
  }
  // The shortest text that reads as this number again; long enough for every number in plain
  // digits.
  std::array<char, 512> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(),
                                          *properties.number, std::chars_format::fixed);
  return error == std::errc() ? std::optional(Value{std::string(digits.data(), end)})
                              : std::nullopt;
}

std::optional<Value> value(const View& view) {
  const Properties& properties = view.properties;
  switch (valueSource(view)) {
    case ValueSource::none:
      return ownText(view);
    case ValueSource::label: {
      const std::string_view name = shownName(view.properties, view.toolkit);
      return name.empty() ? ownText(view) : textOrNone(std::string(name));
    }
    case ValueSource::text:
      return contentOf(properties);
    case ValueSource::choice:
      if (properties.text && !properties.text->empty()) {
        return Value{*properties.text};
      }
      return isNamedByChoice(view)
                 ? textOrNone(std::string(shownName(view.properties, view.toolkit)))
                 : std::nullopt;
    case ValueSource::onOff:
      return checkedState(properties);
    case ValueSource::quantity:
      return properties.number && std::isfinite(*properties.number)
                 ? std::optional(Value{*properties.number})
                 : std::nullopt;
  }
  return std::nullopt;
}

std::optional<Value> subrole(const View& view) {
  return textOrNone(std::string(axRole(view).subrole));
}

}  // namespace

PropertySet propertiesFor(std::string_view attribute) {
  for (const AttributeRow& row : kAttributes) {
    if (row.name == attribute) {
      return row.properties;
    }
  }
  return {};
}

std::optional<Value> plainAttribute(const View& view, std::string_view name) {
  const Properties& properties = view.properties;
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
    return Value{properties.has(State::sensitive) || properties.has(State::enabled)};
  }
  if (name == "AXHidden") {
    return Value{isHidden(view)};
  }
  const bool focused = hasFocus(properties, view.toolkit);
  if (name == "AXFocused" && (properties.has(State::focusable) || focused)) {
    return Value{focused};
  }
  if (name == "AXSelected" && properties.has(State::selectable) &&
      !isMenuEntryRole(properties.role)) {
    return Value{properties.has(State::selected)};
  }
  if (name == "AXExpanded" && properties.has(State::expandable)) {
    return Value{properties.has(State::expanded)};
  }
  if (name == "AXMenuItemMarkChar" && valueSource(view) != ValueSource::onOff) {
    return mark(properties);
  }
  if (name == "AXURL" && !properties.address.empty()) {
    return Value{Url{properties.address}};
  }
  return std::nullopt;
}

bool hasSettableValue(const View& view) {
  const Properties& properties = view.properties;
  switch (valueSource(view)) {
    case ValueSource::none:
      // The content of a password field can be replaced, though never read.
      return isSecure(properties) && properties.has(Interface::editableText);
    case ValueSource::label:
    case ValueSource::onOff:
      return false;
    case ValueSource::choice:
    case ValueSource::text:
      return isEditableField(properties) && !properties.has(State::readOnly);
    case ValueSource::quantity:
      return properties.has(Interface::value) && !properties.has(State::readOnly) &&
             roleRow(properties.role).axRole != "AXProgressIndicator";
  }
  return false;
}

std::vector<std::string> axActionNames(const View& view) {
  std::vector<std::string> result;
  if (view.facet == Facet::openedMenu) {
    return result;
  }
  const bool window = isWindow(view);
  for (const std::string& action : view.properties.actions) {
    const auto name = axAction(action, view.properties.role);
    if (name && !window && std::ranges::find(result, *name) == result.end()) {
      result.emplace_back(*name);
    }
  }
  if (window) {
    result.emplace_back("AXRaise");
  }
  return result;
}

std::optional<int> actionIndex(const View& view, std::string_view wanted) {
  if (view.facet == Facet::openedMenu) {
    return std::nullopt;
  }
  const std::vector<std::string>& actions = view.properties.actions;
  for (std::size_t i = 0; i < actions.size(); ++i) {
    if (axAction(actions[i], view.properties.role) == wanted) {
      return static_cast<int>(i);
    }
  }
  return std::nullopt;
}

}  // namespace tarqo::lnx::atspi
