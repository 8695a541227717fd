// The backend's own part of an element: bus name, path, and how the object was reached.
#pragma once

#include <optional>

#include "platform/accessibility.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/window_server.h"

namespace tarqo::lnx::atspi {

/// One AT-SPI "menu" is both the entry that is clicked and the menu that opens from it. The
/// `opener` stands in a menu that is filled only when it opens, for the entry that opens it.
enum class Facet { whole, openedMenu, opener };

/// The parent of an entry of a menu, which decides the entry's role.
enum class MenuPlace { none, bar, menu };

/// `pid` and `timeout` are passed on to everything reached from here.
struct ObjectHandle {
  /// `bareWindow`: a window of the X server that no accessible object shows.
  enum class Kind { application, object, bareWindow };

  Kind kind = Kind::object;
  Pid pid = 0;
  Duration timeout{};  ///< The longest wait for one answer.
  Ref ref{};           ///< Empty for an application: a process may have several registrations.
  Facet facet = Facet::whole;
  MenuPlace place = MenuPlace::none;
  /// Reached through the menu bar, where the contents of closed menus count as shown.
  bool inMenuBar = false;
  /// The part of its window that it can show in, where places are reported inside the window: the
  /// areas of what scrolls around it.
  std::optional<Rect> clip{};
  Ref window{};  ///< The top-level object it was reached through; empty when not known.

  WindowNumber number = 0;  ///< Of a bare window; 0 for all others.

  [[nodiscard]] bool isApplication() const { return kind == Kind::application; }
  [[nodiscard]] bool isBareWindow() const { return kind == Kind::bareWindow; }

  /// Whether it is that top-level object itself.
  [[nodiscard]] bool isTopLevel() const { return !ref.empty() && ref == window; }
};

[[nodiscard]] Element makeElement(ObjectHandle handle);

/// The application element of a process; calls through it wait for at most `timeout` each.
[[nodiscard]] Element makeApplication(Pid pid, Duration timeout);

/// The element of a window that no accessible object shows.
[[nodiscard]] Element makeBareWindow(Pid pid, Duration timeout, WindowNumber number);

/// The handle inside an element; null when the element is another backend's. Lives as long as the
/// element.
[[nodiscard]] const ObjectHandle* handleOf(const Element& element);

}  // namespace tarqo::lnx::atspi
