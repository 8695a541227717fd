#include "platform/linux/atspi/object_attributes.h"

namespace tarqo::lnx {

std::vector<std::optional<Value>> ObjectAttributes::read(const Parts& object,
                                                         std::span<const std::string_view> names) {
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
  std::vector<std::optional<Value>> values;
  for (const std::string_view name : names) {
    values.push_back(attribute(object, facts, name));
  }
  return values;
}

AtspiView ObjectAttributes::viewOf(const Parts& object, const AtspiFacts& facts) {
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

/// That a window is there, and where, the X server tells, whether or not the application answers.
std::vector<std::optional<Value>> ObjectAttributes::silentWindow(
    const Parts& window, std::span<const std::string_view> names) {
  std::vector<std::optional<Value>> values;
  for (const std::string_view name : names) {
    if (name == "AXRole") {
      values.emplace_back(Value{std::string("AXWindow")});
    } else {
      const bool place = name == "AXPosition" || name == "AXSize" || name == "AXMinimized";
      values.push_back(place ? application_.windowAttribute(window, name) : std::nullopt);
    }
  }
  return values;
}

std::optional<Value> ObjectAttributes::attribute(const Parts& object, const FactsPtr& facts,
                                                 std::string_view name) {
  if (isWindow(object, *facts)) {
    if (std::optional<Value> value = application_.windowAttribute(object, name)) {
      return value;
    }
  }
  if (name == "AXPosition" || name == "AXSize") {
    const std::optional<Rect> frame = relations_.frameOf(object, *facts);
    if (!frame) {
      return std::nullopt;
    }
    return name == "AXSize" ? Value{Size{frame->width, frame->height}}
                            : Value{Point{frame->x, frame->y}};
  }
  if (name == "AXChildren") {
    return Value{relations_.childrenOf(object, *facts)};
  }
  if (name == "AXParent") {
    std::optional<Element> parent = relations_.parentOf(object, *facts);
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
  if (name == "AXSubrole" && relations_.hasSearchIcon(object, *facts)) {
    return Value{std::string("AXSearchField")};
  }
  if (name == "AXHidden" && isWindow(object, *facts)) {
    // A window in its icon is minimised, not hidden.
    return std::nullopt;
  }
  return plainAttribute(viewOf(object, *facts), name);
}

}  // namespace tarqo::lnx
