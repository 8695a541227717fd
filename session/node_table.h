// The elements of an observation, by node id, and how a node is found again in the next one.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ax/description.h"
#include "platform/accessibility.h"

namespace tarqo {

/// What an observation remembers of a node, to prove later that it is still the same.
struct StoredNode {
  Element element;
  std::string role;
  std::string name;
  std::string identifier;
  bool clickable = false;
  /// Set only for a line of recognised text: its rectangle in screen points. The element is then
  /// the window's.
  std::optional<Rect> box;
};

/// Whether a description read later still has the role, name and identifier of the node.
[[nodiscard]] bool isDescribedBy(const StoredNode& node, const Description& description);

/// Node ids and what they stand for, in the order in which the observation listed them.
class NodeTable {
 public:
  using Entry = std::pair<std::string, StoredNode>;

  /// Adds a node; an id that is there already keeps its first node.
  void add(std::string id, StoredNode node);

  /// The node of an id; null when the table does not hold it.
  [[nodiscard]] const StoredNode* find(const std::string& id) const;

  void clear();

  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }

 private:
  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t> index_;
};

/// The id that a node of an earlier observation has in this one: the same element, unchanged, or
/// the same text at the same place. One or two round trips for an element. Throws "stale_target".
[[nodiscard]] std::string renewedNodeId(Accessibility& accessibility, const StoredNode& previous,
                                        const NodeTable& nodes);

}  // namespace tarqo
