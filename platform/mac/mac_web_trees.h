// The accessibility trees of web pages, which Chromium and Electron build only for a client that
// asks.
//
// Worker thread only.
#pragma once

#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/mac/mac_element.h"

namespace tarqo::mac {

/// Sees what is read of a target, and asks its application for the trees of its pages when a web
/// area turns out to be empty: once for each process, since what answered nothing then answers
/// nothing later either, and a page may simply be empty.
class MacWebTrees {
 public:
  /// What a reading of several attributes brought. Talks to no process.
  void described(const MacElement& element, std::span<const std::string_view> names,
                 const std::vector<std::optional<Value>>& values);

  /// What a reading of the children brought. When there are none, and the element is the web area
  /// described last, asks its application; waits for two messaging time-outs at most. The tree
  /// comes when the application has built it: a later reading finds it.
  void listed(const MacElement& element, AXError error, const std::optional<Value>& children);

 private:
  CfRef<AXUIElementRef> webArea_;
  std::set<Pid> asked_;
};

}  // namespace tarqo::mac
