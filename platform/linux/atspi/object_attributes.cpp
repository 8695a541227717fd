#include "platform/linux/atspi/object_attributes.h"

#include "platform/linux/atspi/translate/attributes.h"
#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {

std::vector<std::optional<Value>> ObjectAttributes::read(const ObjectHandle& object,
                                                         std::span<const std::string_view> names) {
  PropertySet wanted = Property::basics;
  for (const std::string_view name : names) {
    wanted.add(propertiesFor(name));
  }
  reader_.readAheadFrom(object);
  const PropertiesPtr properties = reader_.read(object, wanted);
  if (!properties) {
    return reader_.propertiesOfSilentWindow(object) ? silentWindow(object, names)
                                                    : std::vector<std::optional<Value>>();
  }
  std::vector<std::optional<Value>> values;
  for (const std::string_view name : names) {
    values.push_back(attribute(object, properties, name));
  }
  return values;
}

View ObjectAttributes::viewOf(const ObjectHandle& object, const Properties& properties) {
  View view{properties, reader_.toolkitOf(object), object.facet, object.place, object.inMenuBar};
  view.clip = object.clip;
  view.topLevel = object.isTopLevel();
  if (!view.clip && mayBeScrolledAway(view) && properties.extents && !isWindow(view) &&
      reader_.windowsOf(object.pid, object.timeout).popups.empty()) {
    if (const std::optional<Toplevel> top = reader_.toplevelOf(object)) {
      view.clip = plausible(top->properties->extents);
    }
  }
  return view;
}

/// The X server knows that a window is there, and where, even when the application does not answer.
std::vector<std::optional<Value>> ObjectAttributes::silentWindow(
    const ObjectHandle& window, std::span<const std::string_view> names) {
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

/// Qt has a title made for the X server when the application gives none, and says no name; GTK 4
/// may say the name of a class. Empty where the window's own name is right.
std::optional<Value> ObjectAttributes::serversTitle(const ObjectHandle& window,
                                                    const Properties& properties) {
  if (!properties.name.empty() && reader_.toolkitOf(window) != Toolkit::gtk4) {
    return std::nullopt;
  }
  const std::optional<Toplevel> top = reader_.toplevelOf(window);
  if (!top || top->ref != window.ref || !top->window || top->window->title.empty()) {
    return std::nullopt;
  }
  return Value{top->window->title};
}

std::optional<Value> ObjectAttributes::attribute(const ObjectHandle& object,
                                                 const PropertiesPtr& properties,
                                                 std::string_view name) {
  if (isWindow(object, *properties)) {
    if (std::optional<Value> value = application_.windowAttribute(object, name)) {
      return value;
    }
  }
  if (name == "AXPosition" || name == "AXSize") {
    const std::optional<Rect> frame = relations_.frameOf(object, *properties);
    if (!frame) {
      return std::nullopt;
    }
    return name == "AXSize" ? Value{Size{frame->width, frame->height}}
                            : Value{Point{frame->x, frame->y}};
  }
  if (name == "AXChildren") {
    return Value{relations_.childrenOf(object, *properties)};
  }
  if (name == "AXParent") {
    std::optional<Element> parent = relations_.parentOf(object, *properties);
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
  if (name == "AXSubrole" && relations_.hasSearchIcon(object, *properties)) {
    return Value{std::string("AXSearchField")};
  }
  if (name == "AXHidden" && isWindow(object, *properties)) {
    // A window in its icon is minimised, not hidden.
    return std::nullopt;
  }
  if (name == "AXTitle" && isWindow(object, *properties)) {
    if (std::optional<Value> title = serversTitle(object, *properties)) {
      return title;
    }
  }
  return plainAttribute(viewOf(object, *properties), name);
}

}  // namespace tarqo::lnx::atspi
