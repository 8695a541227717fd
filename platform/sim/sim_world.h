// What the services of one simulated desktop share.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/sim_application.h"
#include "platform/sim/sim_clock.h"
#include "platform/sim/sim_event_log.h"
#include "platform/sim/sim_windows.h"

namespace tarqo::sim {

/// One process's listener; see `tarqo::Observer`.
struct Listener {
  Pid pid = 0;
  NotificationCallback callback;
  /// The identity is null for the application as a whole.
  std::set<std::pair<std::shared_ptr<const Identity>, std::string>> subscriptions;
};

struct Process {
  std::optional<Pid> parent;
  std::optional<std::string> executable;
};

struct World {
  VirtualClock clock;
  EventLog eventLog{clock};
  WindowServerService windows;
  std::vector<std::unique_ptr<App>> apps;  ///< All there ever were, in the order of their start.
  App* frontmost = nullptr;
  /// The process that has all keystrokes, or all the pointer's events, sent to itself, whatever is
  /// in front or under the pointer: an open menu, a launcher, a simple locker.
  std::optional<Pid> keyboardGrab;
  std::optional<Pid> pointerGrab;
  std::vector<std::weak_ptr<Listener>> listeners;
  std::map<Pid, Process> processes;
  Pid nextPid = 500;

  /// The live application with that process id; null when there is none.
  [[nodiscard]] App* appOf(Pid pid) const;
  [[nodiscard]] App* appOf(const ApplicationId& id) const;

  /// The process that keystrokes go to; null when nobody gets them.
  [[nodiscard]] std::optional<Pid> keyReceiver() const;

  /// Calls the listeners of `app` now: those of the whole application, and those of the element.
  void deliver(const App& app, const std::shared_ptr<const Identity>& element,
               const std::string& notification);
};

}  // namespace tarqo::sim
