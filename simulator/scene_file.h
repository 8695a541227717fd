// A simulated desktop described by a JSON file; the format is docs/simulator.md.
#pragma once

#include <map>
#include <string>

#include "simulator/scene_field.h"
#include "simulator/scene_state.h"

namespace tarqo::sim {

class SceneFile {
 public:
  /// Throws `SceneError` with one sentence about the first thing that is wrong: where it stands in
  /// the file, and what should be there.
  explicit SceneFile(const std::string& json);

  /// As above, and when the file cannot be read.
  [[nodiscard]] static SceneFile read(const std::string& path);

  /// Builds the scene where nothing is yet.
  void build(SceneState& state) const { perform(build_, state); }

  /// Does, or schedules, what the scene wants after that many requests.
  void changeAfter(int requests, SceneState& state) const;

 private:
  void readChange(const Field& object);

  Effects build_;
  std::multimap<int, Effect> changes_;
};

}  // namespace tarqo::sim
