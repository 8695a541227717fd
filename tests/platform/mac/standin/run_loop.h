// The main loop, and the threads on which the system's own answers come.
#pragma once

#include <functional>

namespace standin {

/// Runs `deed` in the next turn of the main loop. Any thread.
void onMainLoop(std::function<void()> deed);

/// Runs `deed` on a thread of the system's. Any thread.
void onSystemThread(std::function<void()> deed);

}  // namespace standin
