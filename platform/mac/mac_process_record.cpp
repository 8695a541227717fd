#include "platform/mac/mac_process_record.h"

#include <libproc.h>
#include <sys/proc.h>
#include <sys/sysctl.h>

#include <array>
#include <cstring>

namespace tarqo::mac {
namespace {

constexpr std::uint64_t kMicrosecondsPerSecond = 1'000'000;

}  // namespace

std::optional<ProcessRecord> processRecord(Pid pid) {
  std::array<int, 4> name{CTL_KERN, KERN_PROC, KERN_PROC_PID, pid};
  kinfo_proc record{};
  std::size_t size = sizeof(record);
  const int result = sysctl(name.data(), name.size(), &record, &size, nullptr, 0);
  // For a process that does not exist the call succeeds and writes nothing.
  if (result != 0 || size < sizeof(record) || record.kp_proc.p_pid != pid ||
      record.kp_proc.p_stat == SZOMB) {
    return std::nullopt;
  }
  const timeval& start = record.kp_proc.p_un.__p_starttime;
  return ProcessRecord{record.kp_eproc.e_ppid,
                       static_cast<std::uint64_t>(start.tv_sec) * kMicrosecondsPerSecond +
                           static_cast<std::uint64_t>(start.tv_usec)};
}

std::optional<std::string> programOf(Pid pid) {
  // A larger buffer is refused.
  std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
  if (proc_pidpath(pid, path.data(), path.size()) < 1) {
    return std::nullopt;
  }
  return std::string(path.data(), strnlen(path.data(), path.size()));
}

}  // namespace tarqo::mac
