#include "observe/placement.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/failure.h"
#include "observe/screens.h"

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

bool isOnScreen(WindowServer& windowServer, const Rect& frame) {
  const std::vector<Screen> screens = windowServer.screens();
  return screens.empty() || std::any_of(screens.begin(), screens.end(), [&](const Screen& screen) {
           const Rect shared = topLeftFrame(screen, screens.front()).intersection(frame);
           return shared.width >= minimumWindowSide && shared.height >= minimumWindowSide;
         });
}

}  // namespace

WindowPlacement windowPlacement(const Platform& platform, Target& target, const Rect& frame) {
  using Kind = WindowPlacement::Kind;
  const Pid pid = target.requirePid();
  if (target.isHidden() || (target.window() && target.isMinimized(*target.window())) ||
      frame.width < minimumWindowSide || frame.height < minimumWindowSide ||
      !isOnScreen(platform.windowServer, frame)) {
    return {};
  }
  for (const WindowInfo& window : platform.windowServer.windows(WindowList::onScreenAboveDesktop)) {
    if (!isOrdinary(window)) {
      continue;
    }
    if (window.ownerPid != pid) {
      if (!isCompanion(window) && window.bounds->intersects(frame)) {
        return {Kind::covered, 0, window};
      }
    } else if (window.number && agree(*window.bounds, frame)) {
      return {Kind::exact, *window.number, std::nullopt};
    }
  }
  return {};
}

}  // namespace tarqo
