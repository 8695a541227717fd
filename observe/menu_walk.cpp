#include "observe/menu_walk.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kMenuBarLimit = 1500ms;
constexpr int kMaxMenuDepth = 3;
constexpr const char* kMenuBarName = "메뉴 막대";

}  // namespace

MenuWalk::MenuWalk(const Platform& platform, std::size_t maxNodes, bool states, NodeList& list)
    : platform_(platform),
      maxNodes_(maxNodes),
      states_(states),
      list_(list),
      menuBarId_(list.snapshotId() + ":menubar") {}

bool MenuWalk::exhausted() const {
  return list_.records().size() >= maxNodes_ || platform_.clock.now() >= deadline_;
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
  NodeRecord bar;
  bar.id = menuBarId_;
  bar.role = "menubar";
  bar.rawRole = "AXMenuBar";
  bar.name = kMenuBarName;
  bar.press = false;
  bar.menu = false;
  list_.add(std::move(bar), *menuBar);
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
      addItem(item, description, std::move(itemPath));
    }
  }
}

void MenuWalk::addItem(const Element& item, const Description& description, Path path) {
  NodeRecord record;
  record.id = list_.nextId();
  record.parentId = menuBarId_;
  record.role = "menuitem";
  record.rawRole = description.role;
  record.name = description.name;
  record.identifier = description.identifier;
  record.clickable = true;
  record.press = true;
  record.menu = false;
  record.command = std::move(path);
  if (states_) {
    record.checked = controlState(platform_.accessibility, item, description).checked;
  }
  list_.add(std::move(record), item);
}

}  // namespace tarqo
