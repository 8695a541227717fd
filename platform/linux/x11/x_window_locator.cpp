#include "platform/linux/x11/x_window_locator.h"

#include <algorithm>

#include "platform/linux/x11/ping.h"
#include "platform/linux/x11/window_manager.h"

namespace tarqo::lnx {
namespace {

LocatedWindow located(const XWindows& windows, const XWindow& window) {
  return {
      .number = window.client,
      .pid = window.pid,
      .title = window.title,
      .client = window.clientArea,
      .bounds = window.frame,
      .shadow = window.shadow,
      .overrideRedirect = window.overrideRedirect,
      .minimized = window.minimised,
      .active = window.client == windows.focused,
  };
}

const XWindow* windowOf(const XWindows& windows, WindowNumber number) {
  const auto found =
      std::find_if(windows.frontToBack.begin(), windows.frontToBack.end(),
                   [number](const XWindow& window) { return window.client == number; });
  return found != windows.frontToBack.end() ? &*found : nullptr;
}

}  // namespace

std::vector<LocatedWindow> XWindowLocator::windowsOf(Pid pid) {
  const XWindows windows = applications_.windows();
  std::vector<LocatedWindow> list;
  for (const XWindow& window : windows.frontToBack) {
    if (window.pid == pid) {
      list.push_back(located(windows, window));
    }
  }
  std::stable_partition(list.begin(), list.end(),
                        [](const LocatedWindow& window) { return !window.minimized; });
  return list;
}

std::optional<LocatedWindow> XWindowLocator::windowAt(Point point) {
  XServer* server = applications_.display().server();
  if (server == nullptr) {
    return std::nullopt;
  }
  const XWindows windows = readWindows(*server);
  const XWindow* window = lnx::windowAt(*server, windows, point);
  if (window == nullptr || window->type == WindowType::desktop) {
    return std::nullopt;
  }
  return located(windows, *window);
}

bool XWindowLocator::raise(WindowNumber number) {
  XServer* server = applications_.display().server();
  if (server == nullptr) {
    return false;
  }
  const XWindows windows = readWindows(*server);
  const XWindow* window = windowOf(windows, number);
  if (window == nullptr) {
    return false;
  }
  activateWindow(*server, windows, *window);
  return true;
}

bool XWindowLocator::awaitEventsHandled(WindowNumber window, Duration patience) {
  XServer* server = applications_.display().server();
  return server != nullptr && awaitPong(*server, window, patience);
}

bool XWindowLocator::setMinimized(WindowNumber number, bool minimized) {
  if (!minimized) {
    return raise(number);
  }
  XServer* server = applications_.display().server();
  if (server == nullptr) {
    return false;
  }
  const XWindows windows = readWindows(*server);
  const XWindow* window = windowOf(windows, number);
  if (window == nullptr || !windows.hasManager) {
    return false;
  }
  minimiseWindow(*server, *window);
  return true;
}

}  // namespace tarqo::lnx
