#include "platform/linux/atspi/tree_relations.h"

#include <algorithm>

#include "platform/linux/atspi/translate/translate.h"

namespace tarqo::lnx {
namespace {

/// The deepest tree that a popup is looked for in.
constexpr int kMaxAncestors = 60;

/// A menu bar has few siblings; longer lists of children are not looked through for one.
constexpr std::size_t kMenuBarSiblings = 32;

/// A control's own text has at most its picture and a few marks beside it.
constexpr std::size_t kLabelSiblings = 4;

bool isMenuLike(const AtspiFacts& facts) {
  return facts.is(AtspiRole::menu) || facts.is(AtspiRole::menuBar) ||
         facts.is(AtspiRole::popupMenu);
}

/// The toolkits whose menu bar lists what is in its closed menus. There it hangs on the application
/// alone; elsewhere a menu has to be opened in the window before anything in it can be chosen.
bool listsClosedMenus(Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 || toolkit == Toolkit::qt;
}

/// Whether an object is the entry of a menu that has a menu of its own within the same object.
bool isTitleWithMenu(const AtspiElement::Parts& object, const AtspiFacts& facts) {
  return facts.is(AtspiRole::menu) && object.place != MenuPlace::none &&
         object.facet == Facet::whole;
}

MenuPlace placeBelow(const AtspiFacts& parent) {
  if (parent.is(AtspiRole::menuBar)) {
    return MenuPlace::bar;
  }
  // GTK 4 and Qt hang the menu on its entry, whose own parts (a label) are no entries.
  return parent.is(AtspiRole::menu) || parent.is(AtspiRole::popupMenu) ? MenuPlace::menu
                                                                       : MenuPlace::none;
}

}  // namespace

std::optional<Rect> TreeRelations::frameOf(const Parts& object, const AtspiFacts& facts) {
  const std::optional<Rect> told = plausible(facts.extents);
  if (!told || object.facet == Facet::openedMenu || isWindow(object, facts)) {
    return std::nullopt;
  }
  if (reader_.toolkitOf(object) != Toolkit::gtk4) {
    return told;
  }
  const std::optional<Point> offset = offsetOf(object);
  if (!offset) {
    return std::nullopt;
  }
  return Rect{told->x + offset->x, told->y + offset->y, told->width, told->height};
}

std::optional<Point> TreeRelations::offsetOf(const Parts& object) {
  const std::optional<Toplevel> top = reader_.toplevelOf(object);
  if (!top || !top->window) {
    return std::nullopt;
  }
  const ApplicationWindows& windows = reader_.windowsOf(object.pid, object.timeout);
  Parts at = object;
  for (int depth = 0; depth < kMaxAncestors && !windows.popups.empty(); ++depth) {
    const FactsPtr facts = reader_.learn(at, Fact::extents | Fact::parent);
    const std::optional<Rect> extents = facts ? plausible(facts->extents) : std::nullopt;
    const LocatedWindow* popup = extents ? popupOfSize(windows, *extents) : nullptr;
    if (popup != nullptr) {
      return Point{popup->client.x - extents->x, popup->client.y - extents->y};
    }
    if (!facts || !facts->parent || *facts->parent == top->ref) {
      break;
    }
    at.ref = *facts->parent;
  }
  return screenOffset(*top);
}

/// GTK 3 tells a search entry from another by nothing but the icon in it.
bool TreeRelations::hasSearchIcon(const Parts& object, const AtspiFacts& facts) {
  if (!facts.is(AtspiRole::text) || !facts.has(AtspiState::editable) || !facts.children ||
      facts.children->empty() || reader_.toolkitOf(object) != Toolkit::gtk3) {
    return false;
  }
  Parts icon = object;
  icon.ref = facts.children->front();
  const FactsPtr its = reader_.learn(icon, Fact::kind | Fact::name);
  return its && its->name.starts_with("edit-find");
}

std::vector<AtspiRef> TreeRelations::shownChildren(const Parts& object, const AtspiFacts& facts) {
  std::vector<AtspiRef> children = facts.children.value_or(std::vector<AtspiRef>());
  const Toolkit toolkit = reader_.toolkitOf(object);
  const bool mayHoldMenuBar =
      listsClosedMenus(toolkit) && !isMenuLike(facts) && children.size() <= kMenuBarSiblings;
  const bool mayRepeat =
      hasTextChildren(toolkit) && !facts.name.empty() && children.size() <= kLabelSiblings;
  if (children.empty() || (!mayHoldMenuBar && !mayRepeat)) {
    return children;
  }
  std::vector<Parts> objects(children.size(), object);
  for (std::size_t i = 0; i < children.size(); ++i) {
    objects[i].ref = children[i];
  }
  const std::vector<FactsPtr> theirs = reader_.learnAll(objects, Fact::kind | Fact::name);
  std::vector<AtspiRef> result;
  for (std::size_t i = 0; i < children.size(); ++i) {
    const bool left = theirs[i] && (theirs[i]->is(AtspiRole::menuBar) && mayHoldMenuBar);
    if (!left && !(mayRepeat && theirs[i] && repeatsParent(*theirs[i], facts, toolkit))) {
      result.push_back(std::move(children[i]));
    }
  }
  return result;
}

Values TreeRelations::childrenOf(const Parts& object, const AtspiFacts& facts) {
  Values result;
  if (isTitleWithMenu(object, facts)) {
    Parts menu = object;
    menu.facet = Facet::openedMenu;
    result.push_back(Value{makeElement(std::move(menu))});
    return result;
  }
  for (AtspiRef& ref : shownChildren(object, facts)) {
    Parts child = object;
    child.ref = std::move(ref);
    child.facet = Facet::whole;
    child.place = placeBelow(facts);
    child.clip = clipBelow(object.clip, facts, reader_.toolkitOf(object));
    if (isWindow(object, facts)) {
      child.window = object.ref;
    }
    result.push_back(Value{makeElement(std::move(child))});
  }
  if (isWindow(object, facts)) {
    for (AtspiRef& ref : contextMenus(object)) {
      Parts menu = object;
      menu.ref = std::move(ref);
      menu.window = object.ref;
      result.push_back(Value{makeElement(std::move(menu))});
    }
  }
  return result;
}

/// The open menus that no object of the application's windows holds: those of a right click. GTK 3
/// and Chromium hang them on windows of their own, Qt on nothing.
std::vector<AtspiRef> TreeRelations::contextMenus(const Parts& window) {
  std::vector<AtspiRef> result;
  for (AtspiRef& ref : events_.openMenus(window.pid)) {
    Parts menu = window;
    menu.ref = ref;
    menu.window = {};
    const FactsPtr facts = reader_.learn(menu, Fact::kind);
    if (facts && (facts->is(AtspiRole::menu) || facts->is(AtspiRole::popupMenu)) &&
        isShowing(*facts, reader_.toolkitOf(menu)) && hangsNowhere(menu)) {
      result.push_back(std::move(ref));
    }
  }
  return result;
}

bool TreeRelations::hangsNowhere(const Parts& menu) {
  const std::vector<Toplevel> all = reader_.windowsOf(menu.pid, menu.timeout).toplevels;
  Parts at = menu;
  const Instant end = std::chrono::steady_clock::now() + menu.timeout;
  for (int depth = 0; depth < kMaxAncestors && std::chrono::steady_clock::now() < end; ++depth) {
    const FactsPtr facts = reader_.learn(at, Fact::kind | Fact::parent);
    if (!facts || !facts->parent || facts->parent->empty() || facts->parent->path == kRootPath) {
      return facts != nullptr;
    }
    at.ref = *facts->parent;
    const auto top = std::ranges::find(all, at.ref, &Toplevel::ref);
    if (top != all.end()) {
      return !top->window || top->window->overrideRedirect;
    }
    const FactsPtr above = reader_.learn(at, Fact::kind);
    if (above && (isMenuLike(*above) || isMenuEntryRole(above->role)) &&
        !above->is(AtspiRole::menuBar)) {
      return false;  // A menu in a menu.
    }
  }
  return false;
}

/// An object that was not reached from its parent, with what its parent would have told of it.
AtspiElement::Parts TreeRelations::asMet(Parts object) {
  const FactsPtr facts = reader_.learn(object, Fact::kind);
  if (!facts || !isMenuEntryRole(facts->role)) {
    return object;
  }
  const FactsPtr withParent = reader_.learn(object, Fact::parent);
  if (!withParent || !withParent->parent || withParent->parent->empty()) {
    return object;
  }
  Parts parent = object;
  parent.ref = *withParent->parent;
  if (const FactsPtr above = reader_.learn(parent, Fact::kind)) {
    object.place = placeBelow(*above);
  }
  return object;
}

std::optional<Element> TreeRelations::parentOf(const Parts& object, const AtspiFacts& facts) {
  if (object.facet == Facet::openedMenu) {
    Parts title = object;
    title.facet = Facet::whole;
    return makeElement(std::move(title));
  }
  if (!facts.parent || facts.parent->empty()) {
    return std::nullopt;
  }
  if (isWindow(object, facts) || facts.parent->path == kRootPath) {
    return makeApplication(object.pid, object.timeout);
  }
  Parts parent = object;
  parent.ref = *facts.parent;
  parent.place = MenuPlace::none;
  parent = asMet(std::move(parent));
  const FactsPtr above = reader_.learn(parent, Fact::kind);
  if (above && isTitleWithMenu(parent, *above)) {
    parent.facet = Facet::openedMenu;
  }
  return makeElement(std::move(parent));
}

}  // namespace tarqo::lnx
