#include "platform/mac/mac_processes.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "platform/mac/mac_objc.h"
#include "platform/mac/mac_process_record.h"
#include "platform/mac/mac_spawn.h"

namespace tarqo::mac {
namespace {

class MacChild final : public Child {
 public:
  explicit MacChild(Pid pid) : pid_(pid) {}
  MacChild(const MacChild&) = delete;
  MacChild& operator=(const MacChild&) = delete;

  ~MacChild() override {
    if (running()) {
      collectLater(pid_);
    }
  }

  bool running() override {
    if (!ended_) {
      // A child that was collected elsewhere has ended too, without telling how.
      ended_ = waitpid(pid_, &status_, WNOHANG) != 0;
    }
    return !ended_;
  }

  void terminate() override {
    // Not a process that has taken over the number of one that was collected.
    if (running()) {
      kill(pid_, SIGTERM);
    }
  }

  std::optional<int> exitStatus() override {
    return !running() && WIFEXITED(status_) ? std::optional(WEXITSTATUS(status_)) : std::nullopt;
  }

 private:
  Pid pid_;
  bool ended_ = false;
  int status_ = SIGKILL;  ///< As of a child that a signal ended, until it is known.
};

}  // namespace

Pid MacProcesses::ownPid() { return getpid(); }

Pid MacProcesses::ownParentPid() { return getppid(); }

std::string MacProcesses::ownExecutable() { return programOf(getpid()).value_or(""); }

std::optional<Pid> MacProcesses::parentPid(Pid pid) {
  const auto record = processRecord(pid);
  return record ? std::optional(record->parent) : std::nullopt;
}

std::optional<std::string> MacProcesses::executablePath(Pid pid) { return programOf(pid); }

std::unique_ptr<Child> MacProcesses::start(const std::string& program,
                                           const std::vector<std::string>& arguments) {
  const Pid child = spawn(program, arguments);
  return child > 0 ? std::make_unique<MacChild>(child) : nullptr;
}

std::string MacProcesses::temporaryFolder() {
  std::string folder = guarded([] { return textOf(NSTemporaryDirectory()); }).value_or("/tmp");
  while (folder.size() > 1 && folder.ends_with('/')) {
    folder.pop_back();
  }
  return folder;
}

std::optional<std::string> MacProcesses::readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  std::string bytes(std::istreambuf_iterator<char>(file), {});
  return file.bad() ? std::nullopt : std::optional(std::move(bytes));
}

void MacProcesses::removeFile(const std::string& path) { unlink(path.c_str()); }

}  // namespace tarqo::mac
