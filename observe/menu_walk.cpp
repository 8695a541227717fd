#include "observe/menu_walk.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kMenuBarLimit = 1500ms;
constexpr int kMaxMenuDepth = 3;
constexpr const char* kMenuBarName = "메뉴 막대";

}  // namespace

MenuWalk::MenuWalk(const Platform& platform, std::size_t maxNodes, NodeList& list)
    : platform_(platform),
      maxNodes_(maxNodes),
      list_(list),
      menuBarId_(list.snapshotId + ":menubar") {}

bool MenuWalk::exhausted() const {
  return list_.nodes.size() >= maxNodes_ || platform_.clock.now() >= deadline_;
}

std::optional<Element> MenuWalk::menuUnder(const Element& item) {
  Accessibility& ax = platform_.accessibility;
  for (const Element& child : childElements(ax, item)) {
    if (text(attribute(ax, child, "AXRole")) == "AXMenu") {
      return child;
    }
  }
  return std::nullopt;
}

// Whether an item that shows no menu may have one all the same: what lies under it was not read.
bool MenuWalk::mayHideMenu(const Element& item) const {
  return scope_ && scope_->incomplete() && !childElements(platform_.accessibility, item).empty();
}

void MenuWalk::walkMenuBar(const Element& app) {
  Accessibility& ax = platform_.accessibility;
  const auto menuBar = elementValue(attribute(ax, app, "AXMenuBar"));
  if (!menuBar) {
    return;
  }
  deadline_ = platform_.clock.now() + kMenuBarLimit;
  list_.emit({{"id", menuBarId_},
              {"parentId", nullptr},
              {"role", "menubar"},
              {"rawRole", "AXMenuBar"},
              {"name", kMenuBarName},
              {"enabled", true},
              {"clickable", false},
              {"press", false},
              {"menu", false}},
             {*menuBar, "AXMenuBar", kMenuBarName, "", false, std::nullopt});
  if (exhausted()) {
    return;
  }
  scope_ = ax.readTree(*menuBar, {deadline_, maxNodes_});
  for (const Element& title : childElements(ax, *menuBar)) {
    if (exhausted()) {
      break;
    }
    const std::string name = describe(ax, title).name;
    if (name.empty()) {
      continue;
    }
    if (const auto menu = menuUnder(title)) {
      offer(*menu, {name}, 1);
    }
  }
  scope_.reset();
}

void MenuWalk::offer(const Element& menu, const Path& path, int depth) {
  if (depth > kMaxMenuDepth || exhausted()) {
    return;
  }
  Accessibility& ax = platform_.accessibility;
  for (const Element& item : childElements(ax, menu)) {
    if (exhausted()) {
      return;
    }
    const Description description = describe(ax, item);
    if (description.name.empty()) {
      continue;
    }
    Path itemPath = path;
    itemPath.push_back(description.name);
    if (const auto submenu = menuUnder(item)) {
      offer(*submenu, itemPath, depth + 1);
    } else if (description.enabled && !mayHideMenu(item)) {
      emitItem(item, description, std::move(itemPath));
    }
  }
}

void MenuWalk::emitItem(const Element& item, const Description& description, Path path) {
  Json node = {{"id", list_.nextId()},
               {"parentId", menuBarId_},
               {"role", "menuitem"},
               {"rawRole", description.role},
               {"name", description.name},
               {"enabled", true},
               {"clickable", true},
               {"press", true},
               {"menu", false},
               {"command", std::move(path)}};
  list_.emit(std::move(node), {item, description.role, description.name, description.identifier,
                               true, std::nullopt});
}

}  // namespace tarqo
