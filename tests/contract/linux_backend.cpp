// The Linux desktop under the contract, with our GTK 3 application as target. Needs a desktop:
// script/desktop; TARQO_APPS names the folder of the built test applications, whose share/ stands
// in XDG_DATA_DIRS.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "platform/platform.h"
#include "tests/contract/contract_backend.h"

namespace tarqo::contract {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets any.
  if (value == nullptr) {
    throw std::runtime_error(std::string(name) + " is not set; run this through script/desktop");
  }
  return value;
}

std::string geometryArgument(const Rect& frame) {
  const auto number = [](double value) { return std::to_string(static_cast<int>(value)); };
  return number(frame.width) + "x" + number(frame.height) + "+" + number(frame.x) + "+" +
         number(frame.y);
}

/// A child with its standard output on a pipe.
class SpawnedTarget final : public ContractTarget {
 public:
  explicit SpawnedTarget(std::vector<std::string> command) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command) {
      arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const int failed =
        posix_spawn(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
    if (failed != 0) {
      close(output_);
      throw std::runtime_error("cannot start " + command[0]);
    }
    awaitReady();
  }
  SpawnedTarget(const SpawnedTarget&) = delete;
  SpawnedTarget& operator=(const SpawnedTarget&) = delete;
  ~SpawnedTarget() override {
    end();
    close(output_);
  }

  [[nodiscard]] Pid pid() const override { return pid_; }
  void hang() override { kill(pid_, SIGSTOP); }
  void resume() override { kill(pid_, SIGCONT); }
  void end() override {
    if (!ended_) {
      ended_ = true;
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
  }

 private:
  void awaitReady() const {
    std::string text;
    char c = 0;
    while (text.find("ready\n") == std::string::npos) {
      if (read(output_, &c, 1) != 1) {
        throw std::runtime_error("the target ended before it was ready");
      }
      text += c;
    }
  }

  pid_t pid_ = 0;
  int output_ = -1;
  bool ended_ = false;
};

class LinuxBackend final : public ContractBackend {
 public:
  LinuxBackend() { apps_ = environment("TARQO_APPS"); }
  LinuxBackend(const LinuxBackend&) = delete;
  LinuxBackend& operator=(const LinuxBackend&) = delete;
  ~LinuxBackend() override {
    for (const RunningApplication& left :
         host().platform().workspace.runningApplications(targetBundleId())) {
      kill(left.id.pid, SIGKILL);
    }
  }

  [[nodiscard]] PlatformHost& host() override { return sharedHost(); }
  [[nodiscard]] std::string targetBundleId() const override { return "com.tarqo.test.gtk3"; }

  [[nodiscard]] std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                            const Rect& frame) override {
    return std::make_unique<SpawnedTarget>(std::vector<std::string>{
        apps_ + "/gtk3_app", "--title", title, "--geometry", geometryArgument(frame)});
  }

  [[nodiscard]] Command exitingWith(int status) const override {
    return {"/bin/sh", {"-c", "exit " + std::to_string(status)}};
  }
  [[nodiscard]] Command running() const override { return {"/bin/sleep", {"60"}}; }
  [[nodiscard]] Command writing(const std::string& text, const std::string& path) const override {
    return {"/bin/sh", {"-c", R"(printf %s "$0" > "$1")", text, path}};
  }

 private:
  /// One for all tests, as in the helper: its main loop never ends.
  static PlatformHost& sharedHost() {
    static const std::unique_ptr<PlatformHost> kHost = [] {
      auto host = makePlatform("contract_tests_linux");
      std::thread([&loop = host->mainLoop()] { loop.run(); }).detach();
      return host;
    }();
    return *kHost;
  }

  std::string apps_;
};

}  // namespace

std::unique_ptr<ContractBackend> makeContractBackend() { return std::make_unique<LinuxBackend>(); }

}  // namespace tarqo::contract
