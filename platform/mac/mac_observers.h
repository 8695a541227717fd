// Observers of other processes, heard on the main run loop.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <list>
#include <memory>
#include <mutex>

#include "platform/accessibility.h"

namespace tarqo::mac {

/// Makes observers; outlives them and the main loop. Worker thread only.
class MacObservers {
 public:
  /// Null when the system refuses. An observer must not be destroyed by its own callback.
  [[nodiscard]] std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback);

  /// What the system's callback is given to find its observer by. It may arrive while, or just
  /// after, the worker lets go of the observer, so a slot lives as long as this object and serves
  /// one observer after another.
  struct Slot {
    std::mutex lock;                   ///< Held while the callback runs.
    AXObserverRef observer = nullptr;  ///< The one that may be heard; null in a free slot.
    NotificationCallback callback;
  };

 private:
  [[nodiscard]] Slot& freeSlot();

  std::list<Slot> slots_;
};

}  // namespace tarqo::mac
