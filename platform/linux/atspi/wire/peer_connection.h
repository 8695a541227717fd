// Connections to one application past the accessibility bus, at the address it tells of itself.
#pragma once

#include <string>

#include "platform/accessibility.h"
#include "platform/linux/base/sd_bus.h"

namespace tarqo::lnx::atspi {

/// Where an application tells that it listens. What it tells is not trusted: see
/// `openPeerConnection`.
struct PeerAddress {
  std::string text;  ///< A D-Bus address; empty when it told none.
  Pid pid = 0;       ///< The process that must listen there.
};

/// A new connection to the application; null when it told no address, or none of a local socket, or
/// when another process listens there. It is not awaited: what is sent before it stands is sent as
/// soon as it does. Any thread.
///
/// A D-Bus address can name a program to run or a host to look up; an application must not bring
/// the helper to either.
[[nodiscard]] BusHandle openPeerConnection(const PeerAddress& address);

}  // namespace tarqo::lnx::atspi
