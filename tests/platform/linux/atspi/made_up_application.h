// A small application for tests to spoil: a window with one of everything that is read in a way of
// its own, in the form of a recording.
#pragma once

#include <map>
#include <string>

#include "base/json.h"
#include "tests/platform/linux/atspi/recorded_application.h"

namespace tarqo::lnx::atspi {

class MadeUpApplication {
 public:
  /// As if it were of that toolkit: "gtk 3.24", "gtk 4.8", "Qt 5.15", "Chromium 120", "Gecko 120".
  explicit MadeUpApplication(const std::string& toolkit);

  /// An object, to be changed: the window is "1", the list "4", its rows "41" to "43".
  [[nodiscard]] Json& object(const std::string& id) { return objects_.at(id); }

  /// Adds an object to the end of its parent's children.
  Json& add(const std::string& id, const std::string& parent, int role,
            const std::string& interfaces = "");

  /// As it is now.
  [[nodiscard]] RecordedApplication application() const;

 private:
  Json header_;
  std::map<std::string, Json> objects_;
};

}  // namespace tarqo::lnx::atspi
