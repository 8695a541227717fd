// A node of an observation: what the client reads of it, and what the helper remembers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ax/control_state.h"
#include "base/json.h"
#include "platform/geometry.h"
#include "session/node_table.h"

namespace tarqo {

/// Empty texts and absent values have no member on the wire, but for those that every node has.
struct NodeRecord {
  std::string id;
  std::optional<std::string> parentId;
  std::string role;  ///< The short role of responses: "button".
  std::string rawRole;
  std::string name;
  std::string identifier;  ///< Remembered, never shown.
  std::string value;
  std::string description;
  std::optional<std::string> url;
  std::vector<std::string> command;  ///< The titles that lead to a menu item, itself included.
  std::optional<Rect> bounds;
  std::optional<float> confidence;  ///< Of a line of recognised text; absent for an element.
  bool enabled = true;
  bool secure = false;
  bool clickable = false;
  std::optional<bool> editable;
  std::optional<bool> press;
  std::optional<bool> menu;
  std::optional<bool> selected;
  std::optional<bool> focused;
  std::optional<Checked> checked;
  std::optional<bool> expanded;
};

/// The node as responses show it.
[[nodiscard]] Json nodeJson(NodeRecord record);

/// What is remembered of it. `element` is the window's for a line of recognised text.
[[nodiscard]] StoredNode storedNode(const NodeRecord& record, Element element);

}  // namespace tarqo
