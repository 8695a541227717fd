// The nodes of one snapshot as they come.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "observe/node_record.h"
#include "session/node_table.h"

namespace tarqo {

class NodeList {
 public:
  explicit NodeList(std::string snapshotId) : snapshotId_(std::move(snapshotId)) {}

  [[nodiscard]] const std::string& snapshotId() const { return snapshotId_; }

  /// "<snapshot id>:<number of nodes listed so far>".
  [[nodiscard]] std::string nextId() const {
    return snapshotId_ + ":" + std::to_string(records_.size());
  }

  /// Lists a node for the client and remembers what it stands for.
  void add(NodeRecord record, const Element& element) {
    table_.add(record.id, storedNode(record, element));
    records_.push_back(std::move(record));
  }

  [[nodiscard]] const std::vector<NodeRecord>& records() const { return records_; }
  [[nodiscard]] const NodeTable& table() const { return table_; }
  [[nodiscard]] std::vector<NodeRecord> takeRecords() { return std::move(records_); }
  [[nodiscard]] NodeTable takeTable() { return std::move(table_); }

  bool truncated = false;
  std::optional<std::string> rootId;  ///< Of the window's own node; null while it is not listed.

 private:
  std::string snapshotId_;
  std::vector<NodeRecord> records_;
  NodeTable table_;
};

}  // namespace tarqo
