// The workspace on X11: applications are processes with windows, activation is the window
// manager's.
#pragma once

#include "platform/linux/apps/applications.h"
#include "platform/workspace.h"

namespace tarqo::lnx::apps {

/// X11 knows no hidden applications: what a user can do to all windows of an application at once is
/// to show the desktop, and only that counts as hiding. A minimised window is minimised, not
/// hidden, and activation leaves it so.
class LinuxWorkspace final : public Workspace {
 public:
  explicit LinuxWorkspace(Applications& applications) : applications_(applications) {}

  std::vector<RunningApplication> runningApplications() override;
  std::vector<RunningApplication> runningApplications(std::string_view bundleId) override;
  std::optional<RunningApplication> runningApplication(Pid pid) override;
  bool isTerminated(const ApplicationId& application) override;
  bool isHidden(const ApplicationId& application) override;
  void unhide(const ApplicationId& application) override;
  void activate(const ApplicationId& application) override;

  /// By the server's keyboard focus: managers update the window that they call active later.
  std::optional<Pid> frontmostApplication() override;

 private:
  Applications& applications_;
};

}  // namespace tarqo::lnx::apps
