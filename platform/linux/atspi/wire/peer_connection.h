// Connections to one application past the accessibility bus, at the address that it reports.
#pragma once

#include <string>

#include "platform/accessibility.h"
#include "platform/linux/base/sd_bus.h"

namespace tarqo::lnx::atspi {

/// Where an application reports that it listens. The report is not trusted: see
/// `openPeerConnection`.
struct PeerAddress {
  std::string text;  ///< A D-Bus address; empty when it reported none.
  Pid pid = 0;       ///< The process that must listen there.
};

/// A new connection to the application; null when the address is empty or not that of a local
/// socket, and when another process listens there. Does not wait: messages sent before the
/// connection stands are sent as soon as it does. Any thread.
[[nodiscard]] BusHandle openPeerConnection(const PeerAddress& address);

}  // namespace tarqo::lnx::atspi
