// The monitors of the X server.
#pragma once

#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/window_server.h"

namespace tarqo::lnx::x11 {

/// All screens, the main one first: the one at the top left, whichever the user calls primary,
/// because the origin of all coordinates is there. Without RandR 1.5 the whole X screen is one
/// screen. Empty when the server is lost. A round trip or two.
[[nodiscard]] std::vector<Screen> readScreens(Server& server);

}  // namespace tarqo::lnx::x11
