// The tests on a thread like the helper's worker, beside a main thread that runs the main loop.
#pragma once

#include <functional>

#include "platform/main_loop.h"

namespace tarqo::contract {

/// Never returns: ends the process with what `tests` gives. Main thread only.
void runBesideMainLoop(MainLoop& loop, std::function<int()> tests);

}  // namespace tarqo::contract
