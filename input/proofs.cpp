#include "input/proofs.h"

#include <algorithm>
#include <cmath>

#include "ax/description.h"
#include "base/failure.h"
#include "input/related_hit.h"
#include "session/obstacle.h"

namespace tarqo {
namespace {

constexpr double kWindowMargin = 2;
constexpr double kMinFrameSide = 1;

// What does not report its role could be anything, a password field too.
bool isSameElement(const Description& now, const StoredNode& stored) {
  return !now.role.empty() && isDescribedBy(stored, now);
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

// What the client reads of an element: its role, its title where it has one, its frame.
std::string summary(Accessibility& ax, const Element& element, bool withTitle) {
  std::string words = text(attribute(ax, element, "AXRole"));
  const std::string title = withTitle ? text(attribute(ax, element, "AXTitle")) : "";
  if (!title.empty()) {
    words += " \"" + title + "\"";
  }
  return words + " " + bracketed(frame(ax, element));
}

}  // namespace

void verifyIdentity(Session& session, const StoredNode& stored) {
  const Description now = describe(session.platform.accessibility, stored.element);
  if (!isSameElement(now, stored)) {
    fail(failures::kIdentityChanged);
  }
  if (!now.enabled || now.secure || !stored.clickable) {
    fail(failures::kNotClickable);
  }
}

void requireInputTarget(Session& session, const StoredNode& stored) {
  const Description now = describe(session.platform.accessibility, stored.element);
  if (!isSameElement(now, stored) || !now.enabled || now.secure) {
    fail(failures::kInputTargetChanged);
  }
}

void verifyInsideApp(Session& session, Point point) {
  verifyInsideApp(session, std::span(&point, 1));
}

void verifyInsideApp(Session& session, std::span<const Point> points) {
  const Pid pid = session.target.requirePid();
  const auto bounds = session.target.windowFrame();
  const auto isInside = [&](Point point) {
    return bounds && bounds->grownBy(kWindowMargin).contains(point);
  };
  if (!std::all_of(points.begin(), points.end(), isInside)) {
    fail(failures::kPointOutsideWindow);
  }
  // Menus, panels and overlays lie on other layers; only an ordinary window can cover the point.
  const auto windows = session.platform.windowServer.windows(WindowList::onScreenAboveDesktop);
  for (const Point point : points) {
    const auto top = std::find_if(windows.begin(), windows.end(), [&](const WindowInfo& window) {
      return window.layer == 0 && window.bounds && window.bounds->contains(point);
    });
    if (top != windows.end() && top->ownerPid != pid) {
      throw naming(Failure(failures::kPointCovered), *top);
    }
  }
}

void verifyPointer(Session& session, Point point, const Element& target) {
  verifyInsideApp(session, point);
  Accessibility& ax = session.platform.accessibility;
  const auto hit = ax.elementAt(point);
  const auto obstacle = [&] {
    return foreignWindowAt(session.platform, session.target.requirePid(), point);
  };
  if (!hit) {
    throw naming(Failure(failures::kHitTestFailed), obstacle());
  }
  const auto pid = ax.pidOf(*hit);
  const bool isTargets = pid == session.target.requirePid();
  if (pid && !isTargets && session.ownApplication.owns(*pid)) {
    // The companion's own overlay lies over the target; the pointer goes through it.
    const auto bounds = frame(ax, target);
    if (bounds && bounds->contains(point)) {
      return;
    }
  }
  if (isTargets && relatedHit(ax, *hit, target)) {
    return;
  }
  throw naming(
      Failure(failures::kOtherElementHit, {truncated(point.x), truncated(point.y),
                                           summary(ax, *hit, true), summary(ax, target, false)}),
      obstacle());
}

void verifyNodeAt(Session& session, Point point, const StoredNode& stored) {
  verifyIdentity(session, stored);
  verifyPointer(session, point, stored.element);
}

void verifyAndActivate(Session& session, const StoredNode& stored) {
  verifyIdentity(session, stored);
  session.target.activate();
  verifyIdentity(session, stored);
}

Rect requireVisibleFrame(Session& session, const Element& element) {
  const auto bounds = frame(session.platform.accessibility, element);
  if (!bounds || bounds->width < kMinFrameSide || bounds->height < kMinFrameSide) {
    fail(failures::kNoFrame);
  }
  return *bounds;
}

}  // namespace tarqo
