// A simulated desktop described by a JSON file; the format is docs/simulator.md.
#pragma once

#include <map>
#include <string>

#include "simulator/scene_field.h"
#include "simulator/stage.h"

namespace tarqo::sim {

class SceneFile {
 public:
  /// Throws `SceneError` with one sentence about the first thing that is wrong: where it stands in
  /// the file, and what should be there.
  explicit SceneFile(const std::string& json);

  /// As above, and when the file cannot be read.
  [[nodiscard]] static SceneFile read(const std::string& path);

  /// Builds the scene on a stage where nothing is yet.
  void build(Stage& stage) const { perform(build_, stage); }

  /// Does, or schedules, what the scene wants after that many requests.
  void changeAfter(int requests, Stage& stage) const;

 private:
  void readChange(const Field& object);

  Deeds build_;
  std::multimap<int, Deed> changes_;
};

}  // namespace tarqo::sim
