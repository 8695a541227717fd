// The walk of a window's accessibility tree into numbered nodes, within its budgets.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ax/description.h"
#include "observe/node_list.h"
#include "platform/platform.h"

namespace tarqo {

/// What a walk may cost.
struct WalkBudget {
  std::size_t maxNodes;
  int maxDepth;
  Instant deadline;
  bool states = false;  ///< Read what controls show of their state, too.
};

/// Rectangles that decide what becomes of recognised text.
struct WalkFrames {
  std::vector<Rect> secure;
  std::vector<Rect> clickable;
  /// Menus over the window that tell nothing of what is in them, the uppermost first.
  std::vector<std::pair<Rect, Element>> popups;
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
  /// walk has missed it and text goes into it. When the target stops answering, what it reported
  /// until then is listed, as truncated.
  void walkWindow(const Element& app, const Element& window);

 private:
  void addFocused(const Element& app);
  void walk(const Element& element, const std::optional<std::string>& parentId, int depth);
  void walkChildren(const Element& element, const std::string& id, int depth);
  bool exhausted() const;
  bool silenced() const { return scope_ && scope_->incomplete(); }
  NodeRecord recordOf(const Element& element, const Description& description,
                      const std::optional<std::string>& parentId);

  const Platform& platform_;
  const WalkBudget& budget_;
  NodeList& list_;
  WalkFrames& frames_;
  std::unique_ptr<TreeRead> scope_;  ///< Open while the window is walked.
};

}  // namespace tarqo
