// The desktops on which transcripts are played, by name.
#pragma once

#include <string>
#include <vector>

#include "platform/sim/sim_desktop.h"

namespace tarqo::transcripts {

/// Builds a scene on a fresh desktop; false when none has that name.
[[nodiscard]] bool buildScene(const std::string& name, sim::Desktop& desktop);

[[nodiscard]] std::vector<std::string> sceneNames();

}  // namespace tarqo::transcripts
