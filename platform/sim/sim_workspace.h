// The simulated workspace: running applications, and which is in front.
#pragma once

#include "platform/sim/sim_world.h"

namespace tarqo::sim {

class WorkspaceService final : public Workspace {
 public:
  explicit WorkspaceService(World& world) : world_(world) {}

  [[nodiscard]] std::vector<RunningApplication> runningApplications() override;
  [[nodiscard]] std::vector<RunningApplication> runningApplications(
      std::string_view bundleId) override;
  [[nodiscard]] std::optional<RunningApplication> runningApplication(Pid pid) override;
  [[nodiscard]] bool isTerminated(const ApplicationId& application) override;
  [[nodiscard]] bool isHidden(const ApplicationId& application) override;
  void unhide(const ApplicationId& application) override;
  void activate(const ApplicationId& application) override;
  [[nodiscard]] std::optional<Pid> frontmostApplication() override;

 private:
  World& world_;
};

}  // namespace tarqo::sim
