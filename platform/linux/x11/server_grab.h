// Exclusive use of the X server for a moment.
#pragma once

#include "platform/linux/x11/connection.h"

namespace tarqo::lnx::x11 {

/// Keeps every other client's requests waiting while it lives, so that nothing changes between a
/// query and what is done on its answer. Events of the user's devices still come in. Its holder
/// must not wait for anybody but the server. May be nested.
class ServerGrab {
 public:
  explicit ServerGrab(Server& server) : server_(server) { server_.grab(); }
  ~ServerGrab() { server_.ungrab(); }
  ServerGrab(const ServerGrab&) = delete;
  ServerGrab& operator=(const ServerGrab&) = delete;

 private:
  Server& server_;
};

}  // namespace tarqo::lnx::x11
