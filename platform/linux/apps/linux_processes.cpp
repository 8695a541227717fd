#include "platform/linux/apps/linux_processes.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <thread>

#include "platform/linux/base/proc.h"
#include "platform/linux/base/spawn.h"

namespace tarqo::lnx::apps {
namespace {

class LinuxChild final : public Child {
 public:
  explicit LinuxChild(Pid pid) : pid_(pid) {}
  LinuxChild(const LinuxChild&) = delete;
  LinuxChild& operator=(const LinuxChild&) = delete;

  ~LinuxChild() override {
    if (!running()) {
      return;
    }
    try {
      std::thread(awaitEnd, pid_).detach();
    } catch (const std::exception&) {
      return;  // The child stays a zombie for the helper's life.
    }
  }

  bool running() override {
    ended_ = ended_ || hasEnded(pid_, end_);
    return !ended_;
  }

  void terminate() override {
    // Not a process that has taken over the number of one that was collected.
    if (running()) {
      ::kill(pid_, SIGTERM);
    }
  }

  std::optional<int> exitStatus() override {
    return !running() && end_.exited ? std::optional(end_.status) : std::nullopt;
  }

 private:
  Pid pid_;
  bool ended_ = false;
  ChildEnd end_;
};

}  // namespace

Pid LinuxProcesses::ownPid() { return ::getpid(); }

Pid LinuxProcesses::ownParentPid() { return ::getppid(); }

std::string LinuxProcesses::ownExecutable() { return programOf(::getpid()).value_or(""); }

std::optional<Pid> LinuxProcesses::parentPid(Pid pid) {
  const auto status = processStatus(pid);
  return status ? std::optional(status->parent) : std::nullopt;
}

std::optional<std::string> LinuxProcesses::executablePath(Pid pid) { return programOf(pid); }

std::unique_ptr<Child> LinuxProcesses::start(const std::string& program,
                                             const std::vector<std::string>& arguments) {
  SpawnRequest request;
  request.program = resolvedProgram(program);
  request.arguments = {program};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  request.environment = environmentWithout({});
  const Spawned child = spawn(request);
  return child.pid > 0 ? std::make_unique<LinuxChild>(child.pid) : nullptr;
}

std::string LinuxProcesses::temporaryFolder() {
  const char* folder = std::getenv("TMPDIR");
  std::string path = folder != nullptr && *folder == '/' ? folder : "/tmp";
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

std::optional<std::string> LinuxProcesses::readFile(const std::string& path) {
  return readWholeFile(path);
}

void LinuxProcesses::removeFile(const std::string& path) { ::unlink(path.c_str()); }

}  // namespace tarqo::lnx::apps
