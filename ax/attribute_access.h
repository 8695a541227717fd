// Typed reads of accessibility elements that never fail: an error, a missing attribute, a value of
// another type or a degenerate rectangle all give the empty result.
//
// Worker thread only. Each function that takes the service costs one round trip to the target, at
// most the messaging time-out long; the others cost none.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "platform/accessibility.h"

namespace tarqo {

/// The attributes that describe an element, read together. Its value is not among them: that of a
/// password field must never be asked for.
inline constexpr std::array<std::string_view, 13> attributeNames{
    "AXRole",    "AXSubrole",    "AXTitle", "AXDescription", "AXPlaceholderValue",
    "AXEnabled", "AXPosition",   "AXSize",  "AXSelected",    "AXFocused",
    "AXHidden",  "AXIdentifier", "AXURL"};

/// What `attributes` read, by name; what failed is left out.
using Attributes = std::map<std::string_view, Value>;

[[nodiscard]] std::optional<Value> attribute(Accessibility& accessibility, const Element& element,
                                             std::string_view name);

/// The 13 `attributeNames` in one round trip.
[[nodiscard]] Attributes attributes(Accessibility& accessibility, const Element& element);

/// One of `attributes`; null when it is left out.
[[nodiscard]] const Value* find(const Attributes& attributes, std::string_view name);

/// The element a value holds.
[[nodiscard]] std::optional<Element> elementValue(const std::optional<Value>& value);

/// The boolean a value holds.
[[nodiscard]] std::optional<bool> booleanValue(const Value* value);
[[nodiscard]] std::optional<bool> booleanValue(const std::optional<Value>& value);

/// The one conversion of a value to text: texts only, without white space at the ends, at most 2048
/// grapheme clusters and 128 KiB, valid UTF-8; empty for everything else, numbers included.
[[nodiscard]] std::string text(const Value* value);
[[nodiscard]] std::string text(const std::optional<Value>& value);

/// An element's rectangle in screen points; null unless its position and size are finite and its
/// size is positive. One round trip.
[[nodiscard]] std::optional<Rect> frame(Accessibility& accessibility, const Element& element);

/// The same from what `attributes` read.
[[nodiscard]] std::optional<Rect> frameFrom(const Attributes& attributes);

/// {"x", "y", "width", "height"}, standardised, unrounded.
[[nodiscard]] Json rectJSON(const Rect& rect);

[[nodiscard]] std::vector<std::string> actionNames(Accessibility& accessibility,
                                                   const Element& element);

/// The elements a value lists; empty when a single one of its members is no element.
[[nodiscard]] std::vector<Element> elementList(const std::optional<Value>& value);

[[nodiscard]] std::vector<Element> childElements(Accessibility& accessibility,
                                                 const Element& element);

}  // namespace tarqo
