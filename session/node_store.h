// The nodes that the client may name, and for how long.
#pragma once

#include <string>

#include "base/failure.h"
#include "platform/clock.h"
#include "session/node_table.h"

namespace tarqo {

/// How old an observation may be for one of its nodes to be acted on or followed.
inline constexpr Duration kSnapshotLifetime = std::chrono::seconds(60);

/// Holds the nodes of the last observation. Worker thread only.
class NodeStore {
 public:
  explicit NodeStore(Clock& clock) : clock_(clock) {}

  /// The node that `id` stands for; fails with `expired` when it stands for none any more.
  [[nodiscard]] StoredNode require(const std::string& id, const FailureText& expired) const;

  /// Replaces all nodes by those of an observation whose tree was read until `at`.
  void commit(NodeTable nodes, Instant at);

  void clear() { nodes_.clear(); }

 private:
  Clock& clock_;
  NodeTable nodes_;
  Instant at_ = kDistantPast;
};

/// Empties the store on every way out of a scope: one observation allows one action.
class ClearNodesOnExit {
 public:
  explicit ClearNodesOnExit(NodeStore& nodes) : nodes_(nodes) {}
  ~ClearNodesOnExit() { nodes_.clear(); }
  ClearNodesOnExit(const ClearNodesOnExit&) = delete;
  ClearNodesOnExit& operator=(const ClearNodesOnExit&) = delete;

 private:
  NodeStore& nodes_;
};

}  // namespace tarqo
