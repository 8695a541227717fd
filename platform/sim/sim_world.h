// What the services of one simulated desktop share.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/sim/sim_application.h"
#include "platform/sim/sim_clock.h"
#include "platform/sim/sim_journal.h"
#include "platform/sim/sim_windows.h"

namespace tarqo::sim {

/// One process's listener; see `tarqo::Observer`.
struct Listener {
  Pid pid = 0;
  NotificationCallback callback;
  /// Null for the application as a whole.
  std::set<std::pair<const Node*, std::string>> subscriptions;
};

struct World {
  VirtualClock clock;
  Journal journal{clock};
  WindowServerService windows;
  std::vector<std::unique_ptr<App>> apps;  ///< All there ever were, in the order of their start.
  App* frontmost = nullptr;
  std::vector<std::weak_ptr<Listener>> listeners;
  Pid nextPid = 500;

  /// The live application with that process id; null when there is none.
  [[nodiscard]] App* appOf(Pid pid) const;
  [[nodiscard]] App* appOf(const ApplicationId& id) const;

  /// Calls the listeners of `app` now: those of the application, and of `node` when given.
  void deliver(const App& app, const Node* node, const std::string& notification);
};

}  // namespace tarqo::sim
