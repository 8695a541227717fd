// A simulated desktop while a scene plays on it: what the scene has named, and what it does.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {

/// A desktop and the things on it that the scene has named, once they are there.
struct SceneState {
  Desktop desktop;
  std::map<std::string, Node*> nodes;  ///< Windows too.
  std::map<std::string, Window*> windows;
  std::map<std::string, ServerWindow*> otherWindows;
};

/// Something that a scene does, and something that it states of a `Target`. Reading a scene yields
/// these, so that whatever is wrong with the file is reported before anything is built.
using Effect = std::function<void(SceneState&)>;
template <typename Target>
using Setter = std::function<void(SceneState&, Target&)>;

using Effects = std::vector<Effect>;
template <typename Target>
using Setters = std::vector<Setter<Target>>;

inline void perform(const Effects& effects, SceneState& state) {
  for (const Effect& effect : effects) {
    effect(state);
  }
}

template <typename Target>
void apply(const Setters<Target>& setters, SceneState& state, Target& target) {
  for (const Setter<Target>& setter : setters) {
    setter(state, target);
  }
}

}  // namespace tarqo::sim
