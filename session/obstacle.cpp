#include "session/obstacle.h"

#include <algorithm>
#include <utility>

namespace tarqo {

std::optional<WindowInfo> foreignWindowAt(const Platform& platform, Pid target, Point point) {
  const auto windows = platform.windowServer.windows(WindowList::onScreenAboveDesktop);
  const auto top = std::find_if(windows.begin(), windows.end(), [point](const WindowInfo& window) {
    return window.bounds && window.bounds->contains(point);
  });
  return top != windows.end() && top->ownerPid != target ? std::optional(*top) : std::nullopt;
}

std::optional<WindowInfo> windowInFront(const Platform& platform, Pid target) {
  const std::optional<Pid> front = platform.workspace.frontmostApplication();
  if (!front || front == target) {
    return std::nullopt;
  }
  const auto windows = platform.windowServer.windows(WindowList::onScreenAboveDesktop);
  const auto top = std::find_if(windows.begin(), windows.end(), [front](const WindowInfo& window) {
    return window.ownerPid == front;
  });
  return top != windows.end() ? std::optional(*top) : std::nullopt;
}

Failure naming(Failure failure, const std::optional<WindowInfo>& obstacle) {
  if (!obstacle || !obstacle->caption) {
    return failure;
  }
  failure.addSentence("In the way is " + *obstacle->caption + ".");
  Json named = Json::object();
  if (obstacle->ownerName) {
    named["application"] = *obstacle->ownerName;
  }
  if (obstacle->title) {
    named["title"] = *obstacle->title;
  }
  failure.addDetail("inTheWay", std::move(named));
  return failure;
}

}  // namespace tarqo
