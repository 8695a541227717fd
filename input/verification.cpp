// The proofs that stand between a node id and an event.

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/waiting.h"
#include "input/related_hit.h"
#include "session/session.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr double kWindowMargin = 2;
constexpr Duration kForegroundLimit = 1500ms;
constexpr Duration kForegroundSlice = 50ms;

// What does not tell its role could be anything, a password field too.
bool isSameElement(const Description& now, const StoredNode& stored) {
  return !now.role.empty() && now.role == stored.role && now.name == stored.name &&
         now.identifier == stored.identifier;
}

// The innermost folder of a path whose extension is exactly "app".
std::optional<std::string> innermostBundle(std::string path) {
  while (path.size() > 1) {
    const std::size_t slash = path.rfind('/');
    const std::string_view name = std::string_view(path).substr(slash + 1);
    if (name.size() > 4 && name.ends_with(".app")) {
      return path;
    }
    if (slash == std::string::npos || slash == 0) {
      break;
    }
    path.resize(slash);
  }
  return std::nullopt;
}

// Far outside any display a coordinate may not fit an integer.
std::string truncated(double number) {
  constexpr double kLimit = 1e9;
  return std::to_string(static_cast<long>(std::clamp(number, -kLimit, kLimit)));
}

std::string bracketed(const std::optional<Rect>& frame) {
  if (!frame) {
    return "[none]";
  }
  return "[" + truncated(frame->minX()) + "," + truncated(frame->minY()) + " " +
         truncated(frame->extentX()) + "x" + truncated(frame->extentY()) + "]";
}

}  // namespace

void Session::verifyIdentity(const Stored& stored) {
  const Description now = describe(platform_.accessibility, stored.element);
  if (!isSameElement(now, stored)) {
    fail(failures::kIdentityChanged);
  }
  if (!now.enabled || now.secure || !stored.clickable) {
    fail(failures::kNotClickable);
  }
}

void Session::requireInputTarget(const Stored& stored) {
  const Description now = describe(platform_.accessibility, stored.element);
  if (!isSameElement(now, stored) || !now.enabled || now.secure) {
    fail(failures::kInputTargetChanged);
  }
}

void Session::requireFrontmost() {
  if (!running_) {
    fail(failures::kAppClosed);
  }
  Clock& clock = platform_.clock;
  if (!turnUntil(clock, clock.now() + kForegroundLimit, kForegroundSlice,
                 [&] { return isFrontmost(); })) {
    fail(failures::kNotFrontmost);
  }
}

void Session::requireStillFrontmost() {
  if (!isFrontmost()) {
    fail(failures::kNotFrontmost);
  }
}

void Session::requireKeysHarmless() {
  if (platform_.accessibility.isEndangeredByKeys(running_->id.pid)) {
    fail(failures::kKeysHarmful);
  }
}

void Session::verifyInsideApp(std::span<const Point> points) {
  if (!running_) {
    fail(failures::kAppClosed);
  }
  const auto bounds = window_ ? frame(platform_.accessibility, *window_) : std::nullopt;
  const auto isInside = [&](Point point) {
    return bounds && bounds->grownBy(kWindowMargin).contains(point);
  };
  if (!std::all_of(points.begin(), points.end(), isInside)) {
    fail(failures::kPointOutsideWindow);
  }
  // Menus, panels and overlays lie on other layers; only an ordinary window can cover the point.
  const auto windows = platform_.windowServer.windows(WindowList::onScreenAboveDesktop);
  const auto isCovered = [&](Point point) {
    const auto top = std::find_if(windows.begin(), windows.end(), [&](const WindowInfo& window) {
      return window.layer == 0 && window.bounds && window.bounds->contains(point);
    });
    return top != windows.end() && top->ownerPid != running_->id.pid;
  };
  if (std::any_of(points.begin(), points.end(), isCovered)) {
    fail(failures::kPointCovered);
  }
}

const std::optional<std::string>& Session::ownApp() {
  if (!ownApp_) {
    ownApp_ = innermostBundle(platform_.processes.ownExecutable());
  }
  return *ownApp_;
}

bool Session::isOwnApp(Pid pid) {
  if (!ownApp()) {
    return false;
  }
  const auto running = platform_.workspace.runningApplication(pid);
  return running && running->bundlePath &&
         platform_.bundles.resolved(*running->bundlePath) == *ownApp();
}

void Session::verifyPointer(Point point, const Element& target) {
  verifyInsideApp(point);
  Accessibility& ax = platform_.accessibility;
  const auto hit = ax.elementAt(point);
  if (!hit) {
    fail(failures::kHitTestFailed);
  }
  const auto pid = ax.pidOf(*hit);
  if (pid && *pid != running_->id.pid && isOwnApp(*pid)) {
    // The companion's own overlay lies over the target; the pointer goes through it.
    const auto bounds = frame(ax, target);
    if (bounds && bounds->contains(point)) {
      return;
    }
  }
  if (pid == running_->id.pid && relatedHit(ax, *hit, target)) {
    return;
  }
  fail("target_covered", coveredMessage(point, *hit, target));
}

std::string Session::coveredMessage(Point point, const Element& hit, const Element& target) {
  Accessibility& ax = platform_.accessibility;
  std::string message = "The position (" + truncated(point.x) + "," + truncated(point.y) +
                        ") holds " + text(attribute(ax, hit, "AXRole"));
  const std::string title = text(attribute(ax, hit, "AXTitle"));
  if (!title.empty()) {
    message += " \"" + title + "\"";
  }
  message += " " + bracketed(frame(ax, hit)) + ", not the captured " +
             text(attribute(ax, target, "AXRole")) + " " + bracketed(frame(ax, target)) +
             "; take a fresh snapshot";
  return message;
}

}  // namespace tarqo
