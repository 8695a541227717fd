// Which of an application's top-level objects is which X window. The X server has the last word on
// what a window is and where: toolkits register objects that have no window.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx::atspi {

/// A top-level object, and the window that shows it.
struct Toplevel {
  Ref ref;
  Toolkit toolkit = Toolkit::other;
  std::shared_ptr<const Properties> properties;  ///< Kind, name, parent and extents.
  std::optional<x11::LocatedWindow> window;
};

/// What is known of an application's windows at one moment.
struct ApplicationWindows {
  std::vector<Toplevel> toplevels;         ///< Those with a window first, front to back.
  std::vector<x11::LocatedWindow> popups;  ///< Windows that no manager handles, front to back.
  std::vector<x11::LocatedWindow> bare;    ///< Shown by no object, front to back.
};

/// An object and its window, known by more than their looks.
struct ProvenPair {
  Ref ref;
  WindowNumber window = 0;
};

/// Objects and windows that cannot be told apart by title, place and size, such as two windows of
/// one program that show the same page at the same place.
struct Twins {
  std::vector<Ref> objects;
  std::vector<WindowNumber> windows;
};

/// Gives every object the window that it resembles most, by title, place and size, and no window to
/// two objects. Proven pairs come first. Twins get no window and are returned: their looks do not
/// show which of them is which.
std::vector<Twins> matchWindows(std::vector<Toplevel>& toplevels,
                                const std::vector<x11::LocatedWindow>& windows,
                                const std::vector<ProvenPair>& proven = {});

/// The same for all top-level objects of an application. Keeps only those that have the role of a
/// window or are paired with a managed window: Qt registers tips and the like there, and a plain
/// widget that is a window has no role of its own in Qt.
std::vector<Twins> pairWithWindows(std::vector<Toplevel>& toplevels,
                                   const std::vector<x11::LocatedWindow>& windows,
                                   const std::vector<ProvenPair>& proven = {});

/// The windows that a user switches to and that no object shows: neither one of `toplevels` nor one
/// of the twins. A splash screen counts only when the application has no other window.
[[nodiscard]] std::vector<x11::LocatedWindow> windowsWithoutObject(
    const std::vector<Toplevel>& toplevels, const std::vector<Twins>& twins,
    const std::vector<x11::LocatedWindow>& windows);

/// How far the coordinates reported by an object below `toplevel` are from the screen's.
[[nodiscard]] Point screenOffset(const Toplevel& toplevel);

/// The popup that an object is drawn in, found by its size: GTK 4 makes a window for every popover
/// and reports places in it relative to its opener. Null when no popup has that size.
[[nodiscard]] const x11::LocatedWindow* popupOfSize(const ApplicationWindows& windows,
                                                    const Rect& extents);

}  // namespace tarqo::lnx::atspi
