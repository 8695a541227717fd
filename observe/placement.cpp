// Whether the target window is really shown, unobstructed, and which window-server window it is.

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "observe/screens.h"
#include "session/session.h"

namespace tarqo {
namespace {

constexpr double kFrameTolerance = 2.0;

// The product's own companion application may float over any window.
constexpr std::array<std::string_view, 2> kCompanionNames{"Tarqo", "tarqo-app"};

bool isCompanion(const WindowInfo& window) {
  return window.ownerName && std::find(kCompanionNames.begin(), kCompanionNames.end(),
                                       *window.ownerName) != kCompanionNames.end();
}

bool isOrdinary(const WindowInfo& window) {
  return window.layer == 0 && window.alpha.value_or(1) > 0 && window.ownerPid && window.bounds;
}

bool agree(const Rect& a, const Rect& b) {
  return std::abs(a.x - b.x) <= kFrameTolerance && std::abs(a.y - b.y) <= kFrameTolerance &&
         std::abs(a.width - b.width) <= kFrameTolerance &&
         std::abs(a.height - b.height) <= kFrameTolerance;
}

std::string_view visibility(Session::WindowPlacement::Kind kind) {
  using Kind = Session::WindowPlacement::Kind;
  switch (kind) {
    case Kind::exact:
      return "visible";
    case Kind::covered:
      return "occluded";
    case Kind::missing:
      break;
  }
  return "hidden";
}

}  // namespace

bool Session::isMinimized(const Element& window) {
  return booleanValue(attribute(platform_.accessibility, window, "AXMinimized")).value_or(false);
}

bool Session::isAppHidden() {
  if (running_ && platform_.workspace.isHidden(running_->id)) {
    return true;
  }
  return app_ &&
         booleanValue(attribute(platform_.accessibility, *app_, "AXHidden")).value_or(false);
}

bool Session::isOnScreen(const Rect& frame) {
  const std::vector<Screen> screens = platform_.windowServer.screens();
  return screens.empty() || std::any_of(screens.begin(), screens.end(), [&](const Screen& screen) {
           const Rect shared = topLeftFrame(screen, screens.front()).intersection(frame);
           return shared.width >= minimumWindowSide && shared.height >= minimumWindowSide;
         });
}

Session::WindowPlacement Session::windowPlacement(const Rect& frame) {
  using Kind = WindowPlacement::Kind;
  if (!running_) {
    fail(failures::kAppClosed);
  }
  if (isAppHidden() || (window_ && isMinimized(*window_)) || frame.width < minimumWindowSide ||
      frame.height < minimumWindowSide || !isOnScreen(frame)) {
    return {};
  }
  for (const WindowInfo& window :
       platform_.windowServer.windows(WindowList::onScreenAboveDesktop)) {
    if (!isOrdinary(window)) {
      continue;
    }
    if (window.ownerPid != running_->id.pid) {
      if (!isCompanion(window) && window.bounds->intersects(frame)) {
        return {Kind::covered, 0};
      }
    } else if (window.number && agree(*window.bounds, frame)) {
      return {Kind::exact, *window.number};
    }
  }
  return {};
}

Json Session::geometry() {
  const Element app = requireApp();
  const auto window = primaryWindow(app);
  const auto bounds = window ? frame(platform_.accessibility, *window) : std::nullopt;
  if (!bounds) {
    fail(failures::kNoWindow);
  }
  const WindowPlacement placement = windowPlacement(*bounds);
  return {{"bounds", rectJSON(*bounds)},
          {"visibility", visibility(placement.kind)},
          {"minimized", isMinimized(*window)},
          {"hidden", isAppHidden()}};
}

}  // namespace tarqo
