// From what an object told of itself to the protocol's attributes and actions. Pure: what an
// attribute takes is named first, asked elsewhere, and translated here.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/properties.h"

namespace tarqo::lnx {

/// An object as it is to be shown.
struct AtspiView {
  const AtspiFacts& facts;
  Toolkit toolkit = Toolkit::other;
  Facet facet = Facet::whole;
  MenuPlace place = MenuPlace::none;
  bool inMenuBar = false;
  /// What shows of whatever it lies in, in the same coordinates as its extents; none when not
  /// known.
  std::optional<Rect> clip{};
  bool topLevel = false;  ///< It was paired with a window, so that it is one whatever its role.
};

/// What must be known to answer an attribute; nothing for attributes that are not made of facts.
[[nodiscard]] FactSet factsFor(std::string_view attribute);

/// Whether the object is a window of its application by what it tells of itself.
[[nodiscard]] bool isWindow(const AtspiFacts& facts);

/// The same, or because the X server shows it as one: Qt calls a plain widget that is a window a
/// "filler", as it calls those inside of windows.
[[nodiscard]] bool isWindow(const AtspiElement::Parts& object, const AtspiFacts& facts);
[[nodiscard]] bool isWindow(const AtspiView& view);

/// "AXRole" and "AXSubrole"; the subrole may be empty.
struct AxRole {
  std::string_view role;
  std::string_view subrole;
};
[[nodiscard]] AxRole axRole(const AtspiView& view);

/// Whether its content must not be read.
[[nodiscard]] bool isSecure(const AtspiFacts& facts);

/// Whether the toolkit goes on saying that such an object is shown when it is scrolled out of its
/// window, so that only its place tells.
[[nodiscard]] bool mayBeScrolledAway(const AtspiView& view);

/// Whether it is not on the screen, as "AXHidden" says it.
[[nodiscard]] bool isHidden(const AtspiView& view);

/// Whether it is the object that has the focus. Some toolkits say so of objects that cannot have
/// it.
[[nodiscard]] bool hasFocus(const AtspiFacts& facts, Toolkit toolkit);

/// The extents as told, when they can be a place on a screen: toolkits fill those of what is not
/// laid out with INT_MIN or with whatever was in memory.
[[nodiscard]] std::optional<Rect> plausible(const std::optional<Rect>& extents);

/// What shows of an object's children, given what shows of the object: less inside what scrolls.
/// Unchanged in toolkits that tell places on the screen, where it would not outlast a move.
[[nodiscard]] std::optional<Rect> clipBelow(const std::optional<Rect>& clip,
                                            const AtspiFacts& facts, Toolkit toolkit);

/// An attribute that is a text, a truth or a number; none when the object has no such attribute.
/// Places, elements and lists are made elsewhere.
[[nodiscard]] std::optional<Value> plainAttribute(const AtspiView& view, std::string_view name);

/// The names of the actions, each once, in the object's order.
[[nodiscard]] std::vector<std::string> axActionNames(const AtspiView& view);

/// The index of the object's own action behind an action's name.
[[nodiscard]] std::optional<int> actionIndex(const AtspiView& view, std::string_view axAction);

/// Whether setting "AXValue" can work.
[[nodiscard]] bool hasSettableValue(const AtspiView& view);

/// Whether the toolkit puts a control's text into a child of its own as well.
[[nodiscard]] bool hasTextChildren(Toolkit toolkit);

/// Whether a child is such a text that only repeats its parent's name.
[[nodiscard]] bool repeatsParent(const AtspiFacts& child, const AtspiFacts& parent,
                                 Toolkit toolkit);

/// The object's name where it is one, as the user sees it.
[[nodiscard]] std::string_view shownName(const AtspiFacts& facts, Toolkit toolkit);

}  // namespace tarqo::lnx
