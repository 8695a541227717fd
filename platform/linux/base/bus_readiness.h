// Waiting for a message bus no longer than one wants to.
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>

namespace tarqo::lnx {

/// Brings a connection that was begun to the point where calls can be made; false when it fails or
/// `limit` has passed. Without this the first call would wait for a stuck bus as long as sd-bus
/// likes, which is 90 s, whatever time limit the call has.
[[nodiscard]] bool becomesReady(sd_bus* bus, std::chrono::microseconds limit);

}  // namespace tarqo::lnx
