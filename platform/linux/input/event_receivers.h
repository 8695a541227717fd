// Who gets an event: the process that keystrokes go to, or whose window lies under the pointer, or
// whoever has grabbed the device. Only the X server is asked: what a window manager reports is
// late.
//
// X11 has no request that names who has grabbed a device. But the server checks for another
// client's grab, of the core protocol or of XInput 2, before it checks whether a window is shown:
// the request to grab for a window that is not shown fails with "already grabbed" or "not
// viewable", and changes nothing either way. The failure does not say whose the grab is. So a grab
// counts as the receiver's own only when the topmost popup on the screen is the receiver's, as its
// open menu or combo box is; tooltips, notifications and what is being dragged do not count as
// popups here. A button that is held down grabs the pointer too, for the window it was pressed in.
// One thing cannot be found out beforehand: that a single key or button has been claimed, as window
// managers do for their shortcuts.
//
// Worker thread only. The answers hold while the caller has a `x11::ServerGrab`; nothing here waits
// for anybody but the server.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"
#include "platform/process_id.h"

namespace tarqo::lnx::input {

enum class Reach : std::uint8_t {
  receiver,
  elsewhere,  ///< Another process gets it, nobody does, or the server did not answer.
  grabbed,    ///< Somebody has grabbed the device, and it is not known to be the receiver.
};

/// Where a keystroke goes.
[[nodiscard]] Reach reachOfKeys(x11::Server& server, Pid receiver);

/// Where an event of the mouse goes at a point, or where the pointer is when `at` is absent. The
/// decorations that the manager has put around a window count as the window.
[[nodiscard]] Reach reachOfPointer(x11::Server& server, Pid receiver, std::optional<Point> at);

}  // namespace tarqo::lnx::input
