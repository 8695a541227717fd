#include "ax/description.h"

#include <algorithm>
#include <array>

#include "platform/unicode.h"

namespace tarqo {
namespace {

constexpr std::string_view kSecureRole = "AXSecureTextField";

// The value of these is what the user entered or set, so their description names them better.
constexpr std::array<std::string_view, 7> kValueBearingRoles{
    "AXTextField", "AXTextArea",          "AXSearchField", "AXComboBox",
    "AXSlider",    "AXProgressIndicator", "AXIncrementor"};

constexpr std::array<std::string_view, 4> kTextEntryRoles{"AXTextField", "AXTextArea",
                                                          "AXSearchField", "AXComboBox"};

struct RoleNameRow {
  std::string_view role;
  std::string_view name;
};
constexpr std::array kRoleNames{
    RoleNameRow{"AXStaticText", "text"},       RoleNameRow{"AXTextField", "textbox"},
    RoleNameRow{"AXTextArea", "textbox"},      RoleNameRow{"AXSecureTextField", "textbox"},
    RoleNameRow{"AXSearchField", "searchbox"},
};

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& roles, std::string_view role) {
  return std::find(roles.begin(), roles.end(), role) != roles.end();
}

const std::string& firstOf(const std::string& preferred, const std::string& other) {
  return preferred.empty() ? other : preferred;
}

bool isSecure(std::string_view role, std::string_view subrole) {
  return role == kSecureRole || subrole == kSecureRole;
}

// The same of an element whose role was not among what could be read together.
bool isSecureWhenAskedAgain(Accessibility& accessibility, const Element& element) {
  const std::string role = text(attribute(accessibility, element, "AXRole"));
  return !role.empty() && isSecure(role, text(attribute(accessibility, element, "AXSubrole")));
}

}  // namespace

Description describe(Accessibility& accessibility, const Element& element) {
  Description d;
  d.attrs = attributes(accessibility, element);
  d.role = text(find(d.attrs, "AXRole"));
  d.secure = isSecure(d.role, text(find(d.attrs, "AXSubrole")));
  d.detail = text(find(d.attrs, "AXDescription"));
  if (d.role.empty()) {
    d.secure = d.secure || isSecureWhenAskedAgain(accessibility, element);
  } else if (!d.secure) {
    d.value = text(attribute(accessibility, element, "AXValue"));
  }
  const std::string fallback = contains(kValueBearingRoles, d.role) ? firstOf(d.detail, d.value)
                                                                    : firstOf(d.value, d.detail);
  const std::string title = text(find(d.attrs, "AXTitle"));
  d.name = firstOf(firstOf(title, fallback), text(find(d.attrs, "AXPlaceholderValue")));
  d.identifier = text(find(d.attrs, "AXIdentifier"));
  d.enabled = booleanValue(find(d.attrs, "AXEnabled")).value_or(true);
  return d;
}

std::string roleName(std::string_view role) {
  for (const RoleNameRow& row : kRoleNames) {
    if (row.role == role) {
      return std::string(row.name);
    }
  }
  return unicode::lowered(role.starts_with("AX") ? role.substr(2) : role);
}

bool isTextEntryRole(std::string_view role) { return contains(kTextEntryRoles, role); }

bool editableText(Accessibility& accessibility, const Element& element,
                  const Description& description) {
  return !description.secure && description.enabled && isTextEntryRole(description.role) &&
         (accessibility.isSettable(element, "AXValue") || accessibility.takesTextByKeys(element));
}

}  // namespace tarqo
