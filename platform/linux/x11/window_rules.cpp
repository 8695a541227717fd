#include "platform/linux/x11/window_rules.h"

namespace tarqo::lnx {
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
  const Rect& client = parts.client;
  if (parts.shadow) {
    const Insets& shadow = *parts.shadow;
    return {client.x + shadow.left, client.y + shadow.top,
            client.width - shadow.left - shadow.right, client.height - shadow.top - shadow.bottom};
  }
  if (parts.decoration) {
    // Rather than the outermost window, to which some window managers add an invisible border for
    // the pointer to take hold of.
    const Insets& edges = *parts.decoration;
    return {client.x - edges.left, client.y - edges.top, client.width + edges.left + edges.right,
            client.height + edges.top + edges.bottom};
  }
  return parts.outermost;
}

}  // namespace tarqo::lnx
