#include "platform/linux/atspi/translate/view.h"

#include <string>

namespace tarqo::lnx::atspi {
namespace {

/// GTK 4 gives objects without a name that of their class ("GtkEntry").
bool isClassName(std::string_view name) {
  const bool ours = name.starts_with("Gtk") || name.starts_with("Adw");
  return (ours && name.size() > 3 && name[3] >= 'A' && name[3] <= 'Z' &&
          name.find(' ') == std::string_view::npos) ||
         name.starts_with("__main__+") || name.starts_with("gtkmm__");
}

/// GTK 4 repeats the name of a control that has a label, the first time with the mark of its
/// mnemonic if it has one ("_OK OK", "7 7").
std::string_view namedOnce(std::string_view name) {
  const std::size_t half = name.size() / 2;
  if (name.size() < 3 || name[half] != ' ') {
    return name;
  }
  const std::string_view plain = name.substr(half + 1);
  std::string marked(name.substr(0, half));
  if (marked == plain) {
    return plain;
  }
  const std::size_t mark = marked.find('_');
  return mark != std::string::npos && marked.erase(mark, 1) == plain ? plain : name;
}

bool isSearchField(const View& view) {
  const Properties& properties = view.properties;
  if (!properties.is(Role::entry) && !properties.is(Role::text)) {
    return false;
  }
  // GTK 4 has another role for its other entries.
  if (view.toolkit == Toolkit::gtk4 && properties.is(Role::entry)) {
    return true;
  }
  for (const std::string_view key : {"text-input-type", "xml-roles"}) {
    const std::string* kind = properties.attribute(key);
    if (kind != nullptr && (*kind == "search" || *kind == "searchbox")) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool isWindow(const Properties& properties) {
  return isWindowRole(properties.role) && properties.parent && properties.parent->path == kRootPath;
}

bool isWindow(const ObjectHandle& object, const Properties& properties) {
  return object.isTopLevel() || isWindow(properties);
}

bool isWindow(const View& view) { return view.topLevel || isWindow(view.properties); }

bool isSecure(const Properties& properties) { return properties.is(Role::passwordText); }

ValueSource valueSource(const View& view) {
  if (view.facet == Facet::openedMenu || isWindow(view) || isSecure(view.properties)) {
    return ValueSource::none;
  }
  return refined(roleRow(view.properties.role), view.properties.states).value;
}

std::string_view shownName(const Properties& properties, Toolkit toolkit) {
  if (toolkit != Toolkit::gtk4 || properties.is(Role::label)) {
    return properties.name;
  }
  return isClassName(properties.name) ? std::string_view() : namedOnce(properties.name);
}

AxRole axRole(const View& view) {
  const Properties& properties = view.properties;
  if (isWindow(view)) {
    const bool standard =
        properties.is(Role::frame) || properties.is(Role::window) || !isWindowRole(properties.role);
    return {"AXWindow", standard ? "AXStandardWindow" : "AXDialog"};
  }
  if (view.facet == Facet::openedMenu) {
    return {"AXMenu", ""};
  }
  if (view.facet == Facet::opener) {
    return {"AXMenuItem", ""};
  }
  if (isMenuEntryRole(properties.role) && !properties.is(Role::separator)) {
    if (view.place == MenuPlace::bar && view.toolkit == Toolkit::gtk4) {
      // Nothing opens these menus but the pointer, and what is in them shows only then.
      return {"AXPopUpButton", ""};
    }
    if (view.place == MenuPlace::bar) {
      return {"AXMenuBarItem", ""};
    }
    if (view.place == MenuPlace::menu) {
      return {"AXMenuItem", ""};
    }
  }
  const RoleRow row = refined(roleRow(properties.role), properties.states);
  if (row.axRole == "AXComboBox" && properties.has(Interface::editableText)) {
    // Firefox's address bar is its own field; in other toolkits the field is a child.
    return {"AXTextField", ""};
  }
  if (isSearchField(view)) {
    return {row.axRole, "AXSearchField"};
  }
  return {row.axRole, row.axSubrole};
}

bool hasTextChildren(Toolkit toolkit) {
  return toolkit == Toolkit::chromium || toolkit == Toolkit::gtk4;
}

bool repeatsParent(const Properties& child, const Properties& parent, Toolkit toolkit) {
  return (child.is(Role::staticText) || child.is(Role::label)) && !child.name.empty() &&
         child.name == shownName(parent, toolkit);
}

}  // namespace tarqo::lnx::atspi
