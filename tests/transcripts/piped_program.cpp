#include "tests/transcripts/piped_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

extern char** environ;

namespace tarqo::transcripts {
namespace {

// Neither end is inherited but where it is put in the place of a standard stream.
std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("no pipe");
  }
  for (const int end : ends) {
    (void)fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  return ends;
}

}  // namespace

PipedProgram::PipedProgram(const std::vector<std::string>& commandLine, Pipes pipes) {
  // The program may end before it has read what is written to it.
  (void)std::signal(SIGPIPE, SIG_IGN);
  const auto input = makePipe();
  const auto output = makePipe();
  if (pipes == Pipes::notWaiting) {
    for (const int end : {input[0], output[1]}) {
      (void)fcntl(end, F_SETFL, O_NONBLOCK);
    }
  }
  input_.reset(fdopen(input[1], "w"));
  output_.reset(fdopen(output[0], "r"));
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  std::vector<std::string> texts = commandLine;
  std::vector<char*> arguments;
  for (std::string& text : texts) {
    arguments.push_back(text.data());
  }
  arguments.push_back(nullptr);
  const int failed = posix_spawn(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(input[0]);
  close(output[1]);
  if (failed != 0) {
    pid_ = 0;
    throw std::runtime_error("cannot start " + commandLine.front());
  }
}

PipedProgram::~PipedProgram() { (void)finish(); }

std::optional<std::string> PipedProgram::ask(const std::string& line) {
  (void)std::fwrite(line.data(), 1, line.size(), input_.get());
  (void)std::fputc('\n', input_.get());
  (void)std::fflush(input_.get());
  std::string answer;
  for (int c = std::getc(output_.get()); c != '\n'; c = std::getc(output_.get())) {
    if (c == EOF) {
      return std::nullopt;
    }
    answer.push_back(static_cast<char>(c));
  }
  return answer;
}

int PipedProgram::finish() {
  if (pid_ == 0) {
    return -1;
  }
  input_.reset();
  int status = 0;
  const pid_t ended = waitpid(pid_, &status, 0);
  pid_ = 0;
  return ended > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace tarqo::transcripts
