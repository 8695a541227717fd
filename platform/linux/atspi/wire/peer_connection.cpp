#include "platform/linux/atspi/wire/peer_connection.h"

#include <sys/socket.h>

#include <string_view>

namespace tarqo::lnx::atspi {
namespace {

/// Of one local socket, not of a list of places to try.
bool isLocalSocket(std::string_view address) {
  return (address.starts_with("unix:path=") || address.starts_with("unix:abstract=")) &&
         address.find(';') == std::string_view::npos;
}

/// The process that began to listen on the other side of a connection; 0 when the system does not
/// report it.
Pid listener(sd_bus* bus) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  const int result = getsockopt(sd_bus_get_fd(bus), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
  return result == 0 ? credentials.pid : 0;
}

}  // namespace

BusHandle openPeerConnection(const PeerAddress& address) {
  sd_bus* made = nullptr;
  if (!isLocalSocket(address.text) || sd_bus_new(&made) < 0) {
    return nullptr;
  }
  BusHandle direct(made);
  if (sd_bus_set_address(made, address.text.c_str()) < 0 || sd_bus_start(made) < 0 ||
      address.pid == 0 || listener(made) != address.pid) {
    return nullptr;
  }
  return direct;
}

}  // namespace tarqo::lnx::atspi
