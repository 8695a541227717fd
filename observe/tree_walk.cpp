#include "observe/tree_walk.h"

#include <algorithm>
#include <array>

#include "observe/pointer_roles.h"

namespace tarqo {
namespace {

bool hasAction(const std::vector<std::string>& actions, std::string_view name) {
  return std::find(actions.begin(), actions.end(), name) != actions.end();
}

bool isHidden(const Description& description) {
  return booleanValue(find(description.attrs, "AXHidden")).value_or(false);
}

}  // namespace

void TreeWalk::walkWindow(const Element& app, const Element& window) {
  scope_ = platform_.accessibility.readTree(window, {budget_.deadline, budget_.maxNodes});
  walk(window, std::nullopt, 0);
  if (silenced()) {
    // What was not read may be missing anywhere. The focused element is looked for all the same.
    list_.truncated = true;
    scope_->readLive();
  }
  addFocused(app);
  scope_.reset();
}

bool TreeWalk::exhausted() const {
  return list_.records().size() >= budget_.maxNodes || platform_.clock.now() >= budget_.deadline;
}

// What a node of the tree and the focused element share. A secure element's frame joins the secure
// ones here, since that holds for both.
NodeRecord TreeWalk::recordOf(const Element& element, const Description& description,
                              const std::optional<std::string>& parentId) {
  const bool search = text(find(description.attrs, "AXSubrole")) == "AXSearchField";
  NodeRecord record;
  record.id = list_.nextId();
  record.parentId = parentId;
  record.role = search ? std::string("searchbox") : roleName(description.role);
  record.rawRole = description.role;
  record.name = description.name;
  record.identifier = description.identifier;
  record.enabled = description.enabled;
  record.bounds = frameFrom(description.attrs);
  record.secure = description.secure;
  if (record.secure && record.bounds) {
    frames_.secure.push_back(*record.bounds);
  }
  record.editable = editableText(platform_.accessibility, element, description);
  record.value = description.value;
  if (budget_.states) {
    const ControlState state = controlState(platform_.accessibility, element, description);
    record.checked = state.checked;
    record.expanded = state.expanded;
  }
  return record;
}

void TreeWalk::walk(const Element& element, const std::optional<std::string>& parentId, int depth) {
  // The window itself is listed whatever is left of the time, and unless it says that it is hidden:
  // it is what the focused element and recognised text hang on.
  const bool isWindow = depth == 0;
  if (!isWindow && exhausted()) {
    return;  // Whoever lists the children notes it.
  }
  Accessibility& ax = platform_.accessibility;
  const Description description = describe(ax, element);
  if (!isWindow && description.attrs.empty() && silenced()) {
    return;
  }
  if (isHidden(description)) {
    return;
  }
  const std::vector<std::string> actions = actionNames(ax, element);
  NodeRecord record = recordOf(element, description, parentId);
  record.press = hasAction(actions, "AXPress");
  record.menu = hasAction(actions, "AXShowMenu");
  record.clickable = description.enabled && !description.secure &&
                     (*record.press || (record.bounds && isPointerRole(description.role)));
  if (record.clickable && record.bounds) {
    frames_.clickable.push_back(*record.bounds);
  }
  if (const Value* url = find(description.attrs, "AXURL");
      description.role == "AXWebArea" && url != nullptr && url->as<Url>() != nullptr) {
    record.url = url->as<Url>()->absolute;
  }
  if (description.detail != description.name) {
    record.description = description.detail;
  }
  record.selected = booleanValue(find(description.attrs, "AXSelected"));
  record.focused = booleanValue(find(description.attrs, "AXFocused"));
  if (depth == 1 && description.role == "AXMenu" && record.bounds &&
      childElements(ax, element).empty()) {
    frames_.popups.emplace_back(*record.bounds, element);
  }
  const std::string id = record.id;
  if (isWindow) {
    list_.rootId = id;
  }
  list_.add(std::move(record), element);
  if (!description.secure) {
    walkChildren(element, id, depth);
  }
}

void TreeWalk::walkChildren(const Element& element, const std::string& id, int depth) {
  const std::vector<Element> children = childElements(platform_.accessibility, element);
  if (depth >= budget_.maxDepth) {
    list_.truncated = list_.truncated || !children.empty();
    return;
  }
  for (const Element& child : children) {
    walk(child, id, depth + 1);
    if (exhausted()) {
      list_.truncated = true;
      return;
    }
  }
}

void TreeWalk::addFocused(const Element& app) {
  if (list_.records().size() >= budget_.maxNodes) {
    return;
  }
  Accessibility& ax = platform_.accessibility;
  const auto focused = elementValue(attribute(ax, app, "AXFocusedUIElement"));
  if (!focused) {
    return;
  }
  const auto& listed = list_.table().entries();
  if (std::any_of(listed.begin(), listed.end(), [&](const NodeTable::Entry& entry) {
        return entry.second.element == *focused;
      })) {
    return;
  }
  const Description description = describe(ax, *focused);
  if (!isTextEntryRole(description.role) || isHidden(description)) {
    return;
  }
  NodeRecord record = recordOf(*focused, description, list_.rootId);
  record.clickable = description.enabled && !description.secure;
  record.focused = true;
  list_.add(std::move(record), *focused);
}

}  // namespace tarqo
