// What /proc reports about processes. Any thread; each call reads a small file and never waits. The
// answer is empty for a process that is gone or belongs to another user.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process_id.h"

namespace tarqo::lnx {

struct ProcessStatus {
  Pid parent = 0;
  bool zombie = false;  ///< Ended, and not yet collected by its parent.
  std::uint64_t startTicks =
      0;  ///< Since the system was started; with the pid, it names a process.
};

/// The bytes of a file; nullopt when it cannot be read.
[[nodiscard]] std::optional<std::string> readWholeFile(const std::string& path);

[[nodiscard]] std::optional<ProcessStatus> processStatus(Pid pid);

/// How long ago a process was started, in steps of 10 ms.
[[nodiscard]] std::optional<std::chrono::milliseconds> processAge(Pid pid);

/// The program a process runs, links resolved.
[[nodiscard]] std::optional<std::string> programOf(Pid pid);

/// The arguments a process was started with, the program's name first.
[[nodiscard]] std::vector<std::string> commandLineOf(Pid pid);

/// The value of a variable in the environment a process was started with.
[[nodiscard]] std::optional<std::string> environmentOf(Pid pid, std::string_view variable);

/// The path of the control group of a process in the unified hierarchy.
[[nodiscard]] std::string controlGroupOf(Pid pid);

/// The processes of this user, in ascending order.
[[nodiscard]] std::vector<Pid> ownProcesses();

}  // namespace tarqo::lnx
