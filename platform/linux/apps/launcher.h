// Launches the program of a desktop entry and reports the application that comes of it.
#pragma once

#include <string>
#include <vector>

#include "platform/bundles.h"
#include "platform/linux/apps/desktop_entry.h"

namespace tarqo::lnx::apps {

/// Starts the entry's program with `extraArguments` behind its own, on a thread of its own, where
/// the child is also collected when it ends. The child knows by its environment which entry it is
/// and that accessibility is wanted: some toolkits ask only when they start.
///
/// The completion is called on that thread: with the application once it shows a window, which may
/// be that of another process, because many programs only ask a running instance and end; with an
/// error when the program cannot be started or fails before it shows one; after 9 s with the
/// program's own process if that still runs, or with neither. It may be empty.
void launch(const DesktopEntry& entry, const std::vector<std::string>& extraArguments,
            OpenCompletion completion);

}  // namespace tarqo::lnx::apps
