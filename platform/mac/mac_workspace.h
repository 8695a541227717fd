// The workspace: NSWorkspace and NSRunningApplication.
#pragma once

#include "platform/workspace.h"

namespace tarqo::mac {

/// AppKit keeps what it knows of other applications in memory and brings it up to date only when
/// the main run loop turns; a worker that polls would see the same answer for ever if the main
/// thread did anything but run its loop. It does nothing else here, so the answers follow within
/// one turn. Whether a process lives is asked of the kernel, which is never late.
class MacWorkspace final : public Workspace {
 public:
  std::vector<RunningApplication> runningApplications() override;
  std::vector<RunningApplication> runningApplications(std::string_view bundleId) override;
  std::optional<RunningApplication> runningApplication(Pid pid) override;
  bool isTerminated(const ApplicationId& application) override;
  bool isHidden(const ApplicationId& application) override;
  void unhide(const ApplicationId& application) override;

  /// From macOS 14 on a request that the system may refuse; who needs it sees what came of it.
  void activate(const ApplicationId& application) override;

  /// Asked on the main thread, the one place where AppKit promises it; none when that thread does
  /// not answer within a second.
  std::optional<Pid> frontmostApplication() override;
};

}  // namespace tarqo::mac
