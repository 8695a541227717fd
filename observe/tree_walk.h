// The walk of a window's accessibility tree into numbered nodes, within its budgets.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ax/description.h"
#include "base/json.h"
#include "platform/platform.h"
#include "session/node_table.h"

namespace tarqo {

/// What a walk may cost.
struct WalkBudget {
  std::size_t maxNodes = 1500;
  int maxDepth = 40;
  Instant deadline;
};

/// The nodes of one snapshot as they come: listed for the client, remembered in the table.
struct NodeList {
  std::string snapshotId;
  Json nodes = Json::array();
  NodeTable& table;
  bool truncated = false;
  Json rootId = nullptr;  ///< The id of the window's own node; null while it is not listed.

  /// "<snapshot id>:<number of nodes listed so far>".
  [[nodiscard]] std::string nextId() const {
    return snapshotId + ":" + std::to_string(nodes.size());
  }

  /// Lists `node` and remembers what it stands for. The node's "id" is the key of both.
  void emit(Json node, StoredNode stored);
};

/// Rectangles that decide what becomes of recognised text.
struct WalkFrames {
  std::vector<Rect> secure;
  std::vector<Rect> clickable;
};

/// Walks depth-first, parents before children, children in the order the element reports them.
/// Hidden elements are left out with all under them; the children of a password field are not
/// visited. Worker thread; the budgets are checked before each element but the window, so the walk
/// ends at most one element's reads after its deadline.
class TreeWalk {
 public:
  TreeWalk(const Platform& platform, const WalkBudget& budget, NodeList& list, WalkFrames& frames)
      : platform_(platform), budget_(budget), list_(list), frames_(frames) {}

  /// Lists `window` of `app` and all under it, and the element with the keyboard focus when the
  /// walk has missed it and text goes into it. When the target stops answering, what it told until
  /// then is listed, as truncated.
  void walkWindow(const Element& app, const Element& window);

 private:
  void addFocused(const Element& app);
  void walk(const Element& element, const Json& parentId, int depth);
  bool exhausted() const;
  bool silenced() const { return scope_ && scope_->incomplete(); }
  Json nodeOf(const Element& element, const Description& description, const Json& parentId);

  const Platform& platform_;
  const WalkBudget& budget_;
  NodeList& list_;
  WalkFrames& frames_;
  std::unique_ptr<TreeRead> scope_;  ///< Open while the window is walked.
};

}  // namespace tarqo
