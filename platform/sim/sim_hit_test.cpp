// What lies under a point of the screen.

#include <algorithm>

#include "platform/sim/sim_accessibility.h"

namespace tarqo::sim {
namespace {

bool isHidden(const Node& node) {
  const std::optional<Value> value = node.read("AXHidden");
  const bool* hidden = value ? value->as<bool>() : nullptr;
  return hidden != nullptr && *hidden;
}

// Later children lie over earlier ones; what has no frame of its own may still have visible
// children.
Node* deepestAt(Node& node, Point point) {
  const std::optional<Rect> frame = node.frame();
  if (isHidden(node) || (frame && !frame->contains(point))) {
    return nullptr;
  }
  const auto& children = node.children();
  for (auto child = children.rbegin(); child != children.rend(); ++child) {
    if (Node* found = deepestAt(**child, point)) {
      return found;
    }
  }
  return frame ? &node : nullptr;
}

}  // namespace

void AccessibilityService::hitTest(Point point, Node* result) {
  std::erase_if(hitTests_, [&](const auto& each) { return each.first == point; });
  hitTests_.emplace_back(point, result);
}

Node* AccessibilityService::hit(Point point) const {
  for (const ServerWindow* window : world_.windows.shown()) {
    const bool opaque = window->info.alpha.value_or(1) > 0;
    if (opaque && window->info.bounds && window->info.bounds->contains(point)) {
      return window->window == nullptr ? nullptr : deepestAt(*window->window, point);
    }
  }
  return nullptr;
}

Node* AccessibilityService::scriptedHit(Point point) const {
  const auto scripted = std::find_if(hitTests_.begin(), hitTests_.end(),
                                     [&](const auto& each) { return each.first == point; });
  return scripted == hitTests_.end() ? hit(point) : scripted->second;
}

std::optional<Element> AccessibilityService::elementAt(Point point) {
  Node* node = hitTestFails ? nullptr : scriptedHit(point);
  if (node == nullptr) {
    return std::nullopt;
  }
  const Element element = node->element();
  node = answering(element);
  return node == nullptr || node->app().facts.refusesHitTest ? std::nullopt
                                                             : std::optional(element);
}

}  // namespace tarqo::sim
