#include "platform/linux/atspi/bare_windows.h"

#include <algorithm>

namespace tarqo::lnx::atspi {
namespace {

constexpr auto kInputFocusPoll = std::chrono::milliseconds(10);

std::optional<Value> attribute(const ObjectHandle& handle, const x11::LocatedWindow& window,
                               std::string_view name) {
  if (name == "AXRole") {
    return Value{std::string(window.overrideRedirect ? "AXMenu" : "AXWindow")};
  }
  if (name == "AXTitle") {
    // Toolkits give their popups names of their own making.
    return window.title.empty() || window.overrideRedirect ? std::nullopt
                                                           : std::optional(Value{window.title});
  }
  if (name == "AXPosition") {
    return Value{Point{window.bounds.x, window.bounds.y}};
  }
  if (name == "AXSize") {
    return Value{Size{window.bounds.width, window.bounds.height}};
  }
  if (name == "AXMinimized") {
    return Value{window.minimized};
  }
  if (name == "AXMain" || name == "AXFocused") {
    return Value{window.active};
  }
  if (name == "AXEnabled") {
    return Value{true};
  }
  if (name == "AXParent") {
    return Value{makeApplication(handle.pid, handle.timeout)};
  }
  if (name == "AXWindow" || name == "AXTopLevelUIElement") {
    return Value{makeElement(handle)};
  }
  return std::nullopt;
}

}  // namespace

std::optional<x11::LocatedWindow> BareWindows::find(const ObjectHandle& window) {
  const std::vector<x11::LocatedWindow> all = locator_.windowsOf(window.pid);
  const auto found = std::ranges::find(all, window.number, &x11::LocatedWindow::number);
  return found == all.end() ? std::nullopt : std::optional(*found);
}

std::vector<std::optional<Value>> BareWindows::read(const ObjectHandle& window,
                                                    std::span<const std::string_view> names) {
  std::vector<std::optional<Value>> values;
  if (const std::optional<x11::LocatedWindow> located = find(window)) {
    for (const std::string_view name : names) {
      values.push_back(name == "AXChildren" ? Value{popupsOf(window)}
                                            : attribute(window, *located, name));
    }
  }
  return values;
}

/// They are children of their window and yet have the application for a parent: what lies under the
/// pointer in one of them does not stand for something in the window.
Values BareWindows::popupsOf(const ObjectHandle& window) {
  Values popups;
  for (const x11::LocatedWindow& popup :
       x11::popupsOver(locator_.windowsOf(window.pid), window.number)) {
    popups.push_back(Value{makeBareWindow(window.pid, window.timeout, popup.number)});
  }
  return popups;
}

std::vector<std::string> BareWindows::actionNames(const ObjectHandle& window) {
  return find(window) ? std::vector<std::string>{"AXRaise"} : std::vector<std::string>();
}

Performed BareWindows::perform(const ObjectHandle& window, std::string_view action) {
  return action == "AXRaise" && locator_.raise(window.number) ? Performed::taken
                                                              : Performed::refused;
}

bool BareWindows::isSettable(std::string_view name) {
  return name == "AXMinimized" || name == "AXMain" || name == "AXFocused";
}

bool BareWindows::set(const ObjectHandle& window, std::string_view name, const Value& value) {
  const bool* truth = value.as<bool>();
  if (truth == nullptr) {
    return false;
  }
  if (name == "AXMinimized") {
    return locator_.setMinimized(window.number, *truth);
  }
  if (name == "AXMain") {
    return *truth && locator_.raise(window.number);
  }
  return name == "AXFocused" && *truth && focus(window);
}

bool BareWindows::focus(const ObjectHandle& window) {
  const Instant end = clock_.now() + window.timeout;
  bool raised = false;
  for (;;) {
    const std::optional<x11::LocatedWindow> located = find(window);
    if (!located || located->active) {
      return located.has_value();
    }
    if (clock_.now() >= end || (!raised && !locator_.raise(window.number))) {
      return false;
    }
    raised = true;
    clock_.sleep(kInputFocusPoll);
  }
}

}  // namespace tarqo::lnx::atspi
