#include "simulator/simulation.h"

#include <utility>

namespace tarqo::sim {

Simulation::Simulation(SceneFile scene) : scene_(std::move(scene)) {
  scene_.build(stage_);
  scene_.changeAfter(0, stage_);
}

Served Simulation::serve(std::string_view line) {
  Served served = server_.serve(line);
  scene_.changeAfter(++served_, stage_);
  // The records of what was done are for tests; here nobody reads them, and they would grow for
  // ever.
  stage_.desktop.journal().clear();
  stage_.desktop.input().sourceTexts.clear();
  return served;
}

}  // namespace tarqo::sim
