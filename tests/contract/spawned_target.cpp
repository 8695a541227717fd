#include "tests/contract/spawned_target.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

extern char** environ;  // NOLINT(readability-redundant-declaration): not every system declares it.

namespace tarqo::contract {

SpawnedTarget::SpawnedTarget(std::vector<std::string> command) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("no pipe");
  }
  for (const int end : ends) {
    fcntl(end, F_SETFD, FD_CLOEXEC);
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
  const int failed = posix_spawn(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  output_ = ends[0];
  if (failed != 0) {
    close(output_);
    throw std::runtime_error("cannot start " + command[0]);
  }
  awaitReady();
}

SpawnedTarget::~SpawnedTarget() {
  SpawnedTarget::end();
  close(output_);
}

void SpawnedTarget::hang() { kill(pid_, SIGSTOP); }

void SpawnedTarget::resume() { kill(pid_, SIGCONT); }

void SpawnedTarget::end() {
  if (!ended_) {
    ended_ = true;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

const std::vector<std::string>& SpawnedTarget::lines() {
  std::array<char, 4096> bytes{};
  pollfd output{output_, POLLIN, 0};
  while (poll(&output, 1, 0) > 0) {
    const ssize_t count = read(output_, bytes.data(), bytes.size());
    if (count <= 0) {
      break;
    }
    unread_.append(bytes.data(), static_cast<std::size_t>(count));
  }
  for (std::size_t end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
    lines_.push_back(unread_.substr(0, end));
    unread_.erase(0, end + 1);
  }
  return lines_;
}

void SpawnedTarget::awaitReady() const {
  std::string text;
  char c = 0;
  while (text.find("ready\n") == std::string::npos) {
    if (read(output_, &c, 1) != 1) {
      throw std::runtime_error("the target ended before it was ready");
    }
    text += c;
  }
}

std::string environmentVariable(const char* name, const std::string& advice) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets any.
  if (value == nullptr) {
    throw std::runtime_error(std::string(name) + " is not set; " + advice);
  }
  return value;
}

std::string geometryArgument(const Rect& frame) {
  const auto number = [](double value) { return std::to_string(static_cast<int>(value)); };
  return number(frame.width) + "x" + number(frame.height) + "+" + number(frame.x) + "+" +
         number(frame.y);
}

}  // namespace tarqo::contract
