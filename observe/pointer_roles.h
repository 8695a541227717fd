// The roles that people click on.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tarqo {

/// An enabled element of one of these roles is clickable even when it offers no press.
inline constexpr std::array<std::string_view, 15> pointerRoles{
    "AXButton",   "AXLink",      "AXCheckBox",    "AXRadioButton", "AXPopUpButton",
    "AXMenuItem", "AXTab",       "AXRow",         "AXCell",        "AXStaticText",
    "AXImage",    "AXTextField", "AXSearchField", "AXComboBox",    "AXDisclosureTriangle"};

[[nodiscard]] inline bool isPointerRole(std::string_view role) {
  return std::find(pointerRoles.begin(), pointerRoles.end(), role) != pointerRoles.end();
}

}  // namespace tarqo
