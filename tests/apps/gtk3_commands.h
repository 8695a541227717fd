// Changes that a test makes to the GTK 3 test application from outside, past any accessibility.
#pragma once

#include <gtk/gtk.h>

#include "tests/apps/gtk3_changes.h"

namespace tarqo::gtk3app {

/// Carries out the lines of standard input, one after another, until its end. Each is answered by
/// one line: "done COMMAND" when the X server has the change, "failed COMMAND" when it never came
/// or the line is wrong. Names are those that widgets show; "_" stands for a blank in them.
///
///   move X Y · resize WIDTH HEIGHT · raise · minimise · above on|off       `window`
///   open TITLE X Y · close TITLE             another window, the newest of that title
///   cover X Y WIDTH HEIGHT · uncover         a popup that no window manager knows
///   dismiss                                  closes all menus
///   tab NAME                                 shows that page
///   scroll NAME Y                            the area that holds it, to Y pixels from its top
///   rename NAME NEW · enable NAME · disable NAME · show NAME · hide NAME
///   swap NAME NAME                           two of one row
///   detach NAME · attach                     takes it out of its row, and brings it back
///   replace NAME                             by a new button at the same place
///   watch                                    as in gtk3_watch.h
///   sync                                     nothing; what arrived before has been handled
///
/// `own` starts the changes that only this application knows, and is asked first.
void readCommands(GtkWindow* window, StartChange own = nullptr);

}  // namespace tarqo::gtk3app
