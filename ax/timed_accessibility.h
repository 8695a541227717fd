// An accessibility service that asks nothing more once the time of a request is used up.
#pragma once

#include "ax/target_time.h"
#include "platform/accessibility.h"

namespace tarqo {

/// Hands every call on, and counts what it takes; what there is no time for gives the empty result.
/// Reading a tree (`readTree`) adds the time until the deadline given for it. Worker thread only.
class TimedAccessibility : public Accessibility {
 public:
  TimedAccessibility(Accessibility& service, TargetTime& time) : service_(service), time_(time) {}

  [[nodiscard]] Element application(Pid pid, Duration messagingTimeout) override;
  [[nodiscard]] std::optional<Value> attribute(const Element& element,
                                               std::string_view name) override;
  [[nodiscard]] std::vector<std::optional<Value>> attributes(
      const Element& element, std::span<const std::string_view> names) override;
  [[nodiscard]] std::vector<std::string> actionNames(const Element& element) override;
  [[nodiscard]] Performed perform(const Element& element, std::string_view action) override;
  [[nodiscard]] bool isEndangeredByKeys(Pid pid) override;
  [[nodiscard]] std::optional<Element> otherKeyWindow(const Element& window) override;
  [[nodiscard]] bool takesTextByKeys(const Element& element) override;
  [[nodiscard]] std::optional<Size> wheelStep(const Element& element) override;
  [[nodiscard]] bool set(const Element& element, std::string_view name,
                         const Value& value) override;
  [[nodiscard]] bool isSettable(const Element& element, std::string_view name) override;
  [[nodiscard]] std::optional<Element> elementAt(Point point) override;
  [[nodiscard]] std::optional<Pid> pidOf(const Element& element) override;
  [[nodiscard]] std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;
  [[nodiscard]] std::unique_ptr<TreeRead> readTree(const Element& root,
                                                   const TreeReadLimits& limits) override;

 private:
  Accessibility& service_;
  TargetTime& time_;
};

}  // namespace tarqo
