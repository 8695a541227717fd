#include "platform/linux/atspi/wire/connection_keeper.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include "platform/linux/base/spawn.h"

namespace tarqo::lnx::atspi {
namespace {

/// What the child does. Calls only what is safe after a fork of a process with threads.
[[noreturn]] void holdOpen(int socket) {
  ::setsid();
  // A folder in use could not be unmounted.
  if (::chdir("/") != 0 || ::dup2(socket, STDIN_FILENO) < 0) {
    ::_exit(1);
  }
  closeFilesFrom(STDIN_FILENO + 1);
  pollfd held{STDIN_FILENO, 0, 0};
  while (::poll(&held, 1, -1) <= 0) {  // Its end alone wakes.
  }
  ::_exit(0);
}

}  // namespace

void ConnectionKeeper::keep(int socket) {
  if (pid_ != 0) {
    return;
  }
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  // The child never unblocks them.
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t child = ::fork();
  if (child == 0) {
    holdOpen(socket);
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pid_ = child > 0 ? child : 0;
}

ConnectionKeeper::~ConnectionKeeper() {
  if (pid_ != 0) {
    ::kill(pid_, SIGKILL);
    awaitEnd(pid_);
  }
}

}  // namespace tarqo::lnx::atspi
