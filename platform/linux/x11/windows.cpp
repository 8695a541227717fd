#include "platform/linux/x11/windows.h"

#include <algorithm>
#include <cmath>

namespace tarqo::lnx::x11 {
namespace {

// The figures are those of the layers of macOS, so that a client that logs them reads the same.
constexpr int kDesktopLayer = -1000;
constexpr int kNormalLayer = 0;
constexpr int kTornOffLayer = 3;
constexpr int kDockLayer = 20;
constexpr int kNotificationLayer = 25;
constexpr int kPopupLayer = 101;
constexpr int kTooltipLayer = 102;
constexpr int kDragLayer = 500;

}  // namespace

int layerOf(WindowType type, bool overrideRedirect) {
  switch (type) {
    case WindowType::none:
    case WindowType::normal:
    case WindowType::dialog:
    case WindowType::utility:
    case WindowType::splash:
      return overrideRedirect ? kPopupLayer : kNormalLayer;
    case WindowType::toolbar:
    case WindowType::menu:
      return overrideRedirect ? kPopupLayer : kTornOffLayer;
    case WindowType::dropdownMenu:
    case WindowType::popupMenu:
    case WindowType::combo:
      return kPopupLayer;
    case WindowType::tooltip:
      return kTooltipLayer;
    case WindowType::notification:
      return kNotificationLayer;
    case WindowType::dnd:
      return kDragLayer;
    case WindowType::dock:
      return kDockLayer;
    case WindowType::desktop:
      return kDesktopLayer;
  }
  return kNormalLayer;
}

Rect visibleFrame(const WindowParts& parts) {
  if (parts.shadow) {
    return shrunk(parts.client, *parts.shadow);
  }
  if (parts.decoration) {
    // Rather than the outermost window, to which some window managers add an invisible border for
    // the pointer to take hold of.
    return grown(parts.client, *parts.decoration);
  }
  return parts.outermost;
}

const Window* findWindow(const Windows& windows, WindowNumber client) {
  const auto found =
      std::find_if(windows.frontToBack.begin(), windows.frontToBack.end(),
                   [client](const Window& window) { return window.client == client; });
  return found != windows.frontToBack.end() ? &*found : nullptr;
}

std::int16_t pixelOf(double coordinate) {
  return static_cast<std::int16_t>(std::clamp(std::floor(coordinate), -32768.0, 32767.0));
}

}  // namespace tarqo::lnx::x11
