// Which process made an X window.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>

#include "platform/linux/x11/connection.h"
#include "platform/process_id.h"

namespace tarqo::lnx::x11 {

/// The processes that made the windows, by the bits that name the client in the number of a window
/// (`clientOf`). Clients whose process the server does not know are missing, as are those of other
/// machines.
[[nodiscard]] std::unordered_map<std::uint32_t, Pid> clientPids(
    Server& server, std::span<const xcb_window_t> windows);

/// The bits in the number of a window that name the client.
[[nodiscard]] std::uint32_t clientOf(Server& server, xcb_window_t window);

/// The process that made the window, as the server knows it, else as the window itself states;
/// nullopt when neither does. A round trip.
[[nodiscard]] std::optional<Pid> ownerOf(Server& server, xcb_window_t window);

}  // namespace tarqo::lnx::x11
