// How a simulated element answers an accessibility action.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"

namespace tarqo::sim {

/// How long after its cause a notification is heard, unless a scene says otherwise: on a real
/// desktop it is never the same instant.
inline constexpr Duration kLatency = std::chrono::milliseconds(1);

/// A deed whose copies share what it remembers; those of a plain std::function each have their own.
template <typename... Arguments>
std::function<void(Arguments...)> sharing(std::function<void(Arguments...)> deed) {
  if (!deed) {
    return deed;
  }
  return [one = std::make_shared<std::function<void(Arguments...)>>(std::move(deed))](
             Arguments... arguments) { (*one)(arguments...); };
}

/// Taken at once and without any effect, unless the scene says more.
class Action {
 public:
  explicit Action(std::string name) : name_(std::move(name)) {}

  /// `perform` yields false, and nothing happens.
  Action& refused(bool refused = true) {
    refused_ = refused;
    return *this;
  }

  /// The application is busy with it for that long, and its effects come at the end of that.
  /// `perform` waits as long as it would for a real one; an action that takes longer is pending.
  Action& takes(Duration duration) {
    takes_ = duration;
    return *this;
  }

  /// What the application does, `delay` after the call.
  Action& effect(std::function<void()> effect, Duration delay = {}) {
    effect_ = sharing(std::move(effect));
    effectDelay_ = delay;
    return *this;
  }

  /// A notification that the action causes, `delay` after the call.
  Action& announces(std::string notification, Duration delay = kLatency) {
    announced_.emplace_back(std::move(notification), delay);
    return *this;
  }

  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  friend class AccessibilityService;
  friend class Node;
  friend class Pointer;

  std::string name_;
  bool refused_ = false;
  Duration takes_{};
  std::function<void()> effect_;
  Duration effectDelay_{};
  std::vector<std::pair<std::string, Duration>> announced_;
};

}  // namespace tarqo::sim
