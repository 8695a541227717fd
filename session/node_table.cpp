#include "session/node_table.h"

namespace tarqo {

bool isDescribedBy(const StoredNode& node, const Description& description) {
  return description.role == node.role && description.name == node.name &&
         description.identifier == node.identifier;
}

void NodeTable::add(std::string id, StoredNode node) {
  if (index_.emplace(id, entries_.size()).second) {
    entries_.emplace_back(std::move(id), std::move(node));
  }
}

const StoredNode* NodeTable::find(const std::string& id) const {
  const auto found = index_.find(id);
  return found == index_.end() ? nullptr : &entries_[found->second].second;
}

void NodeTable::clear() {
  entries_.clear();
  index_.clear();
}

}  // namespace tarqo
