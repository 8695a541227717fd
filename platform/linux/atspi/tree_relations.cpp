#include "platform/linux/atspi/tree_relations.h"

#include <algorithm>

#include "platform/linux/atspi/translate/view.h"
#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// The deepest tree that a popup is looked for in.
constexpr int kMaxAncestors = 60;

/// A menu bar has few siblings; longer lists of children are not looked through for one.
constexpr std::size_t kMenuBarSiblings = 32;

/// A control's own text has at most its picture and a few marks beside it.
constexpr std::size_t kLabelSiblings = 4;

bool isMenuLike(const Properties& properties) {
  return properties.is(Role::menu) || properties.is(Role::menuBar) ||
         properties.is(Role::popupMenu);
}

/// The toolkits whose menu bar lists the contents of its closed menus. There it belongs to the
/// application alone; elsewhere a menu has to be opened in the window before anything in it can be
/// chosen.
bool listsClosedMenus(Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 || toolkit == Toolkit::qt;
}

/// Whether an object is both an entry of a menu and the menu that the entry opens.
bool isTitleWithMenu(const ObjectHandle& object, const Properties& properties) {
  return properties.is(Role::menu) && object.place != MenuPlace::none &&
         object.facet == Facet::whole;
}

MenuPlace placeBelow(const Properties& parent) {
  if (parent.is(Role::menuBar)) {
    return MenuPlace::bar;
  }
  // In GTK 4 and Qt the menu is a child of its entry, whose other children (a label) are no
  // entries.
  return parent.is(Role::menu) || parent.is(Role::popupMenu) ? MenuPlace::menu : MenuPlace::none;
}

}  // namespace

std::optional<Rect> TreeRelations::frameOf(const ObjectHandle& object,
                                           const Properties& properties) {
  const std::optional<Rect> reported = plausible(properties.extents);
  if (!reported || object.facet == Facet::openedMenu || isWindow(object, properties)) {
    return std::nullopt;
  }
  if (reader_.toolkitOf(object) != Toolkit::gtk4) {
    return reported;
  }
  const std::optional<Point> offset = offsetOf(object);
  if (!offset) {
    return std::nullopt;
  }
  return Rect{reported->x + offset->x, reported->y + offset->y, reported->width, reported->height};
}

std::optional<Point> TreeRelations::offsetOf(const ObjectHandle& object) {
  const std::optional<Toplevel> top = reader_.toplevelOf(object);
  if (!top || !top->window) {
    return std::nullopt;
  }
  const ApplicationWindows& windows = reader_.windowsOf(object.pid, object.timeout);
  ObjectHandle at = object;
  for (int depth = 0; depth < kMaxAncestors && !windows.popups.empty(); ++depth) {
    const PropertiesPtr properties = reader_.read(at, Property::extents | Property::parent);
    const std::optional<Rect> extents = properties ? plausible(properties->extents) : std::nullopt;
    const x11::LocatedWindow* popup = extents ? popupOfSize(windows, *extents) : nullptr;
    if (popup != nullptr) {
      return Point{popup->client.x - extents->x, popup->client.y - extents->y};
    }
    if (!properties || !properties->parent || *properties->parent == top->ref) {
      break;
    }
    at.ref = *properties->parent;
  }
  return screenOffset(*top);
}

/// In GTK 3 nothing but the icon in it tells a search entry from another.
bool TreeRelations::hasSearchIcon(const ObjectHandle& object, const Properties& properties) {
  if (!properties.is(Role::text) || !properties.has(State::editable) || !properties.children ||
      properties.children->empty() || reader_.toolkitOf(object) != Toolkit::gtk3) {
    return false;
  }
  ObjectHandle icon = object;
  icon.ref = properties.children->front();
  const PropertiesPtr its = reader_.read(icon, Property::basics | Property::name);
  return its && its->name.starts_with("edit-find");
}

