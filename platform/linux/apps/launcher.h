// Launches the program of a desktop entry and reports the application that comes of it.
#pragma once

#include <string>
#include <vector>

#include "platform/bundles.h"
#include "platform/clock.h"
#include "platform/linux/apps/desktop_entry.h"

namespace tarqo::lnx::apps {

/// Starts the entry's program with `extraArguments` behind its own, on a new thread, which also
/// collects the child when it ends. The child's environment names its entry and says that
/// accessibility is wanted: some toolkits look only when they start.
///
/// The completion is called on that thread: with the application once it shows a window, which may
/// be that of another process, because many programs only ask a running instance and end; with an
/// error when the program cannot be started or fails before it shows one; after 9 s with the
/// program's own process if that still runs, or with neither. It may be empty.
///
/// Where a splash screen is all that came of it by then, the completion has an error that says so.
///
/// `clock` is kept by reference and outlives the thread.
void launch(Clock& clock, const DesktopEntry& entry, const std::vector<std::string>& extraArguments,
            OpenCompletion completion);

/// The same of an entry whose program somebody has started already, without starting it once more.
void awaitLaunched(Clock& clock, const DesktopEntry& entry, Pid program, OpenCompletion completion);

}  // namespace tarqo::lnx::apps
