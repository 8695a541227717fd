#include "platform/linux/x11/window_locator.h"

#include <algorithm>
#include <iterator>

#include "platform/linux/x11/ping.h"
#include "platform/linux/x11/window_manager.h"
#include "platform/linux/x11/window_reader.h"

namespace tarqo::lnx::x11 {
namespace {

LocatedWindow located(const Windows& windows, const Window& window) {
  return {
      .number = window.client,
      .pid = window.pid,
      .title = window.title,
      .client = window.clientArea,
      .bounds = window.frame,
      .shadow = window.shadow,
      .overrideRedirect = window.overrideRedirect,
      .ordinary = window.isOrdinary(),
      .splash = window.isSplash(),
      .transientFor = window.transientFor,
      .minimized = window.minimised,
      .active = window.client == windows.focused,
  };
}

}  // namespace

std::vector<LocatedWindow> popupsOver(const std::vector<LocatedWindow>& windows,
                                      WindowNumber window) {
  const auto front = std::find_if(windows.begin(), windows.end(),
                                  [](const LocatedWindow& each) { return each.ordinary; });
  std::vector<LocatedWindow> popups;
  if (front != windows.end() && front->number == window) {
    std::copy_if(windows.begin(), front, std::back_inserter(popups),
                 [](const LocatedWindow& each) { return each.overrideRedirect; });
  }
  return popups;
}

std::vector<LocatedWindow> DisplayWindowLocator::windowsOf(Pid pid) {
  const Windows windows = readWindows(display_);
  std::vector<LocatedWindow> list;
  for (const Window& window : windows.frontToBack) {
    if (window.pid == pid) {
      list.push_back(located(windows, window));
    }
  }
  std::stable_partition(list.begin(), list.end(),
                        [](const LocatedWindow& window) { return !window.minimized; });
  for (std::size_t i = 0; i < list.size(); ++i) {
    list[i].rank = i;
  }
  return list;
}

std::optional<LocatedWindow> DisplayWindowLocator::windowAt(Point point) {
  Server* server = display_.server();
  if (server == nullptr) {
    return std::nullopt;
  }
  const Windows windows = readWindows(*server);
  const Window* window = x11::windowAt(*server, windows, point);
  if (window == nullptr || window->type == WindowType::desktop) {
    return std::nullopt;
  }
  return located(windows, *window);
}

bool DisplayWindowLocator::raise(WindowNumber number) {
  Server* server = display_.server();
  if (server == nullptr) {
    return false;
  }
  const Windows windows = readWindows(*server);
  const Window* window = findWindow(windows, number);
  if (window == nullptr) {
    return false;
  }
  activateWindow(*server, windows, *window);
  return true;
}

bool DisplayWindowLocator::awaitEventsHandled(WindowNumber window, Duration patience) {
  Server* server = display_.server();
  return server != nullptr && awaitPong(*server, window, patience);
}

bool DisplayWindowLocator::setMinimized(WindowNumber number, bool minimized) {
  if (!minimized) {
    return raise(number);
  }
  Server* server = display_.server();
  if (server == nullptr) {
    return false;
  }
  const Windows windows = readWindows(*server);
  const Window* window = findWindow(windows, number);
  if (window == nullptr || !windows.hasManager) {
    return false;
  }
  minimiseWindow(*server, *window);
  return true;
}

}  // namespace tarqo::lnx::x11
