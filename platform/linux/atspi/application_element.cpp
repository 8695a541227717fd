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

/// Objects of a browser's own that are looked at for its page: bars, tabs and panels.
constexpr std::size_t kPageSearch = 500;

/// Longer than one answer may take: Firefox needs ten of them, and is busiest when it has just come
/// up. What was found is remembered.
constexpr Duration kPageSearchTime = std::chrono::seconds(1);

constexpr std::uint32_t kRelationEmbeds = 13;

/// The parts of a browser's window that are many, and beside its page.
bool holdsNoPage(const Properties& properties) {
  return properties.is(Role::menuBar) || properties.is(Role::toolBar) ||
         properties.is(Role::pageTabList) || properties.is(Role::popupMenu) ||
         properties.is(Role::menu) || properties.is(Role::list);
}

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
    for (ShownWindow& window : windowsOf(application)) {
      list.push_back(Value{std::move(window.element)});
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

/// Those of the accessible objects and those without one, in one list from front to back, minimised
/// ones last.
std::vector<ApplicationElement::ShownWindow> ApplicationElement::windowsOf(
    const ObjectHandle& application) {
  const ApplicationWindows& all = reader_.windowsOf(application.pid, application.timeout);
  std::vector<ShownWindow> result;
  for (const Toplevel& toplevel : all.toplevels) {
    if (!isOnlyRegistered(toplevel)) {
      result.push_back({*toplevel.window, makeElement({.pid = application.pid,
                                                       .timeout = application.timeout,
                                                       .ref = toplevel.ref,
                                                       .window = toplevel.ref})});
    }
  }
  for (const x11::LocatedWindow& window : all.bare) {
    result.push_back({window, makeBareWindow(application.pid, application.timeout, window.number)});
  }
  std::ranges::stable_sort(result, {}, [](const ShownWindow& shown) { return shown.located.rank; });
  return result;
}

std::optional<Element> ApplicationElement::focusedWindow(const ObjectHandle& application) {
  const std::vector<ShownWindow> all = windowsOf(application);
  const auto active =
      std::ranges::find_if(all, [](const ShownWindow& shown) { return shown.located.active; });
  if (active != all.end()) {
    return active->element;
  }
  // In the background the window in front is the one that will have the focus.
  return all.empty() ? std::nullopt : std::optional(all.front().element);
}

/// The X server is asked first: an application with one window costs no more than that, for every
/// key of a text.
std::optional<Element> ApplicationElement::otherKeyWindow(const ObjectHandle& window) {
  const std::vector<x11::LocatedWindow> located = reader_.locator().windowsOf(window.pid);
  const auto active = std::ranges::find(located, true, &x11::LocatedWindow::active);
  if (active == located.end() || !active->ordinary ||
      std::ranges::count(located, true, &x11::LocatedWindow::ordinary) < 2) {
    return std::nullopt;
  }
  const std::vector<ShownWindow> shown = windowsOf(window);
  const auto own = std::ranges::find(shown, makeElement(window), &ShownWindow::element);
  const auto receiving = std::ranges::find_if(
      shown, [&](const ShownWindow& each) { return each.located.number == active->number; });
  if (own == shown.end() || own == receiving) {
    return std::nullopt;
  }
  return receiving == shown.end() ? makeBareWindow(window.pid, window.timeout, active->number)
                                  : receiving->element;
}

/// The top-level object of the focused window; empty when no object shows that.
std::optional<ObjectHandle> ApplicationElement::focusedObject(const ObjectHandle& application) {
  const std::optional<Element> window = focusedWindow(application);
  if (!window || handleOf(*window)->isBareWindow()) {
    return std::nullopt;
  }
  return *handleOf(*window);
}

std::optional<Element> ApplicationElement::focusedElement(const ObjectHandle& application) {
  const std::optional<ObjectHandle> window = focusedObject(application);
  if (!window) {
    return std::nullopt;
  }
  const ObjectHandle& top = *window;
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
  const std::optional<ObjectHandle> window = focusedObject(application);
  if (!window) {
    return std::nullopt;
  }
  ObjectHandle bar = *window;
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

std::vector<Ref> ApplicationElement::embeddedIn(const ObjectHandle& window) {
  std::vector<Ref> embedded;
  reader_.request(window, [&](Batch& batch) {
    batch.call(window.ref, kAccessible, "GetRelationSet", [&embedded](Reply reply) {
      if (reply.ok) {
        embedded = readRelation(reply.message, kRelationEmbeds);
      }
    });
  });
  return embedded;
}

/// The page that shows; those of the tabs behind it do not. The one found last is looked at first:
/// a whole search may take longer than it is given.
std::optional<Ref> ApplicationElement::pageBelow(const ObjectHandle& window) {
  const Toolkit toolkit = reader_.toolkitOf(window);
  if (const auto last = pages_.find(window.ref); last != pages_.end()) {
    ObjectHandle page = window;
    page.ref = last->second;
    const PropertiesPtr properties = reader_.read(page, Property::basics);
    // Without an answer nothing is known, and a search would get none either.
    if (!properties || (properties->is(Role::documentWeb) && isShowing(*properties, toolkit))) {
      return properties ? std::optional(last->second) : std::nullopt;
    }
    pages_.erase(last);
  }
  std::optional<Ref> found;
  ObjectHandle start = window;
  start.timeout = kPageSearchTime;
  searchBelow(reader_, start, Property::basics, kPageSearch,
              [&](const ObjectHandle& object, const Properties& properties) {
                if (found || !isShowing(properties, toolkit) || holdsNoPage(properties)) {
                  return Visit::skip;
                }
                if (!properties.is(Role::documentWeb)) {
                  return Visit::descend;
                }
                found = object.ref;
                return Visit::skip;
              });
  if (found) {
    pages_[window.ref] = *found;
  }
  return found;
}

/// A dialog of a page's window, like the one that chooses a file for it, belongs to that page.
std::optional<std::string> ApplicationElement::documentOf(const ObjectHandle& window) {
  if (!window.isBareWindow()) {
    if (std::optional<std::string> own = ownDocument(window)) {
      return own;
    }
  }
  const std::vector<ShownWindow> all = windowsOf(window);
  const auto self = std::ranges::find(all, makeElement(window), &ShownWindow::element);
  if (self == all.end() || self->located.transientFor == 0) {
    return std::nullopt;
  }
  const auto owner = std::ranges::find_if(all, [&](const ShownWindow& each) {
    return each.located.number == self->located.transientFor;
  });
  return owner == all.end() || owner == self || handleOf(owner->element)->isBareWindow()
             ? std::nullopt
             : ownDocument(*handleOf(owner->element));
}

/// Chromium embeds its page in the window, and says so; Firefox does not always.
std::optional<std::string> ApplicationElement::ownDocument(const ObjectHandle& window) {
  std::vector<Ref> pages = embeddedIn(window);
  if (pages.empty()) {
    if (const std::optional<Ref> page = pageBelow(window)) {
      pages.push_back(*page);
    }
  }
  for (const Ref& ref : pages) {
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
