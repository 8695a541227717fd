#include "platform/linux/atspi/linux_accessibility.h"

#include <utility>

namespace tarqo::lnx {

LinuxAccessibility::LinuxAccessibility(WindowLocator& locator, AtspiEvents& events,
                                       InputEvents* keyboard)
    : events_(events),
      reader_(bus_, locator),
      debts_(bus_),
      relations_(reader_, events),
      application_(reader_, events, relations_),
      attributes_(reader_, relations_, application_),
      hitTest_(reader_, relations_, application_),
      focus_(reader_, relations_, hitTest_, debts_, keyboard),
      typing_(reader_, focus_, keyboard),
      actions_(reader_, attributes_, debts_, focus_, typing_) {}

Element LinuxAccessibility::application(Pid pid, Duration messagingTimeout) {
  return makeApplication(pid, messagingTimeout);
}

std::optional<Value> LinuxAccessibility::attribute(const Element& element, std::string_view name) {
  std::vector<std::optional<Value>> values = attributes(element, {&name, 1});
  return values.empty() ? std::nullopt : std::move(values.front());
}

std::vector<std::optional<Value>> LinuxAccessibility::attributes(
    const Element& element, std::span<const std::string_view> names) {
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(element);
  if (ours == nullptr) {
    return {};
  }
  if (!ours->isApplication()) {
    return attributes_.read(ours->parts(), names);
  }
  std::vector<std::optional<Value>> values;
  if (reader_.applications().of(ours->parts().pid, ours->parts().timeout).empty()) {
    return values;
  }
  for (const std::string_view name : names) {
    values.push_back(application_.attribute(ours->parts(), name));
  }
  return values;
}

std::vector<std::string> LinuxAccessibility::actionNames(const Element& element) {
  const AtspiElement::Parts* object = beginCall(element);
  return object == nullptr ? std::vector<std::string>() : actions_.namesOf(*object);
}

Performed LinuxAccessibility::perform(const Element& element, std::string_view action) {
  const AtspiElement::Parts* object = beginCall(element);
  return object == nullptr ? Performed::refused : actions_.perform(*object, action);
}

bool LinuxAccessibility::isEndangeredByKeys(Pid pid) { return debts_.isEndangeredByKeys(pid); }

bool LinuxAccessibility::isSettable(const Element& element, std::string_view name) {
  if (isApplication(element)) {
    return name == "AXFrontmost";
  }
  const AtspiElement::Parts* object = beginCall(element);
  return object != nullptr && actions_.isSettable(*object, name);
}

bool LinuxAccessibility::set(const Element& element, std::string_view name, const Value& value) {
  if (isApplication(element)) {
    // The window manager brings an application to the front, when its window is raised.
    return name == "AXFrontmost" && value.as<bool>() != nullptr;
  }
  const AtspiElement::Parts* object = beginCall(element);
  return object != nullptr && actions_.set(*object, name, value);
}

std::optional<Element> LinuxAccessibility::elementAt(Point point) {
  return hitTest_.elementAt(point);
}

std::optional<Pid> LinuxAccessibility::pidOf(const Element& element) {
  const AtspiElement* ours = atspiElement(element);
  return ours == nullptr ? std::nullopt : std::optional(ours->parts().pid);
}

std::unique_ptr<Observer> LinuxAccessibility::observe(Pid pid, NotificationCallback callback) {
  return events_.observe(pid, std::move(callback));
}

std::unique_ptr<TreeRead> LinuxAccessibility::readTree(const Element& root,
                                                       const TreeReadLimits& limits) {
  const AtspiElement::Parts* object = beginCall(root);
  return object == nullptr ? nullptr : reader_.readTree(*object, limits);
}

bool LinuxAccessibility::isApplication(const Element& element) {
  const AtspiElement* ours = atspiElement(element);
  return ours != nullptr && ours->isApplication();
}

const AtspiElement::Parts* LinuxAccessibility::beginCall(const Element& element) {
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(element);
  return ours == nullptr || ours->isApplication() ? nullptr : &ours->parts();
}

}  // namespace tarqo::lnx
