#include "platform/linux/apps/linux_workspace.h"

#include "platform/linux/x11/focus.h"
#include "platform/linux/x11/window_manager.h"

namespace tarqo::lnx::apps {
namespace {

bool isHiddenWithTheDesktopShown(const x11::Windows& windows, Pid pid) {
  if (!windows.showingDesktop) {
    return false;
  }
  bool hasWindow = false;
  for (const x11::Window& window : windows.frontToBack) {
    if (window.pid == pid && window.isOrdinary()) {
      if (window.viewable) {
        return false;
      }
      hasWindow = true;
    }
  }
  return hasWindow;
}

}  // namespace

std::vector<RunningApplication> LinuxWorkspace::runningApplications() {
  return applications_.running();
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications(std::string_view bundleId) {
  return applications_.runningOf(bundleId);
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
  x11::Server* server = applications_.display().server();
  if (server == nullptr ||
      !isHiddenWithTheDesktopShown(x11::readWindows(*server), application.pid)) {
    return;
  }
  x11::endShowingDesktop(*server);
}

void LinuxWorkspace::activate(const ApplicationId& application) {
  x11::Server* server = applications_.display().server();
  if (server == nullptr || !isAlive(application)) {
    return;
  }
  const x11::Windows windows = x11::readWindows(*server);
  if (const x11::Window* window = x11::principalWindow(windows, application.pid, false)) {
    x11::activateWindow(*server, windows, *window);
  }
}

std::optional<Pid> LinuxWorkspace::frontmostApplication() {
  x11::Server* server = applications_.display().server();
  return server != nullptr ? x11::focusedProcess(*server) : std::nullopt;
}

}  // namespace tarqo::lnx::apps
