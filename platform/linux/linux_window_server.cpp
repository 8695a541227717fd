#include "platform/linux/linux_window_server.h"

#include <string_view>
#include <utility>

#include "platform/linux/x11/screens.h"

namespace tarqo::lnx {
namespace {

std::string_view kindOf(const x11::Window& window) {
  switch (window.type) {
    case x11::WindowType::dialog:
      return "the dialog";
    case x11::WindowType::notification:
      return "the notification";
    case x11::WindowType::dock:
      return "the panel";
    default:
      return window.overrideRedirect ? "the popup" : "the window";
  }
}

std::string captionOf(const x11::Window& window, const std::string& ownerName) {
  std::string caption(kindOf(window));
  if (!window.title.empty()) {
    caption += " \"" + window.title + "\"";
  }
  if (!ownerName.empty()) {
    caption += " of " + ownerName;
  }
  return caption;
}

}  // namespace

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
    if (!window.title.empty()) {
      info.title = window.title;
    }
    std::string name;
    if (window.pid > 0) {
      info.ownerPid = window.pid;
      name = applications_.nameOf(window.pid, windows);
    }
    info.caption = captionOf(window, name);
    if (!name.empty()) {
      info.ownerName = std::move(name);
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
