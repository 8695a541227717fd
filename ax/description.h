// What an element is called: its role, its one name, its value and its flags.
//
// Worker thread only.
#pragma once

#include <string>
#include <string_view>

#include "ax/attribute_access.h"

namespace tarqo {

/// All texts have passed through `text`: trimmed, bounded, empty when missing.
struct Description {
  std::string role;    ///< The accessibility role ("AXButton").
  std::string name;    ///< Title, else value or description, else placeholder.
  std::string value;   ///< Always empty for a secure field.
  std::string detail;  ///< The accessibility description.
  std::string identifier;
  bool secure = false;  ///< A password field.
  bool enabled = true;  ///< True also when the element does not say.
  Attributes attrs;     ///< All that was read, for the frame and the flags.
};

/// Reads and describes an element; two round trips, one for a secure field, whose value is never
/// asked for. Nor is that of an element that does not report its role, which may be one; it is
/// asked for the role by itself instead, three round trips at most. A dead element gives an empty
/// description.
[[nodiscard]] Description describe(Accessibility& accessibility, const Element& element);

/// The short role of responses: "AXStaticText" is "text", "AXButton" is "button".
[[nodiscard]] std::string roleName(std::string_view role);

/// Whether the role is one into which text is entered.
[[nodiscard]] bool isTextEntryRole(std::string_view role);

/// Whether text can be entered, by setting the element's value or by keys; one or two round trips
/// when the role allows.
[[nodiscard]] bool editableText(Accessibility& accessibility, const Element& element,
                                const Description& description);

}  // namespace tarqo
