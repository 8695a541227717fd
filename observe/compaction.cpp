#include "observe/compaction.h"

#include <unordered_map>

namespace tarqo {
namespace {

bool saysNothing(const NodeRecord& node) {
  return node.name.empty() && node.value.empty() && node.description.empty() && !node.url &&
         !node.secure && !node.checked && !node.expanded && !node.selected.value_or(false) &&
         !node.focused.value_or(false);
}

// A text that shows nothing and an image that nobody has named lie under the pointer, and that is
// all. A context menu is no use of its own: web pages offer one on everything.
bool isOfNoUse(const NodeRecord& node) {
  if (node.press.value_or(false) || node.editable.value_or(false) ||
      node.rawRole == "AXScrollArea") {
    return false;
  }
  return !node.clickable || node.rawRole == "AXStaticText" || node.rawRole == "AXImage";
}

}  // namespace

std::size_t leaveOutBareNodes(NodeList& list) {
  NodeList kept(list.snapshotId());
  kept.truncated = list.truncated;
  kept.rootId = list.rootId;
  const NodeTable table = list.takeTable();
  std::vector<NodeRecord> records = list.takeRecords();
  const std::size_t before = records.size();
  std::unordered_map<std::string, std::optional<std::string>> parentOfLeftOut;
  for (NodeRecord& record : records) {
    // Parents come first, so that one that was left out has its own heir already.
    if (record.parentId) {
      if (const auto above = parentOfLeftOut.find(*record.parentId);
          above != parentOfLeftOut.end()) {
        record.parentId = above->second;
      }
    }
    if (record.id != list.rootId && saysNothing(record) && isOfNoUse(record)) {
      parentOfLeftOut.emplace(std::move(record.id), std::move(record.parentId));
    } else {
      const Element element = table.find(record.id)->element;
      kept.add(std::move(record), element);
    }
  }
  list = std::move(kept);
  return before - list.records().size();
}

}  // namespace tarqo
