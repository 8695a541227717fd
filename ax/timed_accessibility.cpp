#include "ax/timed_accessibility.h"

#include <utility>

namespace tarqo {
namespace {

using Call = TargetTime::Call;

/// An action is waited for twice as long as a read.
constexpr int kCallsOfAnAction = 2;

class TimedObserver : public Observer {
 public:
  TimedObserver(std::unique_ptr<Observer> observer, TargetTime& time)
      : observer_(std::move(observer)), time_(time) {}

  bool add(const Element& element, std::string_view notification) override {
    if (!time_.allows()) {
      return false;
    }
    const Call call(time_);
    return observer_->add(element, notification);
  }

 private:
  std::unique_ptr<Observer> observer_;
  TargetTime& time_;
};

}  // namespace

Element TimedAccessibility::application(Pid pid, Duration messagingTimeout) {
  const Call call(time_);
  return service_.application(pid, messagingTimeout);
}

std::optional<Value> TimedAccessibility::attribute(const Element& element, std::string_view name) {
  if (!time_.allows()) {
    return std::nullopt;
  }
  const Call call(time_);
  return service_.attribute(element, name);
}

std::vector<std::optional<Value>> TimedAccessibility::attributes(
    const Element& element, std::span<const std::string_view> names) {
  if (!time_.allows()) {
    return {};
  }
  const Call call(time_);
  return service_.attributes(element, names);
}

std::vector<std::string> TimedAccessibility::actionNames(const Element& element) {
  if (!time_.allows()) {
    return {};
  }
  const Call call(time_);
  return service_.actionNames(element);
}

Performed TimedAccessibility::perform(const Element& element, std::string_view action) {
  if (!time_.allows(kCallsOfAnAction)) {
    return Performed::refused;
  }
  const Call call(time_);
  return service_.perform(element, action);
}

bool TimedAccessibility::isEndangeredByKeys(Pid pid) { return service_.isEndangeredByKeys(pid); }

std::optional<Element> TimedAccessibility::otherKeyWindow(const Element& window) {
  // Asked before every key of a text, and no key may go out for want of the answer.
  return service_.otherKeyWindow(window);
}

bool TimedAccessibility::takesTextByKeys(const Element& element) {
  if (!time_.allows()) {
    return false;
  }
  const Call call(time_);
  return service_.takesTextByKeys(element);
}

std::optional<Size> TimedAccessibility::wheelStep(const Element& element) {
  if (!time_.allows()) {
    return std::nullopt;
  }
  const Call call(time_);
  return service_.wheelStep(element);
}

bool TimedAccessibility::set(const Element& element, std::string_view name, const Value& value) {
  if (!time_.allows()) {
    return false;
  }
  const Call call(time_);
  return service_.set(element, name, value);
}

bool TimedAccessibility::isSettable(const Element& element, std::string_view name) {
  if (!time_.allows()) {
    return false;
  }
  const Call call(time_);
  return service_.isSettable(element, name);
}

std::optional<Element> TimedAccessibility::elementAt(Point point) {
  if (!time_.allows()) {
    return std::nullopt;
  }
  const Call call(time_);
  return service_.elementAt(point);
}

std::optional<Pid> TimedAccessibility::pidOf(const Element& element) {
  return service_.pidOf(element);
}

std::unique_ptr<Observer> TimedAccessibility::observe(Pid pid, NotificationCallback callback) {
  if (!time_.allows()) {
    return nullptr;
  }
  const Call call(time_);
  std::unique_ptr<Observer> observer = service_.observe(pid, std::move(callback));
  return observer ? std::make_unique<TimedObserver>(std::move(observer), time_) : nullptr;
}

std::unique_ptr<TreeRead> TimedAccessibility::readTree(const Element& root,
                                                       const TreeReadLimits& limits) {
  time_.extend(limits.deadline - time_.now());
  return service_.readTree(root, limits);
}

}  // namespace tarqo
