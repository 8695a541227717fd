#include "platform/linux/atspi/application_element.h"

#include <algorithm>

#include "platform/linux/atspi/read/search.h"
#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// A menu bar lies a few containers below its window, among few objects. Pages and documents, which
/// hold many, do not hold one.
constexpr std::size_t kMenuBarSearch = 150;
constexpr std::size_t kMenuBarBreadth = 64;

/// Objects looked at for the focus where the toolkit cannot search.
constexpr std::size_t kFocusSearch = 600;

constexpr std::uint32_t kRelationEmbeds = 13;

bool isOnlyRegistered(const Toplevel& toplevel) {
  return !toplevel.window || toplevel.window->overrideRedirect;
}

}  // namespace

std::optional<Value> ApplicationElement::attribute(const ObjectHandle& application,
                                                   std::string_view name) {
  const auto asValue = [](std::optional<Element> element) {
    return element ? std::optional(Value{*std::move(element)}) : std::nullopt;
  };
  if (name == "AXRole") {
    return Value{std::string("AXApplication")};
  }
  if (name == "AXWindows" || name == "AXChildren") {
    Values list;
    for (Element& window : windowsOf(application)) {
      list.push_back(Value{std::move(window)});
    }
    if (name == "AXChildren") {
      if (std::optional<Element> bar = menuBar(application)) {
        list.push_back(Value{*std::move(bar)});
      }
    }
    return Value{std::move(list)};
  }
  if (name == "AXFocusedWindow" || name == "AXMainWindow") {
    return asValue(focusedWindow(application));
  }
  if (name == "AXFocusedUIElement") {
    return asValue(focusedElement(application));
  }
  if (name == "AXMenuBar") {
    return asValue(menuBar(application));
  }
  if (name == "AXFrontmost") {
    const std::vector<x11::LocatedWindow> windows = reader_.locator().windowsOf(application.pid);
    return Value{std::ranges::any_of(windows, &x11::LocatedWindow::active)};
  }
  if (name == "AXTitle") {
    for (const Registration& app :
         reader_.registry().registrationsOf(application.pid, application.timeout)) {
      ObjectHandle root = application;
      root.kind = ObjectHandle::Kind::object;
      root.ref = app.root;
      if (const PropertiesPtr properties = reader_.read(root, Property::name);
          properties && !properties->name.empty()) {
        return Value{properties->name};
      }
    }
  }
  return std::nullopt;
}

std::vector<Element> ApplicationElement::windowsOf(const ObjectHandle& application) {
  std::vector<Element> result;
  for (const Toplevel& toplevel :
       reader_.windowsOf(application.pid, application.timeout).toplevels) {
    if (!isOnlyRegistered(toplevel)) {
      result.push_back(makeElement({.pid = application.pid,
                                    .timeout = application.timeout,
                                    .ref = toplevel.ref,
                                    .window = toplevel.ref}));
    }
  }
  return result;
}

std::optional<Element> ApplicationElement::focusedWindow(const ObjectHandle& application) {
  const std::vector<Toplevel>& all =
      reader_.windowsOf(application.pid, application.timeout).toplevels;
  const auto make = [&application](const Toplevel& toplevel) {
    return makeElement({.pid = application.pid,
                        .timeout = application.timeout,
                        .ref = toplevel.ref,
                        .window = toplevel.ref});
  };
  const auto active = std::ranges::find_if(all, [](const Toplevel& toplevel) {
    return !isOnlyRegistered(toplevel) && toplevel.window->active;
  });
  if (active != all.end()) {
    return make(*active);
  }
  // In the background the window in front is the one that will have the focus.
  const auto front = std::ranges::find_if_not(all, isOnlyRegistered);
  return front == all.end() ? std::nullopt : std::optional(make(*front));
}

