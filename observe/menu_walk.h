// The application's menu bar as a flat list of commands.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ax/description.h"
#include "observe/node_list.h"
#include "platform/platform.h"

namespace tarqo {

/// Lists the menu bar and the enabled leaf items of its menus, at most three menus deep. Has its
/// own 1.5 s, so that it can neither starve the window's walk nor be starved by it; what was read
/// by then is listed. With `states` the marks beside items are read too. Worker thread.
class MenuWalk {
 public:
  MenuWalk(const Platform& platform, std::size_t maxNodes, bool states, NodeList& list);

  /// Nothing when the application shows no menu bar.
  void walkMenuBar(const Element& app);

 private:
  using Path = std::vector<std::string>;

  void offer(const Element& menu, const Path& path, int depth);
  void addItem(const Element& item, const Description& description, Path path);
  bool exhausted() const;
  bool mayHideMenu(const Element& item) const;
  std::optional<Element> menuUnder(const Element& item);

  const Platform& platform_;
  std::size_t maxNodes_;
  bool states_;
  NodeList& list_;
  Instant deadline_;
  std::string menuBarId_;
  std::unique_ptr<TreeRead> scope_;  ///< Open while the menu bar is walked.
};

}  // namespace tarqo
