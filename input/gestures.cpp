#include "input/gestures.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <vector>

#include "base/failure.h"
#include "input/events.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kMaxDelta = 2000;
constexpr std::int64_t kLongestPull = 400;
constexpr Duration kAfterWheel = 150ms;

constexpr double kMaxInset = 28;
constexpr double kInsetPart = 6;
constexpr double kMinInnerSide = 8;
constexpr Duration kBeforeDrag = 12ms;

constexpr double kPullLength = 110;
constexpr double kPullBottomMargin = 4;
constexpr int kPullSteps = 6;
constexpr Duration kPullSlice = 10ms;
constexpr Duration kAfterPull = 350ms;

constexpr double kSwipeHeight = 0.78;
constexpr int kSwipeSteps = 8;
constexpr Duration kSwipeSlice = 8ms;
constexpr Duration kAfterSwipe = 500ms;

// The part of an area that a drag can use without touching its edges, where systems have gestures
// and handles of their own.
Rect requireInnerArea(const Rect& area) {
  const double insetX = std::min(area.extentX() / kInsetPart, kMaxInset);
  const double insetY = std::min(area.extentY() / kInsetPart, kMaxInset);
  const Rect inner{area.minX() + insetX, area.minY() + insetY, area.extentX() - 2 * insetX,
                   area.extentY() - 2 * insetY};
  if (inner.width <= kMinInnerSide || inner.height <= kMinInnerSide) {
    fail(failures::kSwipeTooSmall);
  }
  return inner;
}

// Without its window's place nothing could be proven of a gesture's way.
Rect requireGestureArea(Session& session) {
  const auto bounds = session.target.windowFrame();
  if (!bounds) {
    fail(failures::kInputNotVisible);
  }
  return *bounds;
}

// Positive distances show what lies further down and to the right.
void turnWheel(Session& session, const WheelPlace& place, std::int64_t dx, std::int64_t dy) {
  InputEvents& events = session.platform.inputEvents;
  const auto source = events.makeSource("");
  post(session, source.get(), MouseEvent{MouseEventType::moved, place.point});
  const auto wheel = events.create(
      source.get(), ScrollEvent{static_cast<std::int32_t>(-dy), static_cast<std::int32_t>(-dx),
                                session.platform.accessibility.wheelStep(place.over)});
  if (!wheel) {
    fail(failures::kNoScrollEvent);
  }
  place.proof();
  postToTarget(session, *wheel, failures::kPointCovered);
  session.platform.clock.runLoopFor(kAfterWheel);
}

// What ends the drag exists before it begins, so that the button is never left held down: a drag
// that could not end is left out. It does not begin at the node that was proven, so all of it is:
// before the pointer moves, and again when the button is about to go down.
void drag(Session& session, Point start, std::span<const Point> way, Duration slice) {
  std::vector<Point> all(way.begin(), way.end());
  all.push_back(start);
  verifyInsideApp(session, all);
  InputEvents& events = session.platform.inputEvents;
  const auto source = events.makeSource("");
  post(session, source.get(), MouseEvent{MouseEventType::moved, start});
  session.platform.clock.sleep(kBeforeDrag);
  const MouseEvent up{MouseEventType::leftUp, way.back(), 1};
  const auto spare = events.create(source.get(), up);
  if (!spare) {
    return;
  }
  const auto down = events.create(source.get(), MouseEvent{MouseEventType::leftDown, start, 1});
  verifyInsideApp(session, all);
  if (down) {
    postToTarget(session, *down, failures::kPointCovered);
  }
  session.platform.clock.sleep(kBeforeDrag);
  for (const Point& point : way) {
    post(session, source.get(), MouseEvent{MouseEventType::leftDragged, point, 1});
    session.platform.clock.sleep(slice);
  }
  release(session, source.get(), up, *spare);
}

void spotlightPull(Session& session, const Rect& area) {
  const Rect inner = requireInnerArea(area);
  const Point start = inner.center();
  const double travel = std::min(start.y + kPullLength, inner.maxY() - kPullBottomMargin) - start.y;
  std::array<Point, kPullSteps> way;
  for (int step = 1; step <= kPullSteps; ++step) {
    way.at(static_cast<std::size_t>(step - 1)) = {start.x, start.y + travel * step / kPullSteps};
  }
  drag(session, start, way, kPullSlice);
  session.platform.clock.runLoopFor(kAfterPull);
}

// Starts slowly and ends fast, like a flick.
void trackpadSwipe(Session& session, const Rect& area, double dx) {
  const Rect inner = requireInnerArea(area);
  const Point start{dx < 0 ? inner.maxX() : inner.minX(),
                    inner.minY() + kSwipeHeight * inner.height};
  const double travel = std::clamp(start.x + dx, inner.minX(), inner.maxX()) - start.x;
  std::array<Point, kSwipeSteps> way;
  for (int step = 1; step <= kSwipeSteps; ++step) {
    const double part = static_cast<double>(step) / kSwipeSteps;
    way.at(static_cast<std::size_t>(step - 1)) = {start.x + travel * part * part, start.y};
  }
  drag(session, start, way, kSwipeSlice);
  session.platform.clock.runLoopFor(kAfterSwipe);
}

}  // namespace

void scroll(Session& session, const WheelPlace& place, std::int64_t dx, std::int64_t dy) {
  const auto isBounded = [](std::int64_t delta) {
    return delta >= -kMaxDelta && delta <= kMaxDelta;
  };
  if ((dx == 0 && dy == 0) || !isBounded(dx) || !isBounded(dy)) {
    fail(failures::kUnboundedScroll);
  }
  session.target.requireFrontmost();
  if (!session.platform.inputEvents.scrollsByDragging()) {
    if (dy != 0) {
      turnWheel(session, place, 0, dy);
    }
    if (dx != 0) {
      turnWheel(session, place, dx, 0);
    }
  } else if (dx != 0) {
    trackpadSwipe(session, requireGestureArea(session), static_cast<double>(dx));
  } else if (dy < 0 && dy >= -kLongestPull) {
    spotlightPull(session, requireGestureArea(session));
  } else {
    turnWheel(session, place, 0, dy);
  }
}

}  // namespace tarqo
