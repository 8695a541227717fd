// The notifications heard from the target, and when. Shared by two threads: the main loop's notes,
// the worker reads.
#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace tarqo {

class Journal {
 public:
  /// What was heard after some instant.
  struct Heard {
    std::vector<std::string> names;  ///< Distinct, sorted.
    std::optional<Instant> at;       ///< Of the last one; null when nothing was heard.
  };

  /// Any thread. Beyond 500 entries the oldest are dropped, so that a flood cannot grow memory.
  void note(std::string_view name, Instant at);

  /// What was heard strictly after `since`. Any thread.
  [[nodiscard]] Heard lastHeard(Instant since) const;

 private:
  struct Entry {
    std::string name;
    Instant at;
  };

  mutable std::mutex heardLock_;
  std::deque<Entry> heard_;
};

}  // namespace tarqo
