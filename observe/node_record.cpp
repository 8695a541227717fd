#include "observe/node_record.h"

#include <utility>

#include "ax/attribute_access.h"

namespace tarqo {
namespace {

template <typename T>
void addPresent(Json& node, const char* key, const std::optional<T>& value) {
  if (value) {
    node[key] = *value;
  }
}

void addText(Json& node, const char* key, std::string text) {
  if (!text.empty()) {
    node[key] = std::move(text);
  }
}

Json checkedJson(Checked checked) {
  return checked == Checked::mixed ? Json("mixed") : Json(checked == Checked::yes);
}

}  // namespace

Json nodeJson(NodeRecord record) {
  Json node = {{"enabled", record.enabled}, {"clickable", record.clickable}};
  node["id"] = std::move(record.id);
  node["parentId"] = record.parentId ? Json(std::move(*record.parentId)) : Json();
  node["role"] = std::move(record.role);
  node["name"] = std::move(record.name);
  if (record.confidence) {
    node["confidence"] = *record.confidence;
  } else {
    node["rawRole"] = std::move(record.rawRole);
  }
  if (record.secure) {
    node["secure"] = true;
  }
  if (record.bounds) {
    node["bounds"] = rectJSON(*record.bounds);
  }
  if (!record.command.empty()) {
    node["command"] = std::move(record.command);
  }
  addText(node, "value", std::move(record.value));
  addText(node, "description", std::move(record.description));
  addPresent(node, "url", record.url);
  addPresent(node, "editable", record.editable);
  addPresent(node, "press", record.press);
  addPresent(node, "menu", record.menu);
  addPresent(node, "selected", record.selected);
  addPresent(node, "focused", record.focused);
  addPresent(node, "expanded", record.expanded);
  if (record.checked) {
    node["checked"] = checkedJson(*record.checked);
  }
  return node;
}

StoredNode storedNode(const NodeRecord& record, Element element) {
  return {.element = std::move(element),
          .role = record.rawRole,
          .name = record.name,
          .identifier = record.identifier,
          .clickable = record.clickable,
          .box = record.confidence ? record.bounds : std::nullopt};
}

}  // namespace tarqo