std::vector<Ref> TreeRelations::shownChildren(const ObjectHandle& object,
                                              const Properties& properties) {
  std::vector<Ref> children = properties.children.value_or(std::vector<Ref>());
  const Toolkit toolkit = reader_.toolkitOf(object);
  const bool mayHoldMenuBar =
      listsClosedMenus(toolkit) && !isMenuLike(properties) && children.size() <= kMenuBarSiblings;
  const bool mayRepeat =
      hasTextChildren(toolkit) && !properties.name.empty() && children.size() <= kLabelSiblings;
  if (children.empty() || (!mayHoldMenuBar && !mayRepeat)) {
    return children;
  }
  std::vector<ObjectHandle> objects(children.size(), object);
  for (std::size_t i = 0; i < children.size(); ++i) {
    objects[i].ref = children[i];
  }
  const std::vector<PropertiesPtr> theirs =
      reader_.readAll(objects, Property::basics | Property::name);
  std::vector<Ref> result;
  for (std::size_t i = 0; i < children.size(); ++i) {
    const bool left = theirs[i] && (theirs[i]->is(Role::menuBar) && mayHoldMenuBar);
    if (!left && !(mayRepeat && theirs[i] && repeatsParent(*theirs[i], properties, toolkit))) {
      result.push_back(std::move(children[i]));
    }
  }
  return result;
}

Values TreeRelations::childrenOf(const ObjectHandle& object, const Properties& properties) {
  Values result;
  if (isTitleWithMenu(object, properties)) {
    ObjectHandle menu = object;
    menu.facet = Facet::openedMenu;
    result.push_back(Value{makeElement(std::move(menu))});
    return result;
  }
  if (object.facet == Facet::opener) {
    return result;
  }
  if (std::optional<Element> opener = openerIn(object, properties)) {
    result.push_back(Value{*std::move(opener)});
  }
  for (Ref& ref : shownChildren(object, properties)) {
    ObjectHandle child = object;
    child.ref = std::move(ref);
    child.facet = Facet::whole;
    child.place = placeBelow(properties);
    child.clip = clipBelow(object.clip, properties, reader_.toolkitOf(object));
    if (isWindow(object, properties)) {
      child.window = object.ref;
    }
    result.push_back(Value{makeElement(std::move(child))});
  }
  if (isWindow(object, properties)) {
    for (Ref& ref : contextMenus(object)) {
      ObjectHandle menu = object;
      menu.ref = std::move(ref);
      menu.window = object.ref;
      result.push_back(Value{makeElement(std::move(menu))});
    }
  }
  return result;
}

/// What opens a menu of the menu bar that is empty while closed, since nothing else could be listed
/// of it.
std::optional<Element> TreeRelations::openerIn(const ObjectHandle& menu,
                                               const Properties& properties) {
  const bool isMenu = menu.facet == Facet::openedMenu || properties.is(Role::popupMenu);
  if (!menu.inMenuBar || !isMenu || !properties.children || !properties.children->empty()) {
    return std::nullopt;
  }
  ObjectHandle opener = menu;
  if (menu.facet != Facet::openedMenu) {
    const PropertiesPtr withParent = reader_.read(menu, Property::parent);
    if (!withParent || !withParent->parent || withParent->parent->empty()) {
      return std::nullopt;
    }
    opener.ref = *withParent->parent;
    opener.place = MenuPlace::none;
    opener = withMenuPlace(std::move(opener));
  }
  if (opener.place != MenuPlace::bar) {
    return std::nullopt;
  }
  opener.facet = Facet::opener;
  return makeElement(std::move(opener));
}

/// GTK 3 and Chromium give these menus windows of their own, Qt no parent at all. GTK 2 does not
/// announce them.
std::vector<Ref> TreeRelations::contextMenus(const ObjectHandle& window) {
  std::vector<Ref> open = notifications_.openMenus(window.pid);
  for (Ref& ref : inPopups(window)) {
    if (std::ranges::find(open, ref) == open.end()) {
      open.push_back(std::move(ref));
    }
  }
  std::vector<Ref> result;
  for (Ref& ref : open) {
    ObjectHandle menu = window;
    menu.ref = ref;
    menu.window = {};
    const PropertiesPtr properties = reader_.read(menu, Property::basics);
    if (properties && (properties->is(Role::menu) || properties->is(Role::popupMenu)) &&
        isShowing(*properties, reader_.toolkitOf(menu)) && isDetachedMenu(menu)) {
      result.push_back(std::move(ref));
    }
  }
  return result;
}

