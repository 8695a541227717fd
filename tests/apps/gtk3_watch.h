// What of the pointer and the keyboard reaches the GTK 3 test application.
#pragma once

namespace tarqo::gtk3app {

/// From now on logs "event KIND NAME" for each "press", "release", "key" and "scroll" that the
/// application gets, in whichever window: with the innermost name of what the pointer is on, or of
/// what has the focus. An event is logged before it is handled.
void watchEvents();

}  // namespace tarqo::gtk3app
