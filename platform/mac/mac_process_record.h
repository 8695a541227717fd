// The kernel's record of a process. Any thread; waits for nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/accessibility.h"

namespace tarqo::mac {

struct ProcessRecord {
  Pid parent = 0;
  /// When it started, in microseconds of the calendar: with the process id, it names one process.
  std::uint64_t startedAt = 0;
};

/// None when there is no such process, or only what its parent has not collected yet.
[[nodiscard]] std::optional<ProcessRecord> processRecord(Pid pid);

/// The program it runs; none when the process is gone or not ours to look at.
[[nodiscard]] std::optional<std::string> programOf(Pid pid);

}  // namespace tarqo::mac
