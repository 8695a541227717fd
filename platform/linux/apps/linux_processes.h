// Processes by /proc, and short-lived tools run as children.
#pragma once

#include "platform/processes.h"

namespace tarqo::lnx::apps {

class LinuxProcesses final : public Processes {
 public:
  Pid ownPid() override;
  Pid ownParentPid() override;
  std::string ownExecutable() override;
  std::optional<Pid> parentPid(Pid pid) override;
  std::optional<std::string> executablePath(Pid pid) override;
  std::unique_ptr<Child> start(const std::string& program,
                               const std::vector<std::string>& arguments) override;
  std::string temporaryFolder() override;
  std::optional<std::string> readFile(const std::string& path) override;
  void removeFile(const std::string& path) override;
};

}  // namespace tarqo::lnx::apps
