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
#include "platform/mac/mac_web_trees.h"

namespace tarqo::mac {

class MacAccessibility final : public Accessibility {
 public:
  /// Kept; outlives this.
  Element application(Pid pid, Duration messagingTimeout) override;
  std::optional<Value> attribute(const Element& element, std::string_view name) override;
  std::vector<std::optional<Value>> attributes(const Element& element,
                                               std::span<const std::string_view> names) override;
  std::vector<std::string> actionNames(const Element& element) override;

  /// "Cannot complete" says no more than that the answer did not come in time: a handler that shows
  /// a menu or a dialog and waits in it keeps it from coming. Such an action is `pending`, whatever
  /// else the application answers meanwhile. Success means that the handler has returned, and says
  /// nothing of its effect. Waits for one messaging time-out.
  Performed perform(const Element& element, std::string_view action) override;

  /// Keys wait in the application's queue until it reads them: always false.
  bool isEndangeredByKeys(Pid pid) override;
  std::optional<Element> otherKeyWindow(const Element& window) override;
  bool takesTextByKeys(const Element& element) override;
  std::optional<Size> wheelStep(const Element& element) override;

  bool set(const Element& element, std::string_view name, const Value& value) override;
  bool isSettable(const Element& element, std::string_view name) override;

  /// Waits as long as calls to the last `application` do.
  std::optional<Element> elementAt(Point point) override;

  std::optional<Pid> pidOf(const Element& element) override;
  std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;

  /// Null: the system has no call that reads ahead.
  std::unique_ptr<TreeRead> readTree(const Element& root, const TreeReadLimits& limits) override;

 private:
  CfRef<AXUIElementRef> systemWide_;
  /// Of the last application. Until there is one, less than the system's own limit of some seconds.
  Duration messagingTimeout_ = std::chrono::milliseconds(500);
  MacObservers observers_;
  MacWebTrees webTrees_;
};

}  // namespace tarqo::mac
