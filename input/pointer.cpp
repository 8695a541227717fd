// Clicking, hovering and opening menus: by the element's own action where it has one that answers,
// else by the pointer.

#include <algorithm>

#include "base/failure.h"
#include "input/nodes_spent.h"
#include "session/session.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr double kMinFrameSide = 1;

constexpr Duration kHoverRest = 450ms;
constexpr Duration kActionOpensMenu = 250ms;

constexpr std::string_view kPress = "AXPress";
constexpr std::string_view kShowMenu = "AXShowMenu";

bool offers(const std::vector<std::string>& actions, std::string_view name) {
  return std::find(actions.begin(), actions.end(), name) != actions.end();
}

}  // namespace

Json Session::click(const Json& args) {
  actedAt_ = platform_.clock.now();
  const NodesSpent spent(nodes_);
  const Element app = requireApp();
  const auto nodeId = textMember(args, "nodeId");
  if (!nodeId || nodeId->empty()) {
    fail(failures::kNodeIdRequired);
  }
  const Stored stored = requireFreshNode(*nodeId, failures::kExpiredClick);
  Json result = stored.box ? clickRecognizedText(stored, app)
                           : clickElement(stored, app, integerMember(args, "count").value_or(1));
  result["nodeId"] = *nodeId;
  result["at"] = timestampNow();
  return result;
}

Session::Stored Session::requireFreshNode(const std::string& nodeId, const FailureText& expired) {
  const Stored* stored = nodes_.find(nodeId);
  if (stored == nullptr || platform_.clock.now() - snapshotAt_ >= kSnapshotLifetime) {
    fail(expired);
  }
  return *stored;
}

Json Session::clickRecognizedText(const Stored& stored, const Element& app) {
  activate(app);
  const Point point = stored.box->center();
  verifyPointer(point, stored.element);
  (void)press(point, 1, [&] { verifyPointer(point, stored.element); });
  return {{"method", "pointer"}, {"via", "ocr"}};
}

// Twice, since what comes to the front may change by coming there.
void Session::verifyAndActivate(const Stored& stored, const Element& app) {
  verifyIdentity(stored);
  activate(app);
  verifyIdentity(stored);
}

void Session::verifyNodeAt(Point point, const Stored& stored) {
  verifyIdentity(stored);
  verifyPointer(point, stored.element);
}

Rect Session::requireVisibleFrame(const Element& element) {
  const auto bounds = frame(platform_.accessibility, element);
  if (!bounds || bounds->width < kMinFrameSide || bounds->height < kMinFrameSide) {
    fail(failures::kNoFrame);
  }
  return *bounds;
}

Json Session::clickElement(const Stored& stored, const Element& app, std::int64_t count) {
  verifyAndActivate(stored, app);
  if (stored.role == "AXMenuItem") {  // A closed menu's item has no place to point at.
    const Performed pressed = performed(stored.element, kPress);
    if (pressed == Performed::refused) {
      fail(failures::kMenuRefused);
    }
    Json result = {{"method", "accessibility"}, {"via", "menubar"}};
    if (pressed == Performed::pending) {
      result["pending"] = true;
    }
    return result;
  }
  const Point point = requireVisibleFrame(stored.element).center();
  Press byAccessibility = Press::refused;
  if (count < 2) {
    byAccessibility = pressByAccessibility(stored.element);
    if (byAccessibility == Press::answered) {
      return {{"method", "accessibility"}};
    }
    if (byAccessibility == Press::pending) {
      return {{"method", "accessibility"}, {"pending", true}};
    }
  }
  verifyPointer(point, stored.element);
  const int clicks = static_cast<int>(std::clamp<std::int64_t>(count, 1, 2));
  const int made = press(point, clicks, [&] { verifyNodeAt(point, stored); });
  Json result = {{"method", count > 1 ? "pointer-double" : "pointer"}};
  if (made < clicks) {
    result["clicks"] = made;
  }
  if (byAccessibility == Press::unanswered) {
    result["fallback"] = "press_unanswered";
  }
  return result;
}

Session::Press Session::pressByAccessibility(const Element& element) {
  Accessibility& ax = platform_.accessibility;
  if (!offers(actionNames(ax, element), kPress)) {
    return Press::refused;
  }
  if (!observer_) {
    listen(running_->id.pid);
  }
  if (window_) {
    watch(*window_);
  }
  const Instant pressedAt = platform_.clock.now();
  switch (performed(element, kPress)) {
    case Performed::refused:
      return Press::refused;
    case Performed::pending:
      return Press::pending;
    case Performed::acknowledged:
      return Press::answered;
    case Performed::taken:
      break;
  }
  return pressAnswered(pressedAt) ? Press::answered : Press::unanswered;
}

Json Session::hover(const Json& args) {
  actedAt_ = platform_.clock.now();
  const NodesSpent spent(nodes_);
  const Element app = requireApp();
  const std::string nodeId = textMember(args, "nodeId").value_or("");
  const Stored stored = requireFreshNode(nodeId, failures::kExpiredHover);
  verifyAndActivate(stored, app);
  // No hit test: the pointer presses nothing, whatever part of the element it rests on.
  const Point point = requireVisibleFrame(stored.element).center();
  verifyInsideApp(point);
  const auto source = platform_.inputEvents.makeSource("");
  glide(point, source.get(), kHoverRest);
  // What the pointer rested on may have been covered meanwhile; then the hover was not seen.
  verifyInsideApp(point);
  return {{"method", "pointer"}, {"nodeId", nodeId}, {"at", timestampNow()}};
}

Json Session::showMenu(const Json& args) {
  actedAt_ = platform_.clock.now();
  const NodesSpent spent(nodes_);
  const Element app = requireApp();
  const std::string nodeId = textMember(args, "nodeId").value_or("");
  const Stored stored = requireFreshNode(nodeId, failures::kExpiredShowMenu);
  verifyAndActivate(stored, app);
  const Point point = requireVisibleFrame(stored.element).center();
  Accessibility& ax = platform_.accessibility;
  Json result = {{"method", "accessibility"}, {"nodeId", nodeId}};
  const Performed shown = offers(actionNames(ax, stored.element), kShowMenu)
                              ? performed(stored.element, kShowMenu)
                              : Performed::refused;
  if (shown != Performed::refused) {
    platform_.clock.turn(kActionOpensMenu);
    if (shown == Performed::pending) {
      result["pending"] = true;
    }
  } else {
    verifyPointer(point, stored.element);
    rightPress(point, [&] { verifyNodeAt(point, stored); });
    result["method"] = "pointer";
  }
  result["at"] = timestampNow();
  return result;
}

}  // namespace tarqo