/// What is in the application's popups that are objects of their own.
std::vector<Ref> TreeRelations::inPopups(const ObjectHandle& window) {
  std::vector<Ref> result;
  for (const Toplevel& top : reader_.windowsOf(window.pid, window.timeout).toplevels) {
    if (!top.window || !top.window->overrideRedirect) {
      continue;
    }
    ObjectHandle popup = window;
    popup.ref = top.ref;
    popup.window = top.ref;
    const PropertiesPtr properties = reader_.read(popup, Property::basics | Property::children);
    if (properties && properties->children) {
      result.insert(result.end(), properties->children->begin(), properties->children->end());
    }
  }
  return result;
}

bool TreeRelations::isDetachedMenu(const ObjectHandle& menu) {
  const std::vector<Toplevel> all = reader_.windowsOf(menu.pid, menu.timeout).toplevels;
  ObjectHandle at = menu;
  const Instant end = reader_.clock().now() + menu.timeout;
  for (int depth = 0; depth < kMaxAncestors && reader_.clock().now() < end; ++depth) {
    const PropertiesPtr properties = reader_.read(at, Property::basics | Property::parent);
    if (!properties || !properties->parent || properties->parent->empty() ||
        properties->parent->path == kRootPath) {
      return properties != nullptr;
    }
    at.ref = *properties->parent;
    const auto top = std::ranges::find(all, at.ref, &Toplevel::ref);
    if (top != all.end()) {
      return !top->window || top->window->overrideRedirect;
    }
    const PropertiesPtr above = reader_.read(at, Property::basics);
    if (above && (isMenuLike(*above) || isMenuEntryRole(above->role)) &&
        !above->is(Role::menuBar)) {
      return false;  // A menu in a menu.
    }
  }
  return false;
}

/// Only what has the focus is asked: an editor that has lost it is about to go.
std::optional<Ref> TreeRelations::inlineEditorOver(const ObjectHandle& hit, Point point) {
  const std::optional<Ref> focus = notifications_.lastFocus(hit.pid);
  if (!focus || *focus == hit.ref) {
    return std::nullopt;
  }
  ObjectHandle editor = hit;
  editor.ref = *focus;
  const PropertiesPtr its =
      reader_.read(editor, Property::basics | Property::extents | Property::parent);
  const Toolkit toolkit = reader_.toolkitOf(hit);
  if (!its || !its->has(State::editable) || !its->has(Interface::text) ||
      !hasFocus(*its, toolkit) || !isShowing(*its, toolkit) || !its->parent) {
    return std::nullopt;
  }
  const std::optional<Rect> place = frameOf(editor, *its);
  if (!place || !place->contains(point)) {
    return std::nullopt;
  }
  const PropertiesPtr under = reader_.read(hit, Property::basics | Property::parent);
  const bool isInCell = under && isCellRole(under->role) && under->parent == its->parent;
  return *its->parent == hit.ref || isInCell ? focus : std::nullopt;
}

/// The place in a menu is what the parent would have shown.
ObjectHandle TreeRelations::withMenuPlace(ObjectHandle object) {
  const PropertiesPtr properties = reader_.read(object, Property::basics);
  if (!properties || !isMenuEntryRole(properties->role)) {
    return object;
  }
  const PropertiesPtr withParent = reader_.read(object, Property::parent);
  if (!withParent || !withParent->parent || withParent->parent->empty()) {
    return object;
  }
  ObjectHandle parent = object;
  parent.ref = *withParent->parent;
  if (const PropertiesPtr above = reader_.read(parent, Property::basics)) {
    object.place = placeBelow(*above);
  }
  return object;
}

std::optional<Element> TreeRelations::parentOf(const ObjectHandle& object,
                                               const Properties& properties) {
  if (object.facet == Facet::openedMenu) {
    ObjectHandle title = object;
    title.facet = Facet::whole;
    return makeElement(std::move(title));
  }
  if (!properties.parent || properties.parent->empty()) {
    return std::nullopt;
  }
  if (isWindow(object, properties) || properties.parent->path == kRootPath) {
    return makeApplication(object.pid, object.timeout);
  }
  ObjectHandle parent = object;
  parent.ref = *properties.parent;
  parent.place = MenuPlace::none;
  parent = withMenuPlace(std::move(parent));
  const PropertiesPtr above = reader_.read(parent, Property::basics);
  if (above && isTitleWithMenu(parent, *above)) {
    parent.facet = Facet::openedMenu;
  }
  return makeElement(std::move(parent));
}

}  // namespace tarqo::lnx::atspi
