#include "platform/sim/sim_windows.h"

#include <algorithm>
#include <utility>

#include "platform/sim/sim_application.h"

namespace tarqo::sim {
namespace {

using Stack = std::vector<std::unique_ptr<ServerWindow>>;

Stack::iterator positionOf(Stack& stack, const ServerWindow& window) {
  return std::find_if(stack.begin(), stack.end(),
                      [&](const auto& each) { return each.get() == &window; });
}

int layerOf(const ServerWindow& window) { return window.info.layer.value_or(0); }

// Colours that differ in every channel between neighbouring numbers, and are never black or white.
Colour colourOf(WindowNumber number) {
  const auto channel = [number](WindowNumber factor) {
    return static_cast<std::uint8_t>(32 + number * factor % 191);
  };
  return {channel(37), channel(71), channel(113)};
}

}  // namespace

WindowServerService::WindowServerService() { addDisplay({0, 0, 1920, 1080}, 1); }

void WindowServerService::addDisplay(const Rect& frame, double scale) {
  const double referenceMaxY = displays.empty() ? frame.height : displays.front().frame.maxY();
  const auto number = static_cast<std::uint32_t>(displays.size() + 1);
  displays.push_back(
      {number, {frame.x, referenceMaxY - frame.maxY(), frame.width, frame.height}, scale});
}

ServerWindow& WindowServerService::insert(ServerWindow window) {
  window.info.number = next_;
  window.fill = colourOf(next_++);
  window.info.layer = 0;
  window.info.alpha = 1;
  stack_.insert(stack_.begin(), std::make_unique<ServerWindow>(std::move(window)));
  return *stack_.front();
}

ServerWindow& WindowServerService::bareWindow(Pid owner, const std::string& ownerName,
                                              const Rect& bounds) {
  ServerWindow window;
  window.info.ownerPid = owner;
  window.info.ownerName = ownerName;
  window.info.bounds = bounds;
  window.info.title = "";
  return insert(std::move(window));
}

ServerWindow& WindowServerService::windowOf(Window& window, const App& app, const Rect& bounds) {
  ServerWindow& made = bareWindow(app.pid(), app.facts.localizedName.value_or(""), bounds);
  made.window = &window;
  return made;
}

void WindowServerService::toFront(const ServerWindow& window) {
  const auto position = positionOf(stack_, window);
  std::rotate(stack_.begin(), position, position + 1);
}

void WindowServerService::toFrontOfOwn(const ServerWindow& window) {
  const auto position = positionOf(stack_, window);
  const auto first = std::find_if(stack_.begin(), position, [&](const auto& each) {
    return each->info.ownerPid == window.info.ownerPid;
  });
  std::rotate(first, position, position + 1);
}

void WindowServerService::ownersToFront(Pid owner) {
  std::stable_partition(stack_.begin(), stack_.end(),
                        [&](const auto& each) { return each->info.ownerPid == owner; });
}

bool WindowServerService::isShown(const ServerWindow& window) {
  if (!window.listed || window.window == nullptr) {
    return window.listed;
  }
  const Window& node = *window.window;
  return !node.removed() && !node.minimized() && !node.app().terminated() &&
         !node.app().facts.hidden;
}

std::vector<ServerWindow*> WindowServerService::shown() const {
  std::vector<ServerWindow*> result;
  for (const auto& window : stack_) {
    if (isShown(*window)) {
      result.push_back(window.get());
    }
  }
  std::stable_sort(result.begin(), result.end(), [](const ServerWindow* a, const ServerWindow* b) {
    return layerOf(*a) > layerOf(*b);
  });
  return result;
}

ServerWindow* WindowServerService::find(WindowNumber number) const {
  const auto found = std::find_if(stack_.begin(), stack_.end(),
                                  [&](const auto& each) { return each->info.number == number; });
  return found == stack_.end() ? nullptr : found->get();
}

double WindowServerService::scaleAt(const Rect& area) const {
  for (const Screen& display : displays) {
    const double top = displays.front().frame.maxY() - display.frame.maxY();
    const Rect frame{display.frame.x, top, display.frame.width, display.frame.height};
    if (frame.contains(area.center())) {
      return display.scale;
    }
  }
  return 1;
}

std::vector<WindowInfo> WindowServerService::windows(WindowList which) {
  std::vector<WindowInfo> result;
  if (!answers) {
    return result;
  }
  for (const ServerWindow* window : shown()) {
    if (which == WindowList::onScreen || !window->desktopElement) {
      result.push_back(window->info);
    }
  }
  return result;
}

std::vector<Screen> WindowServerService::screens() {
  return answers ? displays : std::vector<Screen>{};
}

LoginSession WindowServerService::loginSession() { return answers ? session : LoginSession{}; }

}  // namespace tarqo::sim
