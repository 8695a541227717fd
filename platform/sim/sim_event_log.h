// What was done to the simulated desktop, as lines that a test can compare.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/sim/sim_clock.h"

namespace tarqo::sim {

enum class Topic {
  input,          ///< "move 412,300", "down(1) 412,300", "key 36 down flags=0x0", "text 한 down"
  accessibility,  ///< "perform AXPress AXButton \"Save\"", "set AXValue AXTextField = abc"
  workspace,      ///< "activate com.example.Notes", "unhide com.example.Notes"
  bundles,        ///< "open /Applications/Notes.app in background", "open site com.x https://..."
  processes,      ///< "start /usr/bin/tool -x", "terminate /usr/bin/tool", "remove /tmp/a.png"
  permissions,    ///< "prompt accessibility", "request capture"
  capture,        ///< "window image 12 best", "display region 0,0 800x600", "shareable windows"
  standardError   ///< What a backend would have written to standard error.
};

class EventLog {
 public:
  explicit EventLog(VirtualClock& clock) : clock_(clock) {}

  void note(Topic topic, std::string line);

  /// Every line in order.
  [[nodiscard]] std::vector<std::string> lines() const;
  /// The lines of one topic in order.
  [[nodiscard]] std::vector<std::string> lines(Topic topic) const;
  /// The same, each behind the whole milliseconds since the desktop began: "180 move 412,300".
  [[nodiscard]] std::vector<std::string> timedLines(Topic topic) const;
  /// How many lines begin with `start`.
  [[nodiscard]] std::size_t count(std::string_view start) const;
  void clear() { entries_.clear(); }

 private:
  struct Entry {
    Topic topic;
    Duration at;
    std::string line;
  };

  VirtualClock& clock_;
  std::vector<Entry> entries_;
};

/// A coordinate as the lines write it: whole values without a fraction, others with up to three
/// digits.
[[nodiscard]] std::string numberText(double number);

}  // namespace tarqo::sim
