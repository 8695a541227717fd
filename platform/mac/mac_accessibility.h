// The accessibility service over Apple's Accessibility API.
//
// Worker thread only: every call waits for the target, which may be what the main thread must not
// do. The callbacks of observers run on the main thread.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/mac/mac_element.h"
#include "platform/mac/mac_observers.h"

namespace tarqo::mac {

class MacAccessibility final : public Accessibility {
 public:
  /// Kept; outlives this.
  explicit MacAccessibility(Clock& clock) : clock_(clock) {}

  Element application(Pid pid, Duration messagingTimeout) override;
  std::optional<Value> attribute(const Element& element, std::string_view name) override;
  std::vector<std::optional<Value>> attributes(const Element& element,
                                               std::span<const std::string_view> names) override;
  std::vector<std::string> actionNames(const Element& element) override;

  /// An action that is not answered in time may still have been taken, and mostly has: its handler
  /// shows a menu or a dialog and waits in it. So the element is asked something else, for another
  /// time-out at most. Who answers that is busy with the action: it was taken. Who does not may
  /// still take it later, and `elementAt` remembers that, but for "AXRaise".
  bool perform(const Element& element, std::string_view action) override;

  bool set(const Element& element, std::string_view name, const Value& value) override;
  bool isSettable(const Element& element, std::string_view name) override;

  /// Waits as long as calls to the last `application` do. None also in a process that owes the
  /// answer to an action, once, within two seconds: whoever would click there instead could make
  /// the action happen twice.
  std::optional<Element> elementAt(Point point) override;

  std::optional<Pid> pidOf(const Element& element) override;
  std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;

  /// Null: the system has no call that reads ahead.
  std::unique_ptr<TreeRead> readTree(const Element& root, const TreeReadLimits& limits) override;

 private:
  [[nodiscard]] bool answers(const MacElement& element);
  [[nodiscard]] bool owesAnAnswer(Pid pid);

  Clock& clock_;
  CfRef<AXUIElementRef> systemWide_;
  /// Of the last application. Until there is one, less than the system's own limit of some seconds.
  Duration messagingTimeout_ = std::chrono::milliseconds(500);
  /// When a process left an action unanswered that must not happen twice.
  std::map<Pid, Instant> unanswered_;
  MacObservers observers_;
};

}  // namespace tarqo::mac
