// A simulated desktop under a scene file's direction: what the scene has named, and what is done to
// it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {

/// A desktop and the things on it that the scene has named, once they are there.
struct Stage {
  Desktop desktop;
  std::map<std::string, Node*> nodes;  ///< Windows too.
  std::map<std::string, Window*> windows;
  std::map<std::string, ServerWindow*> otherWindows;
};

/// Something that a scene does, or a fact that it states of a `Target`. Reading a scene yields
/// these, so that whatever is wrong with the file is told before anything is built.
using Deed = std::function<void(Stage&)>;
template <typename Target>
using Fact = std::function<void(Stage&, Target&)>;

using Deeds = std::vector<Deed>;
template <typename Target>
using Facts = std::vector<Fact<Target>>;

inline void perform(const Deeds& deeds, Stage& stage) {
  for (const Deed& deed : deeds) {
    deed(stage);
  }
}

template <typename Target>
void apply(const Facts<Target>& facts, Stage& stage, Target& target) {
  for (const Fact<Target>& fact : facts) {
    fact(stage, target);
  }
}

}  // namespace tarqo::sim
