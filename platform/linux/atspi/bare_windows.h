// Windows that no accessible object shows (of xterm, of Tk, of a toolkit whose bridge is off), as
// elements made of what the X server knows. What they show is for text recognition to tell. Menus
// and other popups over such a window are its children.
//
// Worker thread only. Only the X server is asked, never the application.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/wire/object_handle.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx::atspi {

class BareWindows {
 public:
  /// Both are kept and outlive this.
  BareWindows(x11::WindowLocator& locator, Clock& clock) : locator_(locator), clock_(clock) {}

  /// One slot for each name, in order, empty where a window has no such attribute; an empty list
  /// when the window is gone.
  [[nodiscard]] std::vector<std::optional<Value>> read(const ObjectHandle& window,
                                                       std::span<const std::string_view> names);

  /// "AXRaise" alone.
  [[nodiscard]] std::vector<std::string> actionNames(const ObjectHandle& window);
  [[nodiscard]] Performed perform(const ObjectHandle& window, std::string_view action);

  [[nodiscard]] bool isSettable(std::string_view name);

  /// As `Accessibility::set`. The focus is given by raising the window, and awaited for one
  /// messaging time-out.
  [[nodiscard]] bool set(const ObjectHandle& window, std::string_view name, const Value& value);

 private:
  [[nodiscard]] std::optional<x11::LocatedWindow> find(const ObjectHandle& window);
  [[nodiscard]] Values popupsOf(const ObjectHandle& window);
  [[nodiscard]] bool focus(const ObjectHandle& window);

  x11::WindowLocator& locator_;
  Clock& clock_;
};

}  // namespace tarqo::lnx::atspi
