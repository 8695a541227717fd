// The pixels of the target window, and of nothing else.
#pragma once

#include <string>

#include "platform/images.h"
#include "session/session.h"

namespace tarqo {

/// A picture of the target window.
struct WindowImage {
  Image image;
  Rect bounds;     ///< Where the window was, in screen points.
  std::string at;  ///< When it was taken, as results spell it.
};

/// Captures the target's window, which is at `bounds` by its own account. Brings a covered window
/// forward once.
///
/// Throws "app_closed", "screen_capture_stale", "window_covered", "window_not_visible",
/// "window_capture_failed", and what `Target::activate` throws. Waits up to 1.2 s for the window to
/// come to rest, and up to 13 s for a picture; see the constants in capture.cpp. Worker thread.
[[nodiscard]] WindowImage captureWindow(Session& session, const Rect& bounds);

}  // namespace tarqo
