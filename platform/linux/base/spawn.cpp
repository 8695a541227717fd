#include "platform/linux/base/spawn.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace tarqo::lnx {
namespace {

constexpr int kFirstOtherFile = 3;
constexpr int kLastOtherFile = 1023;
constexpr std::size_t kPidDigits = 10;

/// Everything that the child needs, made before it exists: between its start and its program's it
/// may neither allocate memory nor take a lock.
struct Prepared {
  std::string program;
  std::string folder;
  bool ownSession = false;
  std::vector<std::string> texts;
  std::vector<char*> arguments;
  std::vector<char*> environment;
  char* pidDigits = nullptr;
  int errorPipe = -1;
};

Prepared prepare(const SpawnRequest& request) {
  Prepared made;
  made.program = request.program;
  made.folder = request.folder;
  made.ownSession = request.ownSession;
  made.texts = request.arguments;
  made.texts.insert(made.texts.end(), request.environment.begin(), request.environment.end());
  if (!request.pidVariable.empty()) {
    made.texts.push_back(request.pidVariable + "=" + std::string(kPidDigits, '0'));
    std::string& last = made.texts.back();
    made.pidDigits = last.data() + last.size() - kPidDigits;
  }
  for (std::size_t i = 0; i < made.texts.size(); ++i) {
    (i < request.arguments.size() ? made.arguments : made.environment)
        .push_back(made.texts[i].data());
  }
  made.arguments.push_back(nullptr);
  made.environment.push_back(nullptr);
  return made;
}

void writeOwnPid(char* digits) {
  std::array<char, kPidDigits> reversed{};
  std::size_t count = 0;
  for (Pid rest = ::getpid(); rest > 0 && count < kPidDigits; rest /= 10) {
    reversed[count++] = static_cast<char>('0' + rest % 10);
  }
  for (std::size_t i = 0; i < count; ++i) {
    digits[i] = reversed[count - 1 - i];
  }
  digits[count] = '\0';
}

void closeOtherFilesOnExec() {
  if (::close_range(kFirstOtherFile, ~0U, CLOSE_RANGE_CLOEXEC) == 0) {
    return;
  }
  for (int file = kFirstOtherFile; file <= kLastOtherFile; ++file) {
    ::fcntl(file, F_SETFD, FD_CLOEXEC);
  }
}

[[noreturn]] void giveUp(int pipe) {
  const int error = errno;
  // If even this write fails, the program counts as started, and as ended at once.
  [[maybe_unused]] const ssize_t written = ::write(pipe, &error, sizeof(error));
  ::_exit(127);
}

/// The child's way to its program. Calls only what is safe after a fork of a process with threads.
[[noreturn]] void becomeProgram(const Prepared& made) {
  sigset_t none;
  ::sigemptyset(&none);
  struct sigaction byDefault {};
  byDefault.sa_handler = SIG_DFL;
  ::sigaction(SIGPIPE, &byDefault, nullptr);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  if (made.ownSession) {
    ::setsid();
  }
  const int null = ::open("/dev/null", O_RDWR);
  for (int stream = 0; stream < kFirstOtherFile; ++stream) {
    if (null < 0 || ::dup2(null, stream) < 0) {
      giveUp(made.errorPipe);
    }
  }
  if (!made.folder.empty() && ::chdir(made.folder.c_str()) != 0) {
    giveUp(made.errorPipe);
  }
  if (made.pidDigits != nullptr) {
    writeOwnPid(made.pidDigits);
  }
  closeOtherFilesOnExec();
  ::execve(made.program.c_str(), made.arguments.data(), made.environment.data());
  giveUp(made.errorPipe);
}

/// Above the standard streams, which the child replaces.
bool makePipe(std::array<int, 2>& pipe) {
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
    return false;
  }
  for (int& end : pipe) {
    if (end < kFirstOtherFile) {
      const int moved = ::fcntl(end, F_DUPFD_CLOEXEC, kFirstOtherFile);
      ::close(end);
      end = moved;
    }
  }
  return true;
}

bool isProgram(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

std::string withLinksResolved(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

}  // namespace

std::string resolvedProgram(const std::string& program) {
  if (program.find('/') != std::string::npos) {
    return isProgram(program) ? withLinksResolved(program) : std::string();
  }
  const char* variable = std::getenv("PATH");
  std::string_view folders = variable != nullptr && *variable != '\0' ? variable : "/usr/bin:/bin";
  while (!folders.empty()) {
    const std::size_t end = std::min(folders.find(':'), folders.size());
    const std::string path = std::string(folders.substr(0, end)) + "/" + program;
    if (end > 0 && isProgram(path)) {
      return withLinksResolved(path);
    }
    folders.remove_prefix(std::min(end + 1, folders.size()));
  }
  return {};
}

Spawned spawn(const SpawnRequest& request) {
  Prepared made = prepare(request);
  std::array<int, 2> pipe{-1, -1};
  if (!makePipe(pipe)) {
    return {0, errno};
  }
  made.errorPipe = pipe[1];
  const pid_t child = ::fork();
  if (child == 0) {
    becomeProgram(made);
  }
  const int forkError = errno;
  ::close(pipe[1]);
  if (child < 0) {
    ::close(pipe[0]);
    return {0, forkError};
  }
  int error = 0;
  ssize_t count = 0;
  do {
    count = ::read(pipe[0], &error, sizeof(error));
  } while (count < 0 && errno == EINTR);
  ::close(pipe[0]);
  if (count > 0) {
    awaitEnd(child);
    return {0, error};
  }
  return {child, 0};
}

std::vector<std::string> environmentWithout(const std::vector<std::string>& names) {
  std::vector<std::string> kept;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    const std::string_view text(*variable);
    const std::string_view name = text.substr(0, text.find('='));
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      kept.emplace_back(text);
    }
  }
  return kept;
}

bool hasEnded(Pid child, ChildEnd& end) {
  int status = 0;
  const pid_t result = ::waitpid(child, &status, WNOHANG);
  if (result == 0) {
    return false;
  }
  if (result == child && WIFSIGNALED(status)) {
    end = {false, WTERMSIG(status)};
  } else {
    end = {true, result == child ? WEXITSTATUS(status) : 0};
  }
  return true;
}

void closeFilesFrom(int first) {
  if (::close_range(static_cast<unsigned>(first), ~0U, 0) == 0) {
    return;
  }
  for (int file = first; file <= kLastOtherFile; ++file) {
    ::close(file);
  }
}

void awaitEnd(Pid child) {
  while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace tarqo::lnx
