// One observation allows one action.
#pragma once

#include "session/node_table.h"

namespace tarqo {

/// Empties the node table on every way out of an action, whatever became of it.
class NodesSpent {
 public:
  explicit NodesSpent(NodeTable& nodes) : nodes_(nodes) {}
  ~NodesSpent() { nodes_.clear(); }
  NodesSpent(const NodesSpent&) = delete;
  NodesSpent& operator=(const NodesSpent&) = delete;

 private:
  NodeTable& nodes_;
};

}  // namespace tarqo
