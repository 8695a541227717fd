// The extensions of the X server that are in use.
#pragma once

namespace tarqo::lnx::x11 {

class Server;

/// Which extensions the server has, in a version that serves.
struct Extensions {
  bool composite = false;
  bool keyboard = false;  ///< XKB.
  bool randrMonitors = false;
  bool rawKeys = false;  ///< XInput 2.1, which reports every key whoever has grabbed the keyboard.
  bool resourcePids = false;
  bool shmDescriptors = false;  ///< Shared memory passed as a file descriptor, over a local socket.
  bool test = false;
};

/// For a new connection. Several round trips.
[[nodiscard]] Extensions readExtensions(Server& server);

}  // namespace tarqo::lnx::x11
