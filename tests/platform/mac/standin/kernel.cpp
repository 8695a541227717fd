// The kernel's records of processes, and children. Of itself and its children the program is told
// the truth; of the others what the desktop knows.

#include <crt_externs.h>
#include <libproc.h>
#include <spawn.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/faults.h"
#include "tests/platform/mac/standin/tools.h"

using namespace standin;

namespace {

constexpr std::uint64_t kMicrosecondsPerSecond = 1'000'000;

/// None for a process that does not exist.
std::optional<kinfo_proc> recordOf(pid_t pid) {
  kinfo_proc record{};
  record.kp_proc.p_pid = pid;
  if (pid == getpid()) {
    record.kp_eproc.e_ppid = getppid();
    return record;
  }
  return onDesktop([&](const tarqo::Platform& platform) -> std::optional<kinfo_proc> {
    const auto application = platform.workspace.runningApplication(pid);
    const auto parent = platform.processes.parentPid(pid);
    if (!application && !parent) {
      return std::nullopt;
    }
    // No application began then: one that has ended may still have its record.
    const std::uint64_t began = application ? application->id.instance : 0;
    record.kp_eproc.e_ppid = parent.value_or(1);
    record.kp_proc.p_un.__p_starttime = {static_cast<time_t>(began / kMicrosecondsPerSecond),
                                         static_cast<suseconds_t>(began % kMicrosecondsPerSecond)};
    return record;
  });
}

}  // namespace

#undef posix_spawn
#undef posix_spawnattr_setflags

extern "C" {

char*** _NSGetEnviron(void) { return &environ; }

int sysctl(int* name, unsigned length, void* old, size_t* size, void* /*fresh*/,
           size_t /*freshSize*/) {
  if (Faults::instance().next("sysctl").fails()) {
    return -1;
  }
  if (length != 4 || name[1] != KERN_PROC || *size < sizeof(kinfo_proc)) {
    return -1;
  }
  const auto record = recordOf(name[3]);
  *size = record ? sizeof(kinfo_proc) : 0;
  if (record) {
    std::memcpy(old, &*record, sizeof(kinfo_proc));
  }
  return 0;
}

int proc_pidpath(int pid, void* buffer, uint32_t size) {
  if (size > PROC_PIDPATHINFO_MAXSIZE || Faults::instance().next("proc_pidpath").fails()) {
    return 0;
  }
  auto* path = static_cast<char*>(buffer);
  if (pid == getpid()) {
    return static_cast<int>(std::max<ssize_t>(readlink("/proc/self/exe", path, size), 0));
  }
  const auto program = onDesktop(
      [&](const tarqo::Platform& platform) { return platform.processes.executablePath(pid); });
  const std::string found = program.value_or("").substr(0, size);
  found.copy(path, found.size());
  return static_cast<int>(found.size());
}

int standinSetSpawnFlags(posix_spawnattr_t* attributes, int flags) {
  return posix_spawnattr_setflags(attributes,
                                  static_cast<short>(flags & ~POSIX_SPAWN_CLOEXEC_DEFAULT));
}

int standinSpawn(pid_t* child, const char* program, const posix_spawn_file_actions_t* files,
                 const posix_spawnattr_t* attributes, char* const* words,
                 char* const* environment) {
  if (Faults::instance().next("posix_spawn").fails()) {
    return EAGAIN;
  }
  std::vector<std::string> line;
  for (char* const* word = words; *word != nullptr; ++word) {
    line.emplace_back(*word);
  }
  line[0] = program;
  line = toolFor(std::move(line));
  std::vector<char*> instead;
  for (std::string& word : line) {
    instead.push_back(word.data());
  }
  instead.push_back(nullptr);
  // What the flag of macOS means: no file of the parent but those that it is given.
  auto* closing = const_cast<posix_spawn_file_actions_t*>(files);
  posix_spawn_file_actions_addclosefrom_np(closing, STDERR_FILENO + 1);
  return posix_spawn(child, instead[0], closing, attributes, instead.data(), environment);
}

}  // extern "C"
