#include "session/node_table.h"

#include <cmath>

#include "base/failure.h"

namespace tarqo {
namespace {

constexpr double kSameTextDistance = 12;

double distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

}  // namespace

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

std::string renewedNodeId(Accessibility& ax, const StoredNode& previous, const NodeTable& nodes) {
  if (previous.box) {
    for (const auto& [id, stored] : nodes.entries()) {
      if (stored.box && stored.name == previous.name &&
          distance(stored.box->center(), previous.box->center()) <= kSameTextDistance) {
        return id;
      }
    }
    fail(failures::kTextMoved);
  }
  if (isDescribedBy(previous, describe(ax, previous.element))) {
    for (const auto& [id, stored] : nodes.entries()) {
      if (stored.element == previous.element) {
        return id;
      }
    }
  }
  fail(failures::kElementChanged);
}

}  // namespace tarqo
