// How an object is to be shown: what it is, its role and its name.
#pragma once

#include <optional>
#include <string_view>

#include "platform/geometry.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/translate/tables.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

/// An object as it is to be shown.
struct View {
  const Properties& properties;
  Toolkit toolkit = Toolkit::other;
  Facet facet = Facet::whole;
  MenuPlace place = MenuPlace::none;
  bool inMenuBar = false;
  /// The visible part of its container, in the same coordinates as its extents; empty when not
  /// known.
  std::optional<Rect> clip{};
  bool topLevel = false;  ///< It was paired with a window, so it is one, with any role.
};

/// Whether the object is a window of its application, by what it reports.
[[nodiscard]] bool isWindow(const Properties& properties);

/// The same, or because the X server shows it as one: Qt calls a plain widget that is a window a
/// "filler", like those inside of windows.
[[nodiscard]] bool isWindow(const ObjectHandle& object, const Properties& properties);
[[nodiscard]] bool isWindow(const View& view);

/// "AXRole" and "AXSubrole"; the subrole may be empty.
struct AxRole {
  std::string_view role;
  std::string_view subrole;
};
[[nodiscard]] AxRole axRole(const View& view);

/// Whether its content must not be read: a password.
[[nodiscard]] bool isSecure(const Properties& properties);

/// Where the value of the object comes from, given its role, its states and what it is.
[[nodiscard]] ValueSource valueSource(const View& view);

/// Whether the toolkit repeats a control's text in a child.
[[nodiscard]] bool hasTextChildren(Toolkit toolkit);

/// Whether a child is such a text that only repeats its parent's name.
[[nodiscard]] bool repeatsParent(const Properties& child, const Properties& parent,
                                 Toolkit toolkit);

/// The object's name as the user sees it; empty when the toolkit made the name up.
[[nodiscard]] std::string_view shownName(const Properties& properties, Toolkit toolkit);

}  // namespace tarqo::lnx::atspi
