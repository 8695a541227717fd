// Keeps a connection to another process open for longer than the helper may live.
#pragma once

#include "platform/process_id.h"

namespace tarqo::lnx::atspi {

/// A child process that holds a socket until its other end is closed. It has a session of its own
/// and no other open file, and no signal but SIGKILL ends it, so that what ends the helper spares
/// it.
class ConnectionKeeper {
 public:
  ConnectionKeeper() = default;
  ConnectionKeeper(const ConnectionKeeper&) = delete;
  ConnectionKeeper& operator=(const ConnectionKeeper&) = delete;
  /// Lets go of the socket.
  ~ConnectionKeeper();

  /// Does nothing when something is kept already, and when no process can be made.
  void keep(int socket);

  /// Leaves the child to itself, as the end of this process does.
  void abandon() { pid_ = 0; }

 private:
  Pid pid_ = 0;
};

}  // namespace tarqo::lnx::atspi
