// Processes: who started whom, and short-lived tools of the system run as children.
//
// Worker thread only. No call waits for another process.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"

namespace tarqo {

/// A child process started by `Processes::start`. Destroying it neither ends nor awaits the child,
/// but leaves no zombie behind.
class Child {
 public:
  virtual ~Child() = default;

  [[nodiscard]] virtual bool running() = 0;

  virtual void terminate() = 0;

  /// The exit status; null while it runs or when a signal ended it.
  [[nodiscard]] virtual std::optional<int> exitStatus() = 0;
};

class Processes {
 public:
  virtual ~Processes() = default;

  [[nodiscard]] virtual Pid ownPid() = 0;

  /// The process that started the helper, or whichever adopted it.
  [[nodiscard]] virtual Pid ownParentPid() = 0;

  /// The helper's own program, links resolved.
  [[nodiscard]] virtual std::string ownExecutable() = 0;

  [[nodiscard]] virtual std::optional<Pid> parentPid(Pid pid) = 0;

  /// The program a process runs; null when the process is gone or not ours to look at.
  [[nodiscard]] virtual std::optional<std::string> executablePath(Pid pid) = 0;

  /// Starts a program with its standard streams on the null device; null when it cannot start.
  [[nodiscard]] virtual std::unique_ptr<Child> start(const std::string& program,
                                                     const std::vector<std::string>& arguments) = 0;

  /// The user's folder for temporary files, without a trailing slash.
  [[nodiscard]] virtual std::string temporaryFolder() = 0;

  /// The bytes of a file; null when it cannot be read.
  [[nodiscard]] virtual std::optional<std::string> readFile(const std::string& path) = 0;

  /// Removes a file; a missing one is fine.
  virtual void removeFile(const std::string& path) = 0;
};

}  // namespace tarqo
