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

void addFlag(Json& node, const char* key, const Value* value) {
  if (const auto flag = booleanValue(value)) {
    node[key] = *flag;
  }
}

}  // namespace

void NodeList::emit(Json node, StoredNode stored) {
  table.add(node["id"].get<std::string>(), std::move(stored));
  nodes.push_back(std::move(node));
}

void TreeWalk::walkWindow(const Element& app, const Element& window) {
  scope_ = platform_.accessibility.readTree(window, {budget_.deadline, budget_.maxNodes});
  walk(window, nullptr, 0);
  if (silenced()) {
    // What was not read may be missing anywhere. The focused element is looked for all the same.
    list_.truncated = true;
    scope_->askAgain();
  }
  addFocused(app);
  scope_.reset();
}

bool TreeWalk::exhausted() const {
  return list_.nodes.size() >= budget_.maxNodes || platform_.clock.now() >= budget_.deadline;
}

// The members that a node of the tree and the focused element share. A secure element's frame joins
// the secure ones here, since that holds for both.
Json TreeWalk::nodeOf(const Element& element, const Description& description,
                      const Json& parentId) {
  const bool search = text(find(description.attrs, "AXSubrole")) == "AXSearchField";
  Json node = {{"id", list_.nextId()},
               {"parentId", parentId},
               {"role", search ? std::string("searchbox") : roleName(description.role)},
               {"rawRole", description.role},
               {"name", description.name},
               {"enabled", description.enabled}};
  const auto bounds = frameFrom(description.attrs);
  if (description.secure) {
    node["secure"] = true;
    if (bounds) {
      frames_.secure.push_back(*bounds);
    }
  }
  node["editable"] = editableText(platform_.accessibility, element, description);
  if (!description.value.empty()) {
    node["value"] = description.value;
  }
  if (bounds) {
    node["bounds"] = rectJSON(*bounds);
  }
  return node;
}

void TreeWalk::walk(const Element& element, const Json& parentId, int depth) {
  // The window itself is listed whatever is left of the time, and unless it says that it is hidden:
  // it is what the focused element and recognised text hang on.
  const bool isWindow = depth == 0;
  if (!isWindow && exhausted()) {
    list_.truncated = true;
    return;
  }
  Accessibility& ax = platform_.accessibility;
  const Description description = describe(ax, element);
  if (!isWindow && description.attrs.empty() && silenced()) {
    return;
  }
  if (isHidden(description)) {
    return;
  }
  const auto bounds = frameFrom(description.attrs);
  const std::vector<std::string> actions = actionNames(ax, element);
  const bool pressable = hasAction(actions, "AXPress");
  const bool clickable = description.enabled && !description.secure &&
                         (pressable || (bounds && isPointerRole(description.role)));
  if (clickable && bounds) {
    frames_.clickable.push_back(*bounds);
  }

  Json node = nodeOf(element, description, parentId);
  node["clickable"] = clickable;
  node["press"] = pressable;
  node["menu"] = hasAction(actions, "AXShowMenu");
  if (const Value* url = find(description.attrs, "AXURL");
      description.role == "AXWebArea" && url != nullptr && url->as<Url>() != nullptr) {
    node["url"] = url->as<Url>()->absolute;
  }
  if (!description.detail.empty() && description.detail != description.name) {
    node["description"] = description.detail;
  }
  addFlag(node, "selected", find(description.attrs, "AXSelected"));
  addFlag(node, "focused", find(description.attrs, "AXFocused"));
  const Json id = node["id"];
  if (isWindow) {
    list_.rootId = id;
  }
  list_.emit(std::move(node), {element, description.role, description.name, description.identifier,
                               clickable, std::nullopt});

  if (description.secure) {
    return;
  }
  const std::vector<Element> children = childElements(ax, element);
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
  if (list_.nodes.size() >= budget_.maxNodes) {
    return;
  }
  Accessibility& ax = platform_.accessibility;
  const auto focused = elementValue(attribute(ax, app, "AXFocusedUIElement"));
  if (!focused) {
    return;
  }
  const auto& listed = list_.table.entries();
  if (std::any_of(listed.begin(), listed.end(), [&](const NodeTable::Entry& entry) {
        return entry.second.element == *focused;
      })) {
    return;
  }
  const Description description = describe(ax, *focused);
  if (!isTextEntryRole(description.role) || isHidden(description)) {
    return;
  }
  const bool clickable = description.enabled && !description.secure;
  Json node = nodeOf(*focused, description, list_.rootId);
  node["clickable"] = clickable;
  node["focused"] = true;
  list_.emit(std::move(node), {*focused, description.role, description.name, description.identifier,
                               clickable, std::nullopt});
}

}  // namespace tarqo
