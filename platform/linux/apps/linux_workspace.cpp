#include "platform/linux/apps/linux_workspace.h"

#include "platform/linux/input/event_receivers.h"
#include "platform/linux/x11/window_manager.h"

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
  return server != nullptr ? focusedProcess(*server) : std::nullopt;
}

}  // namespace tarqo::lnx
