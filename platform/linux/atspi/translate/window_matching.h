// Which of an application's top-level objects is which X window. The X server has the last word on
// what a window is and where: toolkits register objects that have none.
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
  std::optional<LocatedWindow> window;
};

/// What is known of an application's windows at one moment.
struct ApplicationWindows {
  std::vector<Toplevel> toplevels;    ///< Those with a window first, front to back.
  std::vector<LocatedWindow> popups;  ///< Windows that no manager handles, front to back.
};

/// An object and its window, known by more than their looks.
struct ProvenPair {
  Ref ref;
  WindowNumber window = 0;
};

/// Objects and windows that title, place and size do not tell apart, such as two windows of one
/// program that show the same page at the same place.
struct Twins {
  std::vector<Ref> objects;
  std::vector<WindowNumber> windows;
};

/// Gives every object the window that it resembles most, by title, place and size, and no window to
/// two objects; what is proven comes first. Twins get no window and are returned: which of them is
/// which, looks do not tell.
std::vector<Twins> matchWindows(std::vector<Toplevel>& toplevels,
                                const std::vector<LocatedWindow>& windows,
                                const std::vector<ProvenPair>& proven = {});

/// The same for all that hangs at the top of an application, of which only what has the role of a
/// window or is paired with a managed one is left. Qt keeps tips and the like there, and gives a
/// plain widget that is a window no role of its own.
std::vector<Twins> pairWithWindows(std::vector<Toplevel>& toplevels,
                                   const std::vector<LocatedWindow>& windows,
                                   const std::vector<ProvenPair>& proven = {});

/// How far the coordinates told by an object below `toplevel` are from the screen's.
[[nodiscard]] Point screenOffset(const Toplevel& toplevel);

/// The popup that an object is drawn in, told by its size: GTK 4 makes a window for every popover
/// and tells places in it from where its opener is. Null when there is none.
[[nodiscard]] const LocatedWindow* popupOfSize(const ApplicationWindows& windows,
                                               const Rect& extents);

}  // namespace tarqo::lnx::atspi
