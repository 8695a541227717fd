// The login session, as the window server tells it.
#pragma once

#include "platform/window_server.h"

namespace tarqo::mac {

/// Any thread; waits for nothing. Knows nothing outside a graphical session (over ssh, in a
/// daemon).
[[nodiscard]] LoginSession readLoginSession();

}  // namespace tarqo::mac
