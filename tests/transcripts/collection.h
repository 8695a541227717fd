// The transcripts in this folder, and the scenes they are played on.
#pragma once

#include <string>
#include <vector>

#include "tests/transcripts/transcript.h"

namespace tarqo::transcripts {

/// The names of all transcripts, in order.
[[nodiscard]] std::vector<std::string> transcriptNames();
[[nodiscard]] Transcript transcriptNamed(const std::string& name);

/// The names of all scenes, in order.
[[nodiscard]] std::vector<std::string> sceneNames();
/// The file of a scene, whether or not there is one.
[[nodiscard]] std::string scenePath(const std::string& name);

[[nodiscard]] std::string readFile(const std::string& path);

}  // namespace tarqo::transcripts
