#include "platform/linux/atspi/application_element.h"

#include <algorithm>

#include "platform/linux/atspi/read/search.h"
#include "platform/linux/atspi/translate/translate.h"

namespace tarqo::lnx {
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

std::optional<Value> ApplicationElement::attribute(const Parts& application,
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
    const std::vector<LocatedWindow> windows = reader_.locator().windowsOf(application.pid);
    return Value{std::ranges::any_of(windows, &LocatedWindow::active)};
  }
  if (name == "AXTitle") {
    for (const AtspiApp& app : reader_.applications().of(application.pid, application.timeout)) {
      Parts root = application;
      root.kind = AtspiElement::Kind::object;
      root.ref = app.root;
      if (const FactsPtr facts = reader_.learn(root, Fact::name); facts && !facts->name.empty()) {
        return Value{facts->name};
      }
    }
  }
  return std::nullopt;
}

std::vector<Element> ApplicationElement::windowsOf(const Parts& application) {
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

std::optional<Element> ApplicationElement::focusedWindow(const Parts& application) {
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

std::optional<Element> ApplicationElement::focusedElement(const Parts& application) {
  const std::optional<Element> window = focusedWindow(application);
  if (!window) {
    return std::nullopt;
  }
  const Parts& top = atspiElement(*window)->parts();
  // What announced the focus last usually still has it.
  if (const std::optional<AtspiRef> last = events_.lastFocus(application.pid)) {
    Parts object = top;
    object.ref = *last;
    const FactsPtr facts = reader_.learn(object, Fact::kind);
    if (facts && hasFocus(*facts, reader_.toolkitOf(object)) &&
        isShowing(*facts, reader_.toolkitOf(object))) {
      const std::optional<Toplevel> its =
          reader_.toplevelOf({.pid = top.pid, .timeout = top.timeout, .ref = *last});
      if (its && its->ref == top.ref) {
        return makeElement(relations_.asMet(std::move(object)));
      }
    }
  }
  if (const std::optional<AtspiRef> found = focusedBelow(top)) {
    Parts object = top;
    object.ref = *found;
    return makeElement(relations_.asMet(std::move(object)));
  }
  return std::nullopt;
}

std::optional<AtspiRef> ApplicationElement::focusedBelow(const Parts& window) {
  const Toolkit toolkit = reader_.toolkitOf(window);
  std::optional<AtspiRef> found;
  searchBelow(reader_, window, Fact::kind, kFocusSearch,
              [&](const Parts& object, const AtspiFacts& facts) {
                if (!isShowing(facts, toolkit)) {
                  return Visit::skip;
                }
                // The deepest one counts: pages say "focused" of themselves and of what is in them.
                if (hasFocus(facts, toolkit)) {
                  found = object.ref;
                }
                return facts.has(AtspiState::managesDescendants) ? Visit::skip : Visit::descend;
              });
  return found;
}

std::optional<Element> ApplicationElement::menuBar(const Parts& application) {
  const std::optional<Element> window = focusedWindow(application);
  if (!window) {
    return std::nullopt;
  }
  Parts bar = atspiElement(*window)->parts();
  const std::optional<AtspiRef> found = menuBarBelow(bar);
  if (!found) {
    return std::nullopt;
  }
  bar.ref = *found;
  bar.inMenuBar = true;
  return makeElement(std::move(bar));
}

std::optional<AtspiRef> ApplicationElement::menuBarBelow(const Parts& window) {
  std::optional<AtspiRef> found;
  searchBelow(reader_, window, Fact::kind, kMenuBarSearch,
              [&found](const Parts& object, const AtspiFacts& facts) {
                if (facts.is(AtspiRole::menuBar) && !found) {
                  found = object.ref;
                }
                const bool holdsMany = facts.is(AtspiRole::documentWeb) ||
                                       (facts.children && facts.children->size() > kMenuBarBreadth);
                return found || holdsMany ? Visit::skip : Visit::descend;
              });
  return found;
}

std::optional<Value> ApplicationElement::windowAttribute(const Parts& window,
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
  Parts self = window;
  self.window = window.ref;
  const std::optional<Toplevel> top = reader_.toplevelOf(self);
  if (!top || !top->window) {
    return std::nullopt;
  }
  const LocatedWindow& located = *top->window;
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

std::optional<std::string> ApplicationElement::documentOf(const Parts& window) {
  std::vector<AtspiRef> embedded;
  reader_.ask(window, [&](AtspiBatch& batch) {
    batch.call(window.ref, kAccessible, "GetRelationSet", [&embedded](Reply reply) {
      if (reply.ok) {
        embedded = readRelation(reply.message, kRelationEmbeds);
      }
    });
  });
  for (const AtspiRef& ref : embedded) {
    Parts document = window;
    document.ref = ref;
    const FactsPtr facts = reader_.learn(document, Fact::address);
    if (facts && !facts->address.empty()) {
      return facts->address;
    }
  }
  return std::nullopt;
}

}  // namespace tarqo::lnx
