// An application as script/record-application wrote it down: answers the calls that the recording
// holds an answer to.
//
// What depends on a place is worked out from the recorded places: the child at a point is the last
// of those that show and hold it.
#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/json.h"
#include "platform/linux/x11/window_locator.h"
#include "tests/platform/linux/atspi/recorded_objects.h"

namespace tarqo::lnx::atspi {

class RecordedApplication {
 public:
  /// Reads a recording; throws when the text is not one.
  explicit RecordedApplication(std::istream& lines);

  /// Its windows as the X server showed them, front to back; of which process, it does not say.
  [[nodiscard]] std::vector<x11::LocatedWindow> windows() const;

  [[nodiscard]] std::string toolkit() const { return header_.at("toolkit"); }
  [[nodiscard]] std::string version() const { return header_.at("version"); }

  /// As `ScriptedBus::Answer`.
  int answer(sd_bus_message* call) const;

 private:
  [[nodiscard]] const Json* objectAt(std::string_view path) const;
  int shownChildren(sd_bus_message* call, const Json& object) const;
  int childAtPoint(sd_bus_message* call, const Json& object) const;
  int property(sd_bus_message* call, const Json& object) const;
  int cacheItems(sd_bus_message* call) const;

  Json header_;
  std::vector<Json> objects_;
  std::unordered_map<std::string, std::size_t> byId_;
};

}  // namespace tarqo::lnx::atspi
