// Processes by the kernel's records, and short-lived tools run as children.
#pragma once

#include "platform/processes.h"

namespace tarqo::mac {

/// Children are started by `posix_spawn`: nothing here depends on a run loop, and a child that a
/// signal ended can be told from one that exited.
class MacProcesses final : public Processes {
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

}  // namespace tarqo::mac
