// Who gets an event: the process that keystrokes go to, or whose window lies under the pointer, or
// whoever has grabbed the device. By the X server alone: what a window manager says of it is late.
//
// X11 has no question for who has grabbed a device. But the server looks for a grab of another
// client, of the core protocol or of XInput 2, before it looks whether a window is shown: the
// request to grab for a window that is not shown fails with "already grabbed" or "not viewable",
// and changes nothing either way. Whose the grab is does not show. So a grab counts as the
// receiver's own only when the topmost popup on the screen is the receiver's, as its open menu or
// combo box is; tooltips, notifications and what is being dragged are no popups in this. A button
// that is held down grabs the pointer too, for the window it was pressed in. What nobody can tell
// beforehand is that a single key or button has been claimed, as window managers do for their
// shortcuts.
//
// Worker thread only. What is asked here holds as long as the caller keeps the server to himself
// (`ServerGrab`); nothing here waits for anybody but the server.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/geometry.h"
#include "platform/linux/x11/x_display.h"
#include "platform/process_id.h"

namespace tarqo::lnx {

enum class Reach : std::uint8_t {
  receiver,
  elsewhere,  ///< Another process gets it, nobody does, or the server does not tell.
  grabbed,    ///< Somebody has grabbed the device, and it is not known to be the receiver.
};

/// Where a keystroke goes.
[[nodiscard]] Reach reachOfKeys(XServer& server, Pid receiver);

/// Where an event of the mouse goes at that point; none: where the pointer is. Of a window all
/// counts that its manager has put around it.
[[nodiscard]] Reach reachOfPointer(XServer& server, Pid receiver, std::optional<Point> at);

/// The process that has the keyboard focus, whoever may have grabbed the keyboard.
[[nodiscard]] std::optional<Pid> focusedProcess(XServer& server);

}  // namespace tarqo::lnx
