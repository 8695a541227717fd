#include "platform/linux/atspi/linux_accessibility.h"

#include <utility>

namespace tarqo::lnx::atspi {

LinuxAccessibility::LinuxAccessibility(x11::WindowLocator& locator, Notifications& notifications,
                                       Clock& clock, InputEvents* keyboard,
                                       x11::PicturedPopups* popups)
    : notifications_(notifications),
      popups_(popups),
      bus_(clock),
      reader_(bus_, locator),
      pending_(bus_),
      relations_(reader_, notifications),
      application_(reader_, notifications, relations_),
      bareWindows_(locator, clock),
      attributes_(reader_, relations_, application_),
      hitTest_(reader_, relations_, application_),
      focus_(reader_, relations_, hitTest_, pending_, keyboard),
      typing_(reader_, focus_, keyboard),
      actions_(reader_, attributes_, pending_, focus_, typing_),
      wheel_(reader_) {}

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
  const ObjectHandle* ours = handleOf(element);
  if (ours == nullptr) {
    return {};
  }
  if (ours->isBareWindow()) {
    std::vector<std::optional<Value>> values = bareWindows_.read(*ours, names);
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (names[i] == "AXDocument") {
        std::optional<std::string> document = application_.documentOf(*ours);
        values[i] = document ? std::optional(Value{*std::move(document)}) : std::nullopt;
      }
    }
    return values;
  }
  if (!ours->isApplication()) {
    return attributes_.read(*ours, names);
  }
  std::vector<std::optional<Value>> values;
  if (reader_.registry().registrationsOf(ours->pid, ours->timeout).empty() &&
      reader_.locator().windowsOf(ours->pid).empty()) {
    return values;
  }
  for (const std::string_view name : names) {
    values.push_back(application_.attribute(*ours, name));
  }
  return values;
}

std::vector<std::string> LinuxAccessibility::actionNames(const Element& element) {
  if (const ObjectHandle* window = bareWindowIn(element)) {
    return bareWindows_.actionNames(*window);
  }
  const ObjectHandle* object = beginCall(element);
  return object == nullptr ? std::vector<std::string>() : actions_.namesOf(*object);
}

Performed LinuxAccessibility::perform(const Element& element, std::string_view action) {
  if (const ObjectHandle* window = bareWindowIn(element)) {
    return bareWindows_.perform(*window, action);
  }
  const ObjectHandle* object = beginCall(element);
  return object == nullptr ? Performed::refused : actions_.perform(*object, action);
}

bool LinuxAccessibility::isEndangeredByKeys(Pid pid) { return pending_.isEndangeredByKeys(pid); }

std::optional<Element> LinuxAccessibility::otherKeyWindow(const Element& window) {
  reader_.beginCall();
  const ObjectHandle* ours = handleOf(window);
  return ours == nullptr || ours->isApplication() ? std::nullopt
                                                  : application_.otherKeyWindow(*ours);
}

bool LinuxAccessibility::isSettable(const Element& element, std::string_view name) {
  if (isApplication(element)) {
    return name == "AXFrontmost";
  }
  if (bareWindowIn(element) != nullptr) {
    return bareWindows_.isSettable(name);
  }
  const ObjectHandle* object = beginCall(element);
  return object != nullptr && actions_.isSettable(*object, name);
}

bool LinuxAccessibility::set(const Element& element, std::string_view name, const Value& value) {
  if (isApplication(element)) {
    // The window manager brings an application to the front, when its window is raised.
    return name == "AXFrontmost" && value.as<bool>() != nullptr;
  }
  if (const ObjectHandle* window = bareWindowIn(element)) {
    return bareWindows_.set(*window, name, value);
  }
  const ObjectHandle* object = beginCall(element);
  return object != nullptr && actions_.set(*object, name, value);
}

bool LinuxAccessibility::takesTextByKeys(const Element& element) {
  const ObjectHandle* object = beginCall(element);
  return object != nullptr && actions_.takesTextByKeys(*object);
}

std::optional<Size> LinuxAccessibility::wheelStep(const Element& element) {
  const ObjectHandle* object = beginCall(element);
  return object == nullptr ? std::nullopt : wheel_.of(*object);
}

std::optional<Element> LinuxAccessibility::elementAt(Point point) {
  return hitTest_.elementAt(point);
}

std::optional<Pid> LinuxAccessibility::pidOf(const Element& element) {
  const ObjectHandle* ours = handleOf(element);
  return ours == nullptr ? std::nullopt : std::optional(ours->pid);
}

std::unique_ptr<Observer> LinuxAccessibility::observe(Pid pid, NotificationCallback callback) {
  return notifications_.observe(pid, std::move(callback));
}

std::unique_ptr<TreeRead> LinuxAccessibility::readTree(const Element& root,
                                                       const TreeReadLimits& limits) {
  const ObjectHandle* bare = bareWindowIn(root);
  if (popups_ != nullptr) {
    popups_->showOver(bare != nullptr ? bare->number : 0);
  }
  const ObjectHandle* object = beginCall(root);
  return object == nullptr ? nullptr : reader_.readTree(*object, limits);
}

bool LinuxAccessibility::isApplication(const Element& element) {
  const ObjectHandle* ours = handleOf(element);
  return ours != nullptr && ours->isApplication();
}

const ObjectHandle* LinuxAccessibility::bareWindowIn(const Element& element) {
  const ObjectHandle* ours = handleOf(element);
  return ours != nullptr && ours->isBareWindow() ? ours : nullptr;
}

const ObjectHandle* LinuxAccessibility::beginCall(const Element& element) {
  reader_.beginCall();
  const ObjectHandle* ours = handleOf(element);
  return ours != nullptr && ours->kind == ObjectHandle::Kind::object ? ours : nullptr;
}

}  // namespace tarqo::lnx::atspi
