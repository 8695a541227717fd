#include "platform/linux/base/proc.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

namespace tarqo::lnx {
namespace {

/// The states and the fields behind the program's name in /proc/PID/stat, counted from the state.
constexpr char kZombie = 'Z';
constexpr char kDead = 'X';
constexpr std::size_t kStateField = 0;
constexpr std::size_t kParentField = 1;
constexpr std::size_t kStartField = 19;

std::string procPath(Pid pid, std::string_view file) {
  return "/proc/" + std::to_string(pid) + "/" + std::string(file);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

template <typename Number>
Number numberOf(std::string_view text) {
  Number number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

std::optional<std::string> readWholeFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return std::nullopt;
  }
  std::string bytes;
  std::array<char, 16384> buffer{};
  ssize_t count = 0;
  while ((count = ::read(file, buffer.data(), buffer.size())) > 0) {
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  ::close(file);
  return count == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<ProcessStatus> processStatus(Pid pid) {
  const auto line = readWholeFile(procPath(pid, "stat"));
  if (!line) {
    return std::nullopt;
  }
  // The name stands in parentheses and may hold any character, also blanks and parentheses.
  const std::size_t nameEnd = line->rfind(')');
  if (nameEnd == std::string::npos || nameEnd + 2 > line->size()) {
    return std::nullopt;
  }
  const auto fields = split(std::string_view(*line).substr(nameEnd + 2), ' ');
  if (fields.size() <= kStartField || fields[kStateField].empty()) {
    return std::nullopt;
  }
  const char state = fields[kStateField][0];
  return ProcessStatus{numberOf<Pid>(fields[kParentField]), state == kZombie || state == kDead,
                       numberOf<std::uint64_t>(fields[kStartField])};
}

std::optional<std::chrono::milliseconds> processAge(Pid pid) {
  const auto status = processStatus(pid);
  timespec now{};
  const long ticksPerSecond = ::sysconf(_SC_CLK_TCK);
  if (!status || ticksPerSecond <= 0 || ::clock_gettime(CLOCK_BOOTTIME, &now) != 0) {
    return std::nullopt;
  }
  const std::chrono::milliseconds sinceBoot =
      std::chrono::seconds(now.tv_sec) +
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::nanoseconds(now.tv_nsec));
  const std::chrono::milliseconds started(status->startTicks * 1000 /
                                          static_cast<std::uint64_t>(ticksPerSecond));
  return sinceBoot - started;
}

std::optional<std::string> programOf(Pid pid) {
  std::array<char, 4096> buffer{};
  const ssize_t size = ::readlink(procPath(pid, "exe").c_str(), buffer.data(), buffer.size());
  if (size <= 0) {
    return std::nullopt;
  }
  std::string path(buffer.data(), static_cast<std::size_t>(size));
  // A program that was replaced on the disk, as an update does, is still the same application.
  constexpr std::string_view kDeleted = " (deleted)";
  if (path.ends_with(kDeleted)) {
    path.resize(path.size() - kDeleted.size());
  }
  return path;
}

std::vector<std::string> commandLineOf(Pid pid) {
  return split(readWholeFile(procPath(pid, "cmdline")).value_or(""), '\0');
}

std::optional<std::string> environmentOf(Pid pid, std::string_view variable) {
  const std::string wanted = std::string(variable) + "=";
  for (const std::string& line :
       split(readWholeFile(procPath(pid, "environ")).value_or(""), '\0')) {
    if (line.starts_with(wanted)) {
      return line.substr(wanted.size());
    }
  }
  return std::nullopt;
}

std::string controlGroupOf(Pid pid) {
  constexpr std::string_view kUnified = "0::";
  for (const std::string& line : split(readWholeFile(procPath(pid, "cgroup")).value_or(""), '\n')) {
    if (line.starts_with(kUnified)) {
      return line.substr(kUnified.size());
    }
  }
  return {};
}

std::vector<Pid> ownProcesses() {
  std::vector<Pid> pids;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), &::closedir);
  if (!folder) {
    return pids;
  }
  const uid_t user = ::getuid();
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string_view name(entry->d_name);
    struct stat status {};
    if (name.find_first_not_of("0123456789") == std::string_view::npos &&
        ::fstatat(::dirfd(folder.get()), entry->d_name, &status, 0) == 0 && status.st_uid == user) {
      pids.push_back(numberOf<Pid>(name));
    }
  }
  std::sort(pids.begin(), pids.end());
  return pids;
}

}  // namespace tarqo::lnx
