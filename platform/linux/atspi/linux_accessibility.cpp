#include "platform/linux/atspi/linux_accessibility.h"

#include <algorithm>

namespace tarqo::lnx {

LinuxAccessibility::LinuxAccessibility(WindowLocator& locator, AtspiEvents& events,
                                       InputEvents* keyboard)
    : events_(events), keyboard_(keyboard), reader_(bus_, locator), debts_(bus_) {}

Element LinuxAccessibility::application(Pid pid, Duration messagingTimeout) {
  return makeElement(
      {.kind = AtspiElement::Kind::application, .pid = pid, .timeout = messagingTimeout});
}

AtspiView LinuxAccessibility::viewOf(const Parts& object, const AtspiFacts& facts) {
  AtspiView view{facts, reader_.toolkitOf(object), object.facet, object.place, object.inMenuBar};
  view.clip = object.clip;
  view.topLevel = object.isTopLevel();
  if (!view.clip && mayBeScrolledAway(view) && facts.extents && !isWindow(view) &&
      reader_.windowsOf(object.pid, object.timeout).popups.empty()) {
    if (const std::optional<Toplevel> top = reader_.toplevelOf(object)) {
      view.clip = plausible(top->facts->extents);
    }
  }
  return view;
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
  std::vector<std::optional<Value>> values;
  if (ours->isApplication()) {
    if (reader_.applications().of(ours->parts().pid, ours->parts().timeout).empty()) {
      return {};
    }
    for (const std::string_view name : names) {
      values.push_back(applicationAttribute(ours->parts(), name));
    }
    return values;
  }
  const Parts& object = ours->parts();
  FactSet wanted = Fact::kind;
  for (const std::string_view name : names) {
    wanted.add(factsFor(name));
  }
  reader_.reach(object);
  const FactsPtr facts = reader_.learn(object, wanted);
  if (!facts) {
    return reader_.factsOfSilentWindow(object) ? silentWindow(object, names)
                                               : std::vector<std::optional<Value>>();
  }
  for (const std::string_view name : names) {
    values.push_back(objectAttribute(object, facts, name));
  }
  return values;
}

/// That a window is there, and where, the X server tells, whether or not the application answers.
std::vector<std::optional<Value>> LinuxAccessibility::silentWindow(
    const Parts& window, std::span<const std::string_view> names) {
  std::vector<std::optional<Value>> values;
  for (const std::string_view name : names) {
    if (name == "AXRole") {
      values.emplace_back(Value{std::string("AXWindow")});
    } else {
      const bool place = name == "AXPosition" || name == "AXSize" || name == "AXMinimized";
      values.push_back(place ? windowAttribute(window, name) : std::nullopt);
    }
  }
  return values;
}

std::optional<Value> LinuxAccessibility::objectAttribute(const Parts& object, const FactsPtr& facts,
                                                         std::string_view name) {
  if (isWindow(object, *facts)) {
    if (std::optional<Value> value = windowAttribute(object, name)) {
      return value;
    }
  }
  if (name == "AXPosition" || name == "AXSize") {
    const std::optional<Rect> frame = frameOf(object, *facts);
    if (!frame) {
      return std::nullopt;
    }
    return name == "AXSize" ? Value{Size{frame->width, frame->height}}
                            : Value{Point{frame->x, frame->y}};
  }
  if (name == "AXChildren") {
    return Value{childrenOf(object, *facts)};
  }
  if (name == "AXParent") {
    std::optional<Element> parent = parentOf(object, *facts);
    return parent ? std::optional(Value{*std::move(parent)}) : std::nullopt;
  }
  if (name == "AXWindow" || name == "AXTopLevelUIElement") {
    const std::optional<Toplevel> top = reader_.toplevelOf(object);
    if (!top) {
      return std::nullopt;
    }
    return Value{makeElement(
        {.pid = object.pid, .timeout = object.timeout, .ref = top->ref, .window = top->ref})};
  }
  if (name == "AXSubrole" && hasSearchIcon(object, *facts)) {
    return Value{std::string("AXSearchField")};
  }
  if (name == "AXHidden" && isWindow(object, *facts)) {
    // A window in its icon is minimised, not hidden.
    return std::nullopt;
  }
  return plainAttribute(viewOf(object, *facts), name);
}

std::vector<std::string> LinuxAccessibility::actionNames(const Element& element) {
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(element);
  if (ours == nullptr || ours->isApplication()) {
    return {};
  }
  const Parts& object = ours->parts();
  const FactsPtr facts = reader_.learn(object, Fact::kind | Fact::actions);
  if (!facts) {
    return {};
  }
  return axActionNames(viewOf(object, *facts));
}

bool LinuxAccessibility::isSettable(const Element& element, std::string_view name) {
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(element);
  if (ours == nullptr) {
    return false;
  }
  if (ours->isApplication()) {
    return name == "AXFrontmost";
  }
  const Parts& object = ours->parts();
  const FactsPtr facts = reader_.learn(object, Fact::kind);
  if (!facts) {
    return false;
  }
  if (isWindow(object, *facts) && (name == "AXMinimized" || name == "AXMain")) {
    return true;
  }
  if (name == "AXFocused") {
    return facts->has(AtspiState::focusable) && facts->has(AtspiInterface::component) &&
           (reader_.toolkitOf(object) != Toolkit::gtk4 || isClickedForFocus(*facts));
  }
  return name == "AXValue" &&
         (hasSettableValue(viewOf(object, *facts)) || typesText(object, *facts));
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
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(root);
  if (ours == nullptr || ours->isApplication()) {
    return nullptr;
  }
  return reader_.readTree(ours->parts(), limits);
}

}  // namespace tarqo::lnx
