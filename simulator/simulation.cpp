#include "simulator/simulation.h"

#include <utility>

namespace tarqo::sim {

Simulation::Simulation(SceneFile scene) : scene_(std::move(scene)) {
  scene_.build(state_);
  scene_.changeAfter(0, state_);
}

Served Simulation::serve(std::string_view line) {
  Served served = server_.serve(line);
  scene_.changeAfter(++served_, state_);
  // The records of what was done are for tests; here nobody reads them, and they would grow for
  // ever.
  state_.desktop.eventLog().clear();
  state_.desktop.input().sourceTexts.clear();
  return served;
}

}  // namespace tarqo::sim
