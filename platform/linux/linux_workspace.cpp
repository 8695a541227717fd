#include "platform/linux/linux_workspace.h"

#include <algorithm>

#include "platform/linux/linux_window_manager.h"

namespace tarqo::lnx {
namespace {

bool isHiddenWithTheDesktopShown(const XWindows& windows, Pid pid) {
  if (!windows.showingDesktop) {
    return false;
  }
  bool hasWindow = false;
  for (const XWindow& window : windows.frontToBack) {
    if (window.pid == pid && window.isOrdinary()) {
      if (window.viewable) {
        return false;
      }
      hasWindow = true;
    }
  }
  return hasWindow;
}

/// Toolkits give the focus to a window inside their own; deeper than this it is not looked for.
constexpr int kMaxFocusDepth = 8;

/// The child of the root window that receives keystrokes where no window manager says which window
/// does.
xcb_window_t focusedOutermost(XServer& server) {
  const auto focus = server.take<xcb_get_input_focus_reply_t>(xcb_get_input_focus(server.raw()));
  if (!focus || focus->focus == XCB_INPUT_FOCUS_NONE) {
    return XCB_NONE;
  }
  if (focus->focus == XCB_INPUT_FOCUS_POINTER_ROOT || focus->focus == server.root()) {
    const auto pointer =
        server.take<xcb_query_pointer_reply_t>(xcb_query_pointer(server.raw(), server.root()));
    return pointer ? pointer->child : static_cast<xcb_window_t>(XCB_NONE);
  }
  xcb_window_t window = focus->focus;
  for (int depth = 0; depth < kMaxFocusDepth; ++depth) {
    const auto tree = server.take<xcb_query_tree_reply_t>(xcb_query_tree(server.raw(), window));
    if (!tree) {
      return XCB_NONE;
    }
    if (tree->parent == server.root()) {
      return window;
    }
    window = tree->parent;
  }
  return XCB_NONE;
}

}  // namespace

std::vector<RunningApplication> LinuxWorkspace::runningApplications() {
  return applications_.running();
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(std::string_view bundleId) {
  std::vector<RunningApplication> applications = applications_.running();
  std::erase_if(applications, [bundleId](const RunningApplication& application) {
    return application.bundleId != bundleId;
  });
  return applications;
}

std::optional<RunningApplication> LinuxWorkspace::runningApplication(Pid pid) {
  return applications_.running(pid);
}

bool LinuxWorkspace::isTerminated(const ApplicationId& application) {
  return !isAlive(application);
}

bool LinuxWorkspace::isHidden(const ApplicationId& application) {
  return isHiddenWithTheDesktopShown(applications_.windows(), application.pid);
}

void LinuxWorkspace::unhide(const ApplicationId& application) {
  XServer* server = applications_.display().server();
  if (server == nullptr || !isHiddenWithTheDesktopShown(readWindows(*server), application.pid)) {
    return;
  }
  endShowingDesktop(*server);
}

void LinuxWorkspace::activate(const ApplicationId& application) {
  XServer* server = applications_.display().server();
  if (server == nullptr || !isAlive(application)) {
    return;
  }
  const XWindows windows = readWindows(*server);
  if (const XWindow* window = principalWindow(windows, application.pid, false)) {
    activateWindow(*server, windows, *window);
  }
}

std::optional<Pid> LinuxWorkspace::frontmostApplication() {
  XServer* server = applications_.display().server();
  if (server == nullptr) {
    return std::nullopt;
  }
  const XWindows windows = readWindows(*server);
  const xcb_window_t front = windows.hasManager ? windows.active : focusedOutermost(*server);
  const auto isFront = [&](const XWindow& window) {
    return front == (windows.hasManager ? window.client : window.outermost);
  };
  const auto found = std::find_if(windows.frontToBack.begin(), windows.frontToBack.end(), isFront);
  if (front == XCB_NONE || found == windows.frontToBack.end() || found->pid < 1) {
    return std::nullopt;
  }
  return found->pid;
}

}  // namespace tarqo::lnx
