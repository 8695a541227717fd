#include "ax/control_state.h"

#include <algorithm>
#include <array>

namespace tarqo {
namespace {

// The value of these says whether they are on; that of anything else may be long, and is not read.
constexpr std::array<std::string_view, 2> kOnOffRoles{"AXCheckBox", "AXRadioButton"};
constexpr std::string_view kTriangle = "AXDisclosureTriangle";
constexpr double kMixed = 2;

std::optional<Checked> checkedByValue(const std::optional<Value>& value) {
  if (!value) {
    return std::nullopt;
  }
  if (const auto* on = value->as<bool>()) {
    return *on ? Checked::yes : Checked::no;
  }
  const auto* number = value->as<double>();
  if (number == nullptr) {
    return std::nullopt;
  }
  if (*number == kMixed) {
    return Checked::mixed;
  }
  return *number == 0 ? Checked::no : Checked::yes;
}

// Without a mark it is not known whether the item could have one.
std::optional<Checked> checkedByMark(const std::optional<Value>& value) {
  if (!value || value->as<std::string>() == nullptr) {
    return std::nullopt;
  }
  const std::string mark = text(value);
  if (mark.empty()) {
    return Checked::no;
  }
  // A dash stands beside an item that holds of a part of the selection.
  return mark == "-" || mark == "–" || mark == "—" ? Checked::mixed : Checked::yes;
}

std::optional<bool> onOrOff(const std::optional<Value>& value) {
  const auto checked = checkedByValue(value);
  return checked ? std::optional(*checked != Checked::no) : std::nullopt;
}

}  // namespace

ControlState controlState(Accessibility& accessibility, const Element& element,
                          const Description& description) {
  if (description.secure || description.role.empty()) {
    return {};
  }
  const bool isOnOff = std::ranges::find(kOnOffRoles, description.role) != kOnOffRoles.end();
  const bool isTriangle = description.role == kTriangle;
  const std::array<std::string_view, 3> names{
      isOnOff || isTriangle ? "AXValue" : "AXMenuItemMarkChar", "AXExpanded", "AXDisclosing"};
  const auto values = accessibility.attributes(element, names);
  if (values.size() != names.size()) {
    return {};
  }
  ControlState state;
  if (isOnOff) {
    state.checked = checkedByValue(values[0]);
  } else if (!isTriangle) {
    state.checked = checkedByMark(values[0]);
  }
  state.expanded = booleanValue(values[1]);
  if (!state.expanded) {
    state.expanded = isTriangle ? onOrOff(values[0]) : booleanValue(values[2]);
  }
  return state;
}

}  // namespace tarqo
