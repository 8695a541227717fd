#include "session/node_store.h"

#include <utility>

namespace tarqo {

StoredNode NodeStore::require(const std::string& id, const FailureText& expired) const {
  const StoredNode* stored = nodes_.find(id);
  if (stored == nullptr || clock_.now() - at_ >= kSnapshotLifetime) {
    fail(expired);
  }
  return *stored;
}

void NodeStore::commit(NodeTable nodes, Instant at) {
  nodes_ = std::move(nodes);
  at_ = at;
}

}  // namespace tarqo