std::optional<Element> ApplicationElement::focusedElement(const ObjectHandle& application) {
  const std::optional<Element> window = focusedWindow(application);
  if (!window) {
    return std::nullopt;
  }
  const ObjectHandle& top = *handleOf(*window);
  // What announced the focus last usually still has it.
  if (const std::optional<Ref> last = notifications_.lastFocus(application.pid)) {
    ObjectHandle object = top;
    object.ref = *last;
    const PropertiesPtr properties = reader_.read(object, Property::basics);
    if (properties && hasFocus(*properties, reader_.toolkitOf(object)) &&
        isShowing(*properties, reader_.toolkitOf(object))) {
      const std::optional<Toplevel> its =
          reader_.toplevelOf({.pid = top.pid, .timeout = top.timeout, .ref = *last});
      if (its && its->ref == top.ref) {
        return makeElement(relations_.withMenuPlace(std::move(object)));
      }
    }
  }
  if (const std::optional<Ref> found = focusedBelow(top)) {
    ObjectHandle object = top;
    object.ref = *found;
    return makeElement(relations_.withMenuPlace(std::move(object)));
  }
  return std::nullopt;
}

std::optional<Ref> ApplicationElement::focusedBelow(const ObjectHandle& window) {
  const Toolkit toolkit = reader_.toolkitOf(window);
  std::optional<Ref> found;
  searchBelow(reader_, window, Property::basics, kFocusSearch,
              [&](const ObjectHandle& object, const Properties& properties) {
                if (!isShowing(properties, toolkit)) {
                  return Visit::skip;
                }
                // The deepest one counts: pages report "focused" for themselves and for what is in
                // them.
                if (hasFocus(properties, toolkit)) {
                  found = object.ref;
                }
                return properties.has(State::managesDescendants) ? Visit::skip : Visit::descend;
              });
  return found;
}

std::optional<Element> ApplicationElement::menuBar(const ObjectHandle& application) {
  const std::optional<Element> window = focusedWindow(application);
  if (!window) {
    return std::nullopt;
  }
  ObjectHandle bar = *handleOf(*window);
  const std::optional<Ref> found = menuBarBelow(bar);
  if (!found) {
    return std::nullopt;
  }
  bar.ref = *found;
  bar.inMenuBar = true;
  return makeElement(std::move(bar));
}

std::optional<Ref> ApplicationElement::menuBarBelow(const ObjectHandle& window) {
  std::optional<Ref> found;
  searchBelow(reader_, window, Property::basics, kMenuBarSearch,
              [&found](const ObjectHandle& object, const Properties& properties) {
                if (properties.is(Role::menuBar) && !found) {
                  found = object.ref;
                }
                const bool holdsMany =
                    properties.is(Role::documentWeb) ||
                    (properties.children && properties.children->size() > kMenuBarBreadth);
                return found || holdsMany ? Visit::skip : Visit::descend;
              });
  return found;
}

std::optional<Value> ApplicationElement::windowAttribute(const ObjectHandle& window,
                                                         std::string_view name) {
  if (name == "AXDocument") {
    std::optional<std::string> document = documentOf(window);
    return document ? std::optional(Value{*std::move(document)}) : std::nullopt;
  }
  const bool ofWindow = name == "AXMinimized" || name == "AXMain" || name == "AXFocused" ||
                        name == "AXPosition" || name == "AXSize";
  if (!ofWindow) {
    return std::nullopt;
  }
  ObjectHandle self = window;
  self.window = window.ref;
  const std::optional<Toplevel> top = reader_.toplevelOf(self);
  if (!top || !top->window) {
    return std::nullopt;
  }
  const x11::LocatedWindow& located = *top->window;
  if (name == "AXMinimized") {
    return Value{located.minimized};
  }
  if (name == "AXPosition") {
    return Value{Point{located.bounds.x, located.bounds.y}};
  }
  if (name == "AXSize") {
    return Value{Size{located.bounds.width, located.bounds.height}};
  }
  return Value{located.active};
}

std::optional<std::string> ApplicationElement::documentOf(const ObjectHandle& window) {
  std::vector<Ref> embedded;
  reader_.request(window, [&](Batch& batch) {
    batch.call(window.ref, kAccessible, "GetRelationSet", [&embedded](Reply reply) {
      if (reply.ok) {
        embedded = readRelation(reply.message, kRelationEmbeds);
      }
    });
  });
  for (const Ref& ref : embedded) {
    ObjectHandle document = window;
    document.ref = ref;
    const PropertiesPtr properties = reader_.read(document, Property::address);
    if (properties && !properties->address.empty()) {
      return properties->address;
    }
  }
  return std::nullopt;
}

}  // namespace tarqo::lnx::atspi
