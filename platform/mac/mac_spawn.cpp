#include "platform/mac/mac_spawn.h"

#include <crt_externs.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <thread>

namespace tarqo::mac {
namespace {

constexpr const char* kNullDevice = "/dev/null";

/// What the child starts with, destroyed with the holder.
class SpawnSettings {
 public:
  SpawnSettings() {
    ready_ = posix_spawn_file_actions_init(&files_) == 0 && posix_spawnattr_init(&attributes_) == 0;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ready_ =
          ready_ && posix_spawn_file_actions_addopen(&files_, stream, kNullDevice, O_RDWR, 0) == 0;
    }
    // The helper ignores SIGPIPE, and what is ignored stays so in a child.
    sigset_t reset;
    sigemptyset(&reset);
    sigaddset(&reset, SIGPIPE);
    ready_ = ready_ && posix_spawnattr_setsigdefault(&attributes_, &reset) == 0 &&
             posix_spawnattr_setflags(&attributes_,
                                      POSIX_SPAWN_CLOEXEC_DEFAULT | POSIX_SPAWN_SETSIGDEF) == 0;
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&files_);
    posix_spawnattr_destroy(&attributes_);
  }

  [[nodiscard]] bool ready() const { return ready_; }
  [[nodiscard]] const posix_spawn_file_actions_t* files() const { return &files_; }
  [[nodiscard]] const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t files_{};
  posix_spawnattr_t attributes_{};
  bool ready_ = false;
};

}  // namespace

Pid spawn(const std::string& program, const std::vector<std::string>& arguments) {
  const SpawnSettings settings;
  if (!settings.ready()) {
    return 0;
  }
  std::vector<std::string> texts{program};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> words;
  words.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    words.push_back(text.data());
  }
  words.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawn(&child, program.c_str(), settings.files(), settings.attributes(),
                                words.data(), *_NSGetEnviron());
  return error == 0 ? child : 0;
}

void collectLater(Pid child) {
  try {
    std::thread([child] {
      while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
      }
    }).detach();
  } catch (const std::exception&) {
    return;  // It stays a zombie for the helper's life.
  }
}

}  // namespace tarqo::mac
