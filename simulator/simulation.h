// The helper's server on the desktop of a scene file, as the program `tarqo-ax-sim` serves it.
#pragma once

#include <string_view>

#include "server/server.h"
#include "simulator/scene_file.h"

namespace tarqo::sim {

class Simulation {
 public:
  explicit Simulation(SceneFile scene);

  /// Serves a request line as `Server::serve` does, then changes what the scene wants changed.
  [[nodiscard]] Served serve(std::string_view line);

  [[nodiscard]] Desktop& desktop() { return state_.desktop; }

 private:
  const SceneFile scene_;
  SceneState state_;
  Platform platform_ = state_.desktop.platform();
  Server server_{platform_};
  int served_ = 0;
};

}  // namespace tarqo::sim
