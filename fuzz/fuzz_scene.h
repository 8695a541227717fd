// The desktop on which requests are fuzzed, and what can go wrong on it.
#pragma once

#include <string_view>

#include "platform/sim/sim_desktop.h"

namespace tarqo::fuzz {

/// Builds a small desktop, then one fault for each letter that fuzz_scene.cpp knows; others mean
/// nothing.
void buildScene(sim::Desktop& desktop, std::string_view faults);

}  // namespace tarqo::fuzz
