#include "platform/linux/linux_window_server.h"

#include <utility>

#include "platform/linux/x11/screens.h"

namespace tarqo::lnx {

std::vector<WindowInfo> LinuxWindowServer::windows(WindowList which) {
  const x11::Windows windows = applications_.windows();
  std::vector<WindowInfo> list;
  for (const x11::Window& window : windows.frontToBack) {
    const bool isDesktop = window.type == x11::WindowType::desktop;
    if (!window.viewable || !window.frame.intersects(windows.screen) ||
        (isDesktop && which == WindowList::onScreenAboveDesktop)) {
      continue;
    }
    WindowInfo info;
    info.number = window.client;
    info.bounds = window.frame;
    info.layer = window.layer();
    info.alpha = window.opacity;
    if (window.pid > 0) {
      info.ownerPid = window.pid;
      if (std::string name = applications_.nameOf(window.pid, windows); !name.empty()) {
        info.ownerName = std::move(name);
      }
    }
    if (!window.title.empty()) {
      info.title = window.title;
    }
    list.push_back(std::move(info));
  }
  return list;
}

std::vector<Screen> LinuxWindowServer::screens() {
  x11::Server* server = applications_.display().server();
  return server != nullptr ? x11::readScreens(*server) : std::vector<Screen>();
}

}  // namespace tarqo::lnx
